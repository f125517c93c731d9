// LibRaw's AHD on one thread. It develops a picture as a whole; what the interpolation costs is the difference between developing
// with it and without it, all else being equal. Its samples have 16 bits, so it is one peer for both depths.
#include <dlfcn.h>
#include <libraw/libraw.h>

#include <algorithm>
#include <vector>

#include "support/cases.hpp"
#include "support/forms.hpp"

using namespace kuvbench;

namespace {

constexpr int adaptiveHomogeneity = 3;

void check(int code) {
    if (code != LIBRAW_SUCCESS) throw std::runtime_error(std::string("LibRaw: ") + libraw_strerror(code));
}

// Its loops are OpenMP's, with whichever runtime it was linked.
void useOneThread() {
    if (void* set = dlsym(RTLD_DEFAULT, "omp_set_num_threads")) reinterpret_cast<void (*)(int)>(set)(1);
}

class Developer {
public:
    explicit Developer(KuviSize size) : samples_(std::size_t(size.width) * size.height) {
        Image<Kuv16u> mosaic(size);
        fillWithMosaic(mosaic, size);
        for (int row = 0; row < size.height; ++row) {
            std::copy_n(mosaic.row(row), size.width, samples_.begin() + std::ptrdiff_t{row} * size.width);
        }
        auto& options = raw_.imgdata.params;
        options.user_qual = adaptiveHomogeneity;
        options.output_bps = 16;
        options.output_color = 0;  // no conversion
        options.no_auto_bright = 1;
        options.no_auto_scale = 1;
        check(raw_.open_bayer(reinterpret_cast<unsigned char*>(samples_.data()), static_cast<unsigned>(samples_.size() * 2),
                              static_cast<ushort>(size.width), static_cast<ushort>(size.height), 0, 0, 0, 0, 0,
                              LIBRAW_OPENBAYER_RGGB, 0, 0, 0));
        check(raw_.unpack());
    }

    void develop(bool interpolate) {
        useOneThread();
        raw_.imgdata.params.no_interpolation = !interpolate;
        check(raw_.dcraw_process());
    }

private:
    std::vector<Kuv16u> samples_;
    LibRaw raw_;
};

template <class T>
Run prepare(void* data) {
    const auto developer = std::make_shared<Developer>(static_cast<Demosaic<T>*>(data)->size);
    return {repeating([developer] { developer->develop(true); }), repeating([developer] { developer->develop(false); })};
}

template <class T>
bool add(const char* function) {
    return addPeer(function, typeid(Demosaic<T>), {LibRaw::version(), true, nullptr, {"LibRaw", "", prepare<T>}});
}

[[maybe_unused]] const bool added[] = {add<Kuv8u>("kuviDemosaicAHD_8u_C1C3R"), add<Kuv16u>("kuviDemosaicAHD_16u_C1C3R")};

}  // namespace
