// Fourier transforms: of powers of two, of products of small factors, of primes, and by chirps.
#include "support/cases.hpp"
#include "support/transforms.hpp"

using namespace kuvbench;

namespace {

// A plan of one variant.
class Plan {
public:
    Plan(ComplexSignal& signal, int variant) : signal_(signal), run_(KUV_VARIANTS_OF(kuvsDFTFwd_CToC_32f)[variant]) {
        const auto getSize = KUV_VARIANTS_OF(kuvsDFTGetSize_C_32f)[variant];
        const auto init = KUV_VARIANTS_OF(kuvsDFTInit_C_32f)[variant];
        Kuv32s specBytes = 0, initBytes = 0, workBytes = 0;
        check(getSize(signal.length(), kuvDftScaleNone, 0, &specBytes, &initBytes, &workBytes));
        spec_.resize(specBytes);
        work_.resize(workBytes + 1);
        std::vector<Kuv8u> buffer(initBytes + 1);
        check(init(signal.length(), kuvDftScaleNone, 0, spec_.data(), buffer.data()));
        check(run());
    }

    KuvStatus run() {
        return run_(signal_.srcRe.row(), signal_.srcIm.row(), signal_.dstRe.row(), signal_.dstIm.row(), spec_.data(),
                    work_.data());
    }

private:
    static void check(KuvStatus status) {
        if (status != kuvStatusOk) throw std::runtime_error("a transform that is to be timed fails");
    }

    ComplexSignal& signal_;
    decltype(&kuvsDFTFwd_CToC_32f) run_;
    std::vector<Kuv8u> spec_, work_;
};

bool addTransforms(const char* name, std::initializer_list<Kuv32s> lengths) {
    for (const Kuv32s length : lengths) {
        Case added = caseOf<ComplexSignal>(Aspect::speed, "kuvsDFTFwd_CToC_32f", name, {length, 1});
        for (const Variant& each : variants) {
            if (!each.canRun()) continue;
            added.contenders.push_back({each.code, "", [index = each.index](void* data) -> Run {
                                            const auto plan = std::make_shared<Plan>(*static_cast<ComplexSignal*>(data), index);
                                            return {repeating([plan] { plan->run(); })};
                                        }});
        }
        addCase(std::move(added));
    }
    return true;
}

[[maybe_unused]] const bool added[] = {
    addTransforms("power of two", {16, 32, 64, 128, 256, 512, 1024, 2048, 4096, 8192, 16384, 32768, 65536, 131072, 262144}),
    addTransforms("long power of two", {524288, 1048576, 2097152, 4194304}),
    addTransforms("small factors", {60, 100, 240, 480, 1000, 1920, 3000, 44100}),
    addTransforms("prime", {17, 19, 23, 29, 31, 37, 41, 43, 47}),
    addTransforms("chirp", {127, 1009, 10007}),
};

}  // namespace
