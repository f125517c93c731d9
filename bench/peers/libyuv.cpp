// libyuv, which uses one thread. It has no conversion of packed video to pixels of three bytes: its results have a fourth.
#include <libyuv.h>

#include "support/cases.hpp"
#include "support/forms.hpp"

using namespace kuvbench;

namespace {

template <bool aligned>
bool addVideo() {
    using Form = FromTo<Kuv8u, 2, 3, aligned>;
    const auto run = [](void* data) -> Run {
        auto& form = *static_cast<Form*>(data);
        const auto dst = std::make_shared<Image<Kuv8u>>(form.size, 4, aligned ? 0 : 3);
        return {repeating([&form, dst] {
            libyuv::UYVYToARGB(form.src.row(), form.src.step(), dst->row(), dst->step(), form.size.width, form.size.height);
        })};
    };
    return addPeer("kuviCbYCr422ToRGB_8u_C2C3R", typeid(Form), {std::to_string(LIBYUV_VERSION), false, nullptr, {"libyuv", "", run}});
}

[[maybe_unused]] const bool added[] = {addVideo<true>(), addVideo<false>()};

}  // namespace
