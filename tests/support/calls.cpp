#include "support/calls.hpp"

#include <gtest/gtest.h>
#include <signal.h>
#include <ucontext.h>
#include <xmmintrin.h>

#include <cstdlib>
#include <cstring>
#include <iterator>

#include "core/features.hpp"
#include "support/images.hpp"

namespace kuvtest {

int rounds(int full) {
    static const double factor = [] {
        const char* const text = std::getenv("KUVCV_TEST_ROUNDS");
        return text != nullptr ? std::atof(text) : 1.0;
    }();
    const int wanted = static_cast<int>((sanitized ? full / 10.0 : full) * factor);
    return wanted > 1 ? wanted : 1;
}

thread_local HeapWatch heapWatch;

namespace detail {
namespace {

thread_local CallWatch* current = nullptr;
thread_local int faultSignal;
thread_local const void* faultAddress;
thread_local bool faultIsWrite;

constexpr int faults[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE};
struct sigaction previousActions[std::size(faults)];

void onFault(int signal, siginfo_t* info, void* context) {
    if (current == nullptr) {  // not in a watched call: as if there were no handler
        for (std::size_t i = 0; i < std::size(faults); ++i) {
            if (faults[i] == signal) sigaction(signal, &previousActions[i], nullptr);
        }
        return;
    }
    sigset_t blocked;  // by a fuzzer's handler around this one
    sigemptyset(&blocked);
    sigaddset(&blocked, signal);
    pthread_sigmask(SIG_UNBLOCK, &blocked, nullptr);
    faultSignal = signal;
    faultAddress = info->si_addr;
    faultIsWrite = (static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_ERR] & 2) != 0;
    siglongjmp(current->target, 1);
}

const bool handlersInstalled = [] {
    struct sigaction action = {};
    action.sa_sigaction = onFault;
    action.sa_flags = SA_SIGINFO | SA_NODEFER;
    for (std::size_t i = 0; i < std::size(faults); ++i) sigaction(faults[i], &action, &previousActions[i]);
    return true;
}();

unsigned short x87ControlWord() {
    unsigned short word;
    asm volatile("fnstcw %0" : "=m"(word));
    return word;
}

// All eight x87 registers are free unless MMX instructions ran without EMMS.
bool x87IsEmpty() {
    unsigned environment[7];
    asm volatile("fnstenv %0\n\tfldenv %0" : "+m"(environment));
    return (environment[2] & 0xFFFF) == 0xFFFF;
}

// The processor's own account of whether an upper half of a YMM register is in use.
bool upperHalvesInUse() {
    unsigned low, high;
    asm volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(1));
    return (low & 4) != 0;
}

bool canSeeUpperHalves() {
    static const bool can = [] {
        KuvCpuFeatures features = 0;
        kuvGetCpuFeatures(&features, nullptr);
        if ((features & 0x300) != 0x300) return false;
        if (kuv::hardware.cpuid(0, 0).eax < 0xD || (kuv::hardware.cpuid(0xD, 1).eax & 4) == 0) return false;
        asm volatile("vzeroupper" ::: "memory");
        const bool clean = !upperHalvesInUse();
        asm volatile("vcmptrueps %%ymm0, %%ymm0, %%ymm0" ::: "xmm0", "memory");
        const bool dirty = upperHalvesInUse();
        asm volatile("vzeroupper" ::: "memory");
        return clean && dirty;
    }();
    return can;
}

constexpr unsigned mxcsrControl = 0xFFC0;  // all but the sticky flags

}  // namespace

CallWatch::CallWatch() : previous(current) {
    if (canSeeUpperHalves()) asm volatile("vzeroupper" ::: "memory");
    control = _mm_getcsr() & mxcsrControl;
    x87Control = x87ControlWord();
    allocations = heapWatch.allocations + heapWatch.releases;
    heapWatch.active = true;
    current = this;
}

void CallWatch::finish() {
    const bool upperDirty = canSeeUpperHalves() && upperHalvesInUse();
    current = previous;
    heapWatch.active = false;
    EXPECT_EQ(_mm_getcsr() & mxcsrControl, control) << "the call changed MXCSR";
    EXPECT_EQ(x87ControlWord(), x87Control) << "the call changed the x87 control word";
    EXPECT_TRUE(x87IsEmpty()) << "the call left the x87 registers in use";
    EXPECT_FALSE(upperDirty) << "the call left upper halves of wide registers dirty";
    EXPECT_EQ(heapWatch.allocations + heapWatch.releases, allocations) << "the call used the heap";
}

void CallWatch::fault() const {
    current = previous;
    heapWatch.active = false;
    ADD_FAILURE() << "the call raised " << sigabbrev_np(faultSignal) << " on a " << (faultIsWrite ? "write to " : "read of ")
                  << faultAddress << ", " << Image::whereIs(faultAddress);
}

}  // namespace detail
}  // namespace kuvtest
