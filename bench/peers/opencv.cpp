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

// It has no such operation in place: a second image takes the result.
template <class Form, class T, int channels>
Run prepareReversal(void* data) {
    cv::setNumThreads(1);
    Form& form = *static_cast<Form*>(data);
    constexpr int type = CV_MAKETYPE(sizeof(T) == 1 ? CV_8U : CV_16U, channels);
    const auto matrixOf = [&form](Image<T>& image) {
        return cv::Mat(form.size.height, form.size.width, type, image.row(), static_cast<std::size_t>(image.step()));
    };
    cv::Mat src, dst;
    if constexpr (requires { form.srcDst; }) {
        src = matrixOf(form.srcDst);
        dst = src.clone();
    } else {
        src = matrixOf(form.src);
        dst = matrixOf(form.dst);
    }
    return {repeating([src, dst, pairs = std::vector<int>{2, 0, 1, 1, 0, 2, 3, 3}, count = Form::bytesPerPixel / (2 * sizeof(T))]() mutable {
        cv::mixChannels(&src, 1, &dst, 1, pairs.data(), static_cast<std::size_t>(count));
    })};
}

template <class Form, class T, int channels>
bool addReversal(const char* function) {
    return addPeer(function, typeid(Form), {CV_VERSION, false, nullptr, {"OpenCV", "", prepareReversal<Form, T, channels>}});
}

[[maybe_unused]] const bool reversals[] = {addReversal<Reversed<Kuv8u, 3>, Kuv8u, 3>("kuviSwapChannels_8u_C3R"),
                                           addReversal<Reversed<Kuv16u, 3>, Kuv16u, 3>("kuviSwapChannels_16u_C3R"),
                                           addReversal<Reversed<Kuv8u, 4>, Kuv8u, 4>("kuviSwapChannels_8u_AC4R"),
                                           addReversal<Reversed<Kuv16u, 4>, Kuv16u, 4>("kuviSwapChannels_16u_AC4R"),
                                           addReversal<ReversedInPlace<3>, Kuv8u, 3>("kuviSwapChannels_8u_C3IR"),
                                           addReversal<ReversedInPlace<4>, Kuv8u, 4>("kuviSwapChannels_8u_C4IR")};

}  // namespace
