// The benchmarks: export/variant/size/case, a peer standing in the variant's place.
#include <benchmark/benchmark.h>

#include <algorithm>

#include "support/cases.hpp"

using namespace kuvbench;

namespace {

void measure(benchmark::State& state, const Case& measured, const Contender& contender) {
    const Run run = contender.prepare(dataOf(measured));
    // Small work is done several times between two looks at the state.
    const auto batch = std::clamp(static_cast<long>(10000 / measured.pixels()), 1L, 1000L);
    while (state.KeepRunningBatch(batch)) run.work(batch);
    state.SetItemsProcessed(static_cast<int64_t>(static_cast<double>(state.iterations()) * measured.pixels()));
    state.SetBytesProcessed(static_cast<int64_t>(static_cast<double>(state.iterations()) * measured.bytes));
}

void add(const Case& measured, const Contender& contender) {
    const std::string detail = contender.detail.empty() ? "" : "-" + contender.detail;
    const std::string name = measured.function + "/" + contender.name + "/" + measured.sizeName() + "/" + measured.name + detail;
    const auto run = [&measured, &contender](benchmark::State& state) { measure(state, measured, contender); };
    auto* added = benchmark::RegisterBenchmark(name.c_str(), run);
    if (measured.aspect == Aspect::threads) added->UseRealTime();
}

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    const std::vector<Case> cases = allCases();
    for (const Case& each : cases) {
        for (const Contender& contender : each.contenders) add(each, contender);
        for (const Peer& peer : each.peers) add(each, peer.contender);
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
}
