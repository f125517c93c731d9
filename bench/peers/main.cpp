// Compares the variants with each other, with the peers and with the limits of the machine, and prints one line for each
// comparison, as comma-separated values.
#include <cpuid.h>
#include <getopt.h>

#include <cstdio>
#include <cstring>
#include <set>
#include <thread>

#include "peers/measure.hpp"
#include "support/images.hpp"

using namespace kuvbench;

namespace {

constexpr char help[] =
    "Usage: kuvcv_peers [--brief] [--filter=TEXT]\n"
    "  --brief        few rounds, on large images only where there are no small ones: to see that all runs, not for figures\n"
    "  --filter=TEXT  only what has TEXT in function/size/case\n"
    "\n"
    "Columns: kind, function, case, size, ours, other, median, low, high, ours_ns, other_ns, rounds, slower.\n"
    "median is the median over the rounds of the other's time divided by ours, low and high bound the middle half of these\n"
    "ratios; ours_ns and other_ns are the median times in nanoseconds per pixel.\n"
    "slower says 1 if a step or a peer shows ours more than 2 % slower in three rounds of four.\n"
    "  px       a variant against px\n"
    "  step     a variant against the next weaker one\n"
    "  peer     a variant against another library, or against what the compiler makes of a plain loop\n"
    "  copy     the strongest variant against memcpy() of so many bytes that both read and write as many\n"
    "  threads  two bands of rows on two threads against both on one, elapsed time; control: as much work on two small images\n"
    "  stub     median, low and high are ours less other's: nanoseconds, of one call\n";

struct Options {
    bool brief = false;
    std::string filter;
};

Plan planOf(const Options& options) {
    if (options.brief) return {0, 0, 3, 3, 3};
    return {0.001, 0.4, 15, 51, 5};
}

void printHeader(const std::vector<Case>& cases, const Plan& plan) {
    char processor[49] = "unknown";
    unsigned words[12] = {};
    bool named = true;
    for (unsigned leaf = 0; leaf < 3; ++leaf) {
        unsigned* at = words + 4 * leaf;
        named = named && __get_cpuid(0x80000002 + leaf, at, at + 1, at + 2, at + 3) != 0;
    }
    if (named) std::memcpy(processor, words, sizeof words);
    std::printf("# processor: %s\n", processor);
    std::printf("# processors: %u\n", std::thread::hardware_concurrency());
#ifdef __clang__
    std::printf("# compiler: Clang %s\n", __clang_version__);
#else
    std::printf("# compiler: GCC %s\n", __VERSION__);
#endif
    std::printf("# library: %s\n", kuvcvGetLibVersion()->versionText);
    std::printf("# sample_ms: %g\n# seconds: %g\n", plan.sampleSeconds * 1e3, plan.seconds);
    std::printf("# least_rounds: %d\n# most_rounds: %d\n", plan.minimumRounds, plan.maximumRounds);
    std::printf("# slow_rounds: %d\n", plan.slowRounds);
    std::set<std::string> peers;
    for (const Case& each : cases) {
        for (const Peer& peer : each.peers) peers.insert(peer.contender.name + " (" + peer.version + ")");
    }
    for (const std::string& peer : peers) std::printf("# peer: %s\n", peer.c_str());
    std::printf("kind,function,case,size,ours,other,median,low,high,ours_ns,other_ns,rounds,slower\n");
}

struct Measured {
    std::string name;
    std::vector<double> seconds;
};

std::vector<Measured> measure(const std::vector<std::pair<std::string, Run>>& runs, Clock clock, const Plan& plan) {
    std::vector<Run> plain;
    for (const auto& [name, run] : runs) plain.push_back(run);
    const auto samples = takeTurns(plain, clock, plan);
    std::vector<Measured> result;
    for (std::size_t i = 0; i < runs.size(); ++i) result.push_back({runs[i].first, samples[i]});
    return result;
}

template <class Combine>
void print(const char* kind, const Case& measured, const Measured& ours, const Measured& other, Combine combine) {
    std::vector<double> combined;
    for (std::size_t i = 0; i < ours.seconds.size(); ++i) combined.push_back(combine(ours.seconds[i], other.seconds[i]));
    const Spread spread = spreadOf(combined);
    const double scale = 1e9 / measured.pixels();
    const bool compared = std::strcmp(kind, "step") == 0 || std::strcmp(kind, "peer") == 0;
    std::printf("%s,%s,%s,%s,%s,%s,", kind, measured.function.c_str(), measured.name.c_str(), measured.sizeName().c_str(),
                ours.name.c_str(), other.name.c_str());
    std::printf("%.5g,%.5g,%.5g,", spread.median, spread.low, spread.high);
    std::printf("%.5g,%.5g,", spreadOf(ours.seconds).median * scale, spreadOf(other.seconds).median * scale);
    std::printf("%zu,%d\n", combined.size(), compared && spread.high < 0.98);
    std::fflush(stdout);
}

constexpr auto ratio = [](double ours, double other) { return other / ours; };
constexpr auto nanosecondsMore = [](double ours, double other) { return (ours - other) * 1e9; };

void compareVariants(const Case& measured, const Plan& plan) {
    void* data = dataOf(measured);
    std::vector<std::pair<std::string, Run>> runs;
    for (const Contender& each : measured.contenders) runs.emplace_back(each.name, each.prepare(data));
    const auto times = measure(runs, Clock::processor, plan);
    for (std::size_t i = 1; i < times.size(); ++i) print("px", measured, times[i], times[0], ratio);
    for (std::size_t i = 1; i < times.size(); ++i) print("step", measured, times[i], times[i - 1], ratio);

    const auto half = static_cast<std::size_t>(measured.bytes / 2);
    Image<Kuv8u> from({static_cast<Kuv32s>(half), 1}), to({static_cast<Kuv32s>(half), 1});
    std::memset(from.row(), 1, half);
    std::memset(to.row(), 0, half);
    const Run copy = {repeating([src = from.row(), dst = to.row(), half] {
        std::memcpy(dst, src, half);
        asm volatile("" : : "r"(dst) : "memory");  // the copy is used
    })};
    const auto pair = measure({runs.back(), {"memcpy", copy}}, Clock::processor, plan);
    print("copy", measured, pair[0], pair[1], ratio);
}

void comparePeer(const Case& measured, const Peer& peer, const Plan& plan) {
    void* data = dataOf(measured);
    const Contender* rival = &measured.contenders.back();
    for (const Contender& each : measured.contenders) {
        if (peer.rival && each.name == peer.rival) rival = &each;
    }
    const auto pair = measure({{rival->name, rival->prepare(data)}, {peer.contender.name, peer.contender.prepare(data)}},
                              Clock::processor, plan);
    print("peer", measured, pair[0], pair[1], ratio);
}

void compareSpeed(const Case& measured, const Options& options, const Plan& plan) {
    const bool skip = options.brief && isLarge(measured.size);
    if (!skip) compareVariants(measured, plan);
    for (const Peer& peer : measured.peers) {
        if (!skip || peer.largeOnly) comparePeer(measured, peer, plan);
    }
}

// The contenders of the other aspects differ in their detail.
std::vector<Measured> measureDetails(const Case& measured, Clock clock, const Plan& plan) {
    std::vector<std::pair<std::string, Run>> runs;
    for (const Contender& each : measured.contenders) runs.emplace_back(each.detail, each.prepare(dataOf(measured)));
    return measure(runs, clock, plan);
}

void compareThreads(const Case& measured, const Plan& plan) {
    if (std::thread::hardware_concurrency() < 2) return;
    const auto times = measureDetails(measured, Clock::elapsed, plan);
    print("threads", measured, times[1], times[0], ratio);
    print("threads", measured, times[3], times[2], ratio);
}

void compareStub(const Case& measured, const Plan& plan) {
    const auto times = measureDetails(measured, Clock::processor, plan);
    print("stub", measured, times[0], times[1], nanosecondsMore);
    print("stub", measured, times[1], times[2], nanosecondsMore);
}

bool parse(int argc, char** argv, Options& options) {
    static constexpr option known[] = {
        {"brief", no_argument, nullptr, 'b'},
        {"filter", required_argument, nullptr, 'f'},
        {"help", no_argument, nullptr, 'h'},
        {},
    };
    for (int found; (found = getopt_long(argc, argv, "", known, nullptr)) != -1;) {
        if (found == 'b') {
            options.brief = true;
        } else if (found == 'f') {
            options.filter = optarg;
        } else if (found == 'h') {
            std::fputs(help, stdout);
            std::exit(0);
        } else {
            return false;
        }
    }
    return optind == argc;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    if (!parse(argc, argv, options)) {
        std::fputs(help, stderr);
        return 2;
    }
    const Plan plan = planOf(options);
    std::vector<Case> cases;
    for (Case& each : allCases()) {
        if (options.brief && each.size.width == photoSize.width) continue;
        if ((each.function + "/" + each.sizeName() + "/" + each.name).find(options.filter) == std::string::npos) continue;
        cases.push_back(std::move(each));
    }

    printHeader(cases, plan);
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const Case& each = cases[i];
        std::fprintf(stderr, "[%zu/%zu] %s %s %s\n", i + 1, cases.size(), each.function.c_str(), each.sizeName().c_str(),
                     each.name.c_str());
        switch (each.aspect) {
        case Aspect::speed: compareSpeed(each, options, plan); break;
        case Aspect::threads: compareThreads(each, plan); break;
        case Aspect::stub: compareStub(each, plan); break;
        }
    }
}
