// FFTW with measured plans on one thread: the faster one of its transforms of planes and of pairs.
#include <fftw3.h>

#include <algorithm>
#include <chrono>

#include "support/cases.hpp"
#include "support/transforms.hpp"

using namespace kuvbench;

namespace {

class Transform {
public:
    explicit Transform(const ComplexSignal& signal)
        : size_{signal.length(), 1},
          planes_{Image<Kuv32f>(size_), Image<Kuv32f>(size_), Image<Kuv32f>(size_), Image<Kuv32f>(size_)},
          pairs_{Image<Kuv32f>(size_, 2), Image<Kuv32f>(size_, 2)} {
        const fftwf_iodim length = {size_.width, 1, 1};
        plans_[0] = fftwf_plan_guru_split_dft(1, &length, 0, nullptr, planes_[0].row(), planes_[1].row(), planes_[2].row(),
                                              planes_[3].row(), FFTW_MEASURE);
        plans_[1] = fftwf_plan_dft_1d(size_.width, reinterpret_cast<fftwf_complex*>(pairs_[0].row()),
                                      reinterpret_cast<fftwf_complex*>(pairs_[1].row()), FFTW_FORWARD, FFTW_MEASURE);
        fillWithValues(planes_[0], size_, 1);
        fillWithValues(planes_[1], size_, 2);
        fillWithValues(pairs_[0], {2 * size_.width, 1}, 3);
        faster_ = plans_[seconds(plans_[1]) < seconds(plans_[0])];
    }
    ~Transform() {
        for (fftwf_plan each : plans_) fftwf_destroy_plan(each);
    }
    Transform(const Transform&) = delete;
    Transform& operator=(const Transform&) = delete;

    void run() const { fftwf_execute(faster_); }

private:
    // The best of some rounds.
    double seconds(fftwf_plan plan) const {
        using Clock = std::chrono::steady_clock;
        const int count = std::max(1, 200000 / size_.width);
        double best = 1e9;
        for (int round = 0; round < 7; ++round) {
            const auto start = Clock::now();
            for (int i = 0; i < count; ++i) fftwf_execute(plan);
            best = std::min(best, std::chrono::duration<double>(Clock::now() - start).count());
        }
        return best;
    }

    KuviSize size_;
    Image<Kuv32f> planes_[4], pairs_[2];
    fftwf_plan plans_[2], faster_;
};

Run prepare(void* data) {
    const auto transform = std::make_shared<Transform>(*static_cast<ComplexSignal*>(data));
    return {repeating([transform] { transform->run(); })};
}

[[maybe_unused]] const bool added =
    addPeer("kuvsDFTFwd_CToC_32f", typeid(ComplexSignal), {fftwf_version, false, nullptr, {"FFTW", "", prepare}});

}  // namespace
