// Calls in several threads, on records that they share, while another thread switches the variant.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <latch>
#include <mutex>
#include <set>
#include <thread>

#include "core/cache.hpp"
#include "support/calls.hpp"
#include "support/thread_calls.hpp"
#include "support/variants.hpp"

namespace {

using namespace kuvtest;

constexpr int callers = 4;

struct Outcome {
    KuvStatus status;
    std::vector<unsigned char> results;

    bool operator==(const Outcome&) const = default;
};

Outcome make(const ThreadCall& call, const SharedData& shared, OwnData& own) {
    own.start(shared);
    const KuvStatus status = call.run(shared, own);
    return {status, own.results()};
}

std::vector<Variant> runnable() {
    std::vector<Variant> found;
    std::copy_if(std::begin(variants), std::end(variants), std::back_inserter(found), [](const Variant& each) { return each.canRun(); });
    return found;
}

// What each of the variants gives in a single thread, for each of the calls.
class Expected {
public:
    Expected(const std::vector<ThreadCall>& calls, const SharedData& shared, const std::vector<Variant>& variants) : calls_(calls) {
        OwnData own;
        for (const ThreadCall& call : calls) {
            std::vector<Outcome>& outcomes = outcomes_.emplace_back();
            for (const Variant& each : variants) {
                const SelectVariant selection(each);
                const Outcome outcome = make(call, shared, own);
                EXPECT_GE(outcome.status, 0) << call.name << " in " << each;
                if (std::find(outcomes.begin(), outcomes.end(), outcome) == outcomes.end()) outcomes.push_back(outcome);
            }
        }
    }

    // Makes the call and compares.
    void check(std::size_t call, const SharedData& shared, OwnData& own) {
        const Outcome got = make(calls_[call], shared, own);
        const std::vector<Outcome>& outcomes = outcomes_[call];
        if (std::find(outcomes.begin(), outcomes.end(), got) != outcomes.end()) return;
        const std::lock_guard lock(mutex_);
        wrong_.insert(std::string(calls_[call].name) + ", status " + std::to_string(got.status));
    }

    const std::set<std::string>& wrong() const { return wrong_; }

private:
    const std::vector<ThreadCall>& calls_;
    std::vector<std::vector<Outcome>> outcomes_;
    std::mutex mutex_;
    std::set<std::string> wrong_;
};

// All calls over and over in several threads, each of which begins with another one, while this thread switches from variant to variant;
// until each of the variants has answered in one of the threads.
void expectAnswers(const std::vector<ThreadCall>& calls, const SharedData& shared, const std::vector<Variant>& variants, int passes) {
    Expected expected(calls, shared, variants);
    std::atomic<unsigned> seen{0};  // variants, a bit each
    unsigned all = 0;
    for (const Variant& each : variants) all |= 1u << each.index;

    std::atomic<int> running{callers};
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < callers; ++t) {
        threads.emplace_back([&, t] {
            OwnData own;
            for (int pass = 0; pass < passes || seen != all; ++pass) {
                for (std::size_t i = 0; i < calls.size(); ++i) {
                    expected.check((i + t * calls.size() / callers) % calls.size(), shared, own);
                    seen |= 1u << variantOf(kuvcvGetLibVersion()->variantCode).index;
                }
            }
            --running;
        });
    }
    for (unsigned i = 0; running != 0; ++i) {
        EXPECT_EQ(kuvSetCpuFeatures(variants[i % variants.size()].mask()), kuvStatusOk);
        // In turn as fast as can be and slowly enough for whole calls in one variant.
        if (i / 64 % 2 == 0) std::this_thread::yield();
        else std::this_thread::sleep_for(std::chrono::microseconds(20));
    }
    for (std::thread& each : threads) each.join();
    EXPECT_EQ(expected.wrong(), std::set<std::string>());
}

std::vector<ThreadCall> callsThat(bool takeAPlanOfOneVariant) {
    std::vector<ThreadCall> found;
    std::copy_if(threadCalls.begin(), threadCalls.end(), std::back_inserter(found),
                 [&](const ThreadCall& each) { return each.inOneVariant == takeAPlanOfOneVariant; });
    return found;
}

// The fixture's variant makes the records.
class Threads : public VariantTest {};

KUV_FOR_EACH_VARIANT(Threads);

TEST_P(Threads, ShareRecordsWhileAnotherSwitchesTheVariant) {
    const SharedData shared;
    expectAnswers(callsThat(false), shared, runnable(), rounds(60));
}

// Here the switching thread selects the one variant again and again.
TEST_P(Threads, SharePlansOfOneVariant) {
    const SharedData shared;
    expectAnswers(callsThat(true), shared, {GetParam()}, rounds(200));
}

// Before anything has been selected or asked of the processor.
TEST(ThreadsAtLoad, MakeTheFirstCallsAtOnce) {
    const ProcessState state;
    const SharedData shared;
    const std::vector<ThreadCall> calls = callsThat(false);
    Expected expected(calls, shared, runnable());
    std::size_t next = 0;
    for (int round = rounds(100); round > 0; --round) {
        ProcessState::reset();
        std::latch start(callers);
        std::vector<std::thread> threads;
        for (int t = 0; t < callers; ++t) {
            threads.emplace_back([&, call = next++ % calls.size()] {
                OwnData own;
                Kuv32s line;
                start.arrive_and_wait();
                expected.check(call, shared, own);
                kuv::queryCacheLine(&line);
                expected.check((call + 1) % calls.size(), shared, own);
            });
        }
        for (std::thread& each : threads) each.join();
    }
    EXPECT_EQ(expected.wrong(), std::set<std::string>());
}

TEST(ThreadCalls, AreOfEveryDispatchedExport) {
    std::set<std::string> called, exported;
    for (const ThreadCall& each : threadCalls) called.insert(each.name);
#define KUV_DIRECT(name)
#define KUV_DISPATCHED(name, bodies) exported.insert(#name);
#include "core/exports.def"
#undef KUV_DISPATCHED
#undef KUV_DIRECT
    EXPECT_EQ(called, exported);
}

}  // namespace
