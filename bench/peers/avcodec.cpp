// libavcodec's transforms of 8x8 blocks, as it chooses them for this processor.
extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/avdct.h>
#include <libavutil/mem.h>
}

#include "support/blocks.hpp"
#include "support/cases.hpp"

using namespace kuvbench;

namespace {

std::shared_ptr<AVDCT> chosen() {
    std::shared_ptr<AVDCT> transforms(avcodec_dct_alloc(), [](AVDCT* each) { av_free(each); });
    if (!transforms || avcodec_dct_init(transforms.get()) != 0) throw std::runtime_error("libavcodec: no transforms");
    return transforms;
}

template <class Form>
bool add(const char* function, void (*AVDCT::*transform)(std::int16_t*)) {
    const auto prepare = [transform](void* data) -> Run {
        auto& form = *static_cast<Form*>(data);
        return {repeating([&form, work = chosen().get()->*transform] {
            form.eachBlock([work](const Kuv16s* from, Kuv16s* to) {
                std::memcpy(to, from, 128);
                work(to);
            });
        })};
    };
    return addPeer(function, typeid(Form), {AV_STRINGIFY(LIBAVCODEC_VERSION), false, nullptr, {"libavcodec", "", prepare}});
}

[[maybe_unused]] const bool added[] = {add<Blocks<256>>("kuviDCT8x8Fwd_16s_C1I", &AVDCT::fdct),
                                       add<Blocks<64>>("kuviDCT8x8Inv_16s_C1I", &AVDCT::idct)};

}  // namespace
