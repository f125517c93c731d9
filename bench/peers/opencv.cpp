// OpenCV on one thread.
#include <opencv2/core.hpp>

#include "support/cases.hpp"
#include "support/forms.hpp"

using namespace kuvbench;

namespace {

template <class Form>
Run prepareSum(void* data) {
    cv::setNumThreads(1);
    Form& form = *static_cast<Form*>(data);
    const auto matrixOf = [&form](Image<Kuv32f>& image) {
        return cv::Mat(form.size.height, form.size.width, CV_32FC1, image.row(), static_cast<std::size_t>(image.step()));
    };
    return {repeating([src = matrixOf(form.src), srcDst = matrixOf(form.srcDst)]() mutable { cv::add(srcDst, src, srcDst); })};
}

template <class Form>
bool addSum() {
    return addPeer("kuviAdd_32f_C1IR", typeid(Form), {CV_VERSION, false, nullptr, {"OpenCV", "", prepareSum<Form>}});
}

[[maybe_unused]] const bool added[] = {addSum<TwoInPlace<Kuv32f>>(), addSum<TwoInPlace<Kuv32f, false>>()};

}  // namespace
