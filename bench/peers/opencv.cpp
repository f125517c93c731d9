// OpenCV on one thread.
#include <opencv2/core.hpp>
#ifdef KUV_OPENCV_IMGPROC
#include <opencv2/imgproc.hpp>
#endif

#include "support/cases.hpp"
#include "support/filtered.hpp"
#include "support/forms.hpp"
#include "support/forms_arith.hpp"
#include "support/resized.hpp"

using namespace kuvbench;

namespace {

// `prepare` turns the data of a case into the work that is timed.
template <class Form, class Prepare>
bool addOpenCV(const char* function, Prepare prepare) {
    const auto run = [prepare](void* data) -> Run {
        cv::setNumThreads(1);
        return {repeating(prepare(*static_cast<Form*>(data)))};
    };
    return addPeer(function, typeid(Form), {CV_VERSION, false, nullptr, {"OpenCV", "", run}});
}

template <class T>
cv::Mat matrixOf(Image<T>& image, KuviSize size, int channels = 1) {
    return cv::Mat(size.height, size.width, CV_MAKETYPE(cv::DataType<T>::depth, channels), image.row(),
                   static_cast<std::size_t>(image.step()));
}

auto sum = [](auto& form) {
    return [src = matrixOf(form.src, form.size), srcDst = matrixOf(form.srcDst, form.size)]() mutable { cv::add(srcDst, src, srcDst); };
};
[[maybe_unused]] const bool sums[] = {addOpenCV<TwoInPlace<Kuv32f>>("kuviAdd_32f_C1IR", sum),
                                      addOpenCV<TwoInPlace<Kuv32f, false>>("kuviAdd_32f_C1IR", sum)};

// `work` gets what the library's function gets, the destination last.
template <template <bool> class Form, class Work>
bool addReal(const char* function, Work work, int channels = 1) {
    const auto prepare = [work, channels](auto& form) {
        const auto matrix = [&form, channels](auto& image) { return matrixOf(image, form.size, channels); };
        if constexpr (requires { form.src2; }) {
            return [work, src1 = matrix(form.src1), src2 = matrix(form.src2), dst = matrix(form.dst)]() mutable { work(src1, src2, dst); };
        } else if constexpr (requires { form.src; }) {
            return [work, src = matrix(form.src), srcDst = matrix(form.srcDst)]() mutable { work(src, srcDst); };
        } else {
            return [work, srcDst = matrix(form.srcDst)]() mutable { work(srcDst); };
        }
    };
    return addOpenCV<Form<true>>(function, prepare) && addOpenCV<Form<false>>(function, prepare);
}
template <bool aligned>
using TwoReals = TwoInPlace<Kuv32f, aligned>;
template <bool aligned>
using TwoRealsTo = TwoTo<Kuv32f, aligned>;
template <bool aligned>
using OneReal = RealInPlace<1, aligned>;
template <bool aligned>
using ThreeReals = RealInPlace<3, aligned>;
const cv::Scalar ones(1, 1, 1);
[[maybe_unused]] const bool reals[] = {
    addReal<TwoReals>("kuviSub_32f_C1IR", [](cv::Mat& src, cv::Mat& srcDst) { cv::subtract(srcDst, src, srcDst); }),
    addReal<TwoRealsTo>("kuviSub_32f_C1R", [](cv::Mat& src1, cv::Mat& src2, cv::Mat& dst) { cv::subtract(src2, src1, dst); }),
    addReal<ThreeReals>("kuviAddC_32f_C3IR", [](cv::Mat& srcDst) { cv::add(srcDst, ones, srcDst); }, 3),
    addReal<ThreeReals>("kuviMulC_32f_C3IR", [](cv::Mat& srcDst) { cv::multiply(srcDst, ones, srcDst); }, 3),
    addReal<OneReal>("kuviSubC_32f_C1IR", [](cv::Mat& srcDst) { cv::subtract(srcDst, ones, srcDst); }),
    addReal<OneReal>("kuviDivC_32f_C1IR", [](cv::Mat& srcDst) { cv::multiply(srcDst, ones, srcDst); }),
    addReal<DividedInPlace>("kuviDiv_32f_C1IR", [](cv::Mat& src, cv::Mat& srcDst) { cv::divide(srcDst, src, srcDst); }),
    addReal<OneReal>("kuviAbs_32f_C1IR", [](cv::Mat& srcDst) { cv::absdiff(srcDst, cv::Scalar(), srcDst); }),
    addReal<TwoRealsTo>("kuviAbsDiff_32f_C1R", [](cv::Mat& src1, cv::Mat& src2, cv::Mat& dst) { cv::absdiff(src1, src2, dst); }),
    addReal<OneReal>("kuviSqr_32f_C1IR", [](cv::Mat& srcDst) { cv::multiply(srcDst, srcDst, srcDst); }),
    addReal<OneReal>("kuviSqrt_32f_C1IR", [](cv::Mat& srcDst) { cv::sqrt(srcDst, srcDst); })};

template <int channels, bool aligned = true>
bool addLimitedSum(const char* function) {
    return addOpenCV<ScaledSamples<channels == 1 ? 3 : 2, 0, channels, aligned>>(function, [](auto& form) {
        const cv::Mat src1 = matrixOf(form.src1, form.size, channels), dst = matrixOf(form.srcDst, form.size, channels);
        return [src1, src2 = channels == 1 ? matrixOf(form.src2, form.size) : dst, dst]() mutable { cv::add(src2, src1, dst); };
    });
}
template <bool inPlace>
bool addLimitedDifference(const char* function) {
    return addOpenCV<ScaledSamples<inPlace ? 2 : 3, 0>>(function, [](auto& form) {
        const cv::Mat src1 = matrixOf(form.src1, form.size), dst = matrixOf(form.srcDst, form.size);
        return [src1, src2 = inPlace ? dst : matrixOf(form.src2, form.size), dst]() mutable { cv::subtract(src2, src1, dst); };
    });
}
template <int channels, class Work>
bool addLimitedInPlace(const char* function, Work work) {
    return addOpenCV<ScaledSamples<1, 0, channels>>(function, [work](auto& form) {
        return [srcDst = matrixOf(form.srcDst, form.size, channels), work]() mutable { work(srcDst); };
    });
}
[[maybe_unused]] const bool limited[] = {
    addLimitedSum<1>("kuviAdd_16s_C1RSfs"), addLimitedSum<1, false>("kuviAdd_16s_C1RSfs"), addLimitedSum<3>("kuviAdd_16s_C3IRSfs"),
    addLimitedDifference<false>("kuviSub_16s_C1RSfs"), addLimitedDifference<true>("kuviSub_16s_C1IRSfs"),
    addLimitedInPlace<1>("kuviAddC_16s_C1IRSfs", [](cv::Mat& image) { cv::add(image, cv::Scalar(100), image); }),
    addLimitedInPlace<1>("kuviSubC_16s_C1IRSfs", [](cv::Mat& image) { cv::subtract(image, cv::Scalar(100), image); }),
    addLimitedInPlace<3>("kuviAddC_16s_C3IRSfs", [](cv::Mat& image) { cv::add(image, cv::Scalar(100, -200, 300), image); }),
    addLimitedInPlace<1>("kuviSqr_16s_C1IRSfs", [](cv::Mat& image) { cv::multiply(image, image, image); })};

template <class T, int channels>
bool addCopy(const char* function) {
    const auto copy = [](auto& form) {
        return [src = matrixOf(form.src, form.size, channels), dst = matrixOf(form.dst, form.size, channels)]() mutable {
            src.copyTo(dst);
        };
    };
    return addOpenCV<FromTo<T, channels>>(function, copy) && addOpenCV<FromTo<T, channels, channels, false>>(function, copy);
}
[[maybe_unused]] const bool copies[] = {addCopy<Kuv8u, 1>("kuviCopy_8u_C1R"),   addCopy<Kuv16u, 1>("kuviCopy_16u_C1R"),
                                        addCopy<Kuv16s, 1>("kuviCopy_16s_C1R"), addCopy<Kuv32s, 1>("kuviCopy_32s_C1R"),
                                        addCopy<Kuv32f, 1>("kuviCopy_32f_C1R"), addCopy<Kuv8u, 3>("kuviCopy_8u_C3R"),
                                        addCopy<Kuv16u, 3>("kuviCopy_16u_C3R"), addCopy<Kuv8u, 4>("kuviCopy_8u_C4R")};

// Channels go where the pairs tell, and what is in others stays: what it has of its own for changing layouts writes them all.
template <class Form, int srcChannels, int dstChannels>
bool addMixing(const char* function, std::vector<int> pairs) {
    return addOpenCV<Form>(function, [pairs](auto& form) {
        return [src = matrixOf(form.src, form.size, srcChannels), dst = matrixOf(form.dst, form.size, dstChannels), pairs]() mutable {
            cv::mixChannels(&src, 1, &dst, 1, pairs.data(), pairs.size() / 2);
        };
    });
}

template <class T, int srcChannels, int dstChannels>
bool addLayout(const char* function) {
    const auto pairs = srcChannels == 1 ? std::vector<int>{0, 0} : std::vector<int>{0, 0, 1, 1, 2, 2};
    return addMixing<FromTo<T, srcChannels, dstChannels>, srcChannels, dstChannels>(function, pairs);
}
[[maybe_unused]] const bool layouts[] = {addLayout<Kuv8u, 4, 4>("kuviCopy_8u_AC4R"),   addLayout<Kuv16u, 4, 4>("kuviCopy_16u_AC4R"),
                                         addLayout<Kuv8u, 3, 4>("kuviCopy_8u_C3AC4R"), addLayout<Kuv16u, 3, 4>("kuviCopy_16u_C3AC4R"),
                                        addLayout<Kuv8u, 1, 3>("kuviCopy_8u_C1C3R")};

template <class T>
bool addReversal(const char* function) {
    return addMixing<Reversed<T, 4>, 4, 4>(function, {2, 0, 1, 1, 0, 2});
}
[[maybe_unused]] const bool reversals[] = {addReversal<Kuv8u>("kuviSwapChannels_8u_AC4R"),
                                           addReversal<Kuv16u>("kuviSwapChannels_16u_AC4R")};

template <int channels>
bool addPlanes(const char* function) {
    return addOpenCV<Planar<channels>>(function, [](auto& form) {
        const cv::Mat all = matrixOf(form.planes, {form.size.width, form.size.height * channels});
        std::vector<cv::Mat> planes;
        for (int c = 0; c < channels; ++c) planes.push_back(all.rowRange(c * form.size.height, (c + 1) * form.size.height));
        return [planes, dst = matrixOf(form.dst, form.size, channels)]() mutable { cv::merge(planes, dst); };
    });
}

template <class T>
bool addMasked(const char* function) {
    return addOpenCV<UnderMask<T>>(function, [](auto& form) {
        return [src = matrixOf(form.src, form.size), dst = matrixOf(form.dst, form.size), mask = matrixOf(form.mask, form.size)]() mutable {
            src.copyTo(dst, mask);
        };
    });
}
[[maybe_unused]] const bool assemblies[] = {addPlanes<3>("kuviCopy_8u_P3C3R"), addPlanes<4>("kuviCopy_8u_P4C4R"),
                                            addMasked<Kuv8u>("kuviCopy_8u_C1MR"), addMasked<Kuv16u>("kuviCopy_16u_C1MR")};

template <class T>
bool addConstant(const char* function) {
    return addOpenCV<Constant<T>>(function, [](auto& form) {
        return [dst = matrixOf(form.dst, form.size)]() mutable { dst.setTo(cv::Scalar(41)); };
    });
}
[[maybe_unused]] const bool constants[] = {addConstant<Kuv8u>("kuviSet_8u_C1R"), addConstant<Kuv16u>("kuviSet_16u_C1R"),
                                           addConstant<Kuv32s>("kuviSet_32s_C1R"), addConstant<Kuv32f>("kuviSet_32f_C1R")};

template <class Form, int channels>
bool addConversion(const char* function) {
    return addOpenCV<Form>(function, [](auto& form) {
        const cv::Mat src = matrixOf(form.src, form.size, channels), dst = matrixOf(form.dst, form.size, channels);
        return [src, dst, factor = Form::factor, offset = Form::offset]() mutable { src.convertTo(dst, dst.type(), factor, offset); };
    });
}
[[maybe_unused]] const bool conversions[] = {addConversion<Converted<Kuv8u, Kuv32f, 1>, 1>("kuviConvert_8u32f_C1R"),
                                             addConversion<Converted<Kuv8u, Kuv32f, 3>, 3>("kuviConvert_8u32f_C3R"),
                                             addConversion<Converted<Kuv16u, Kuv32f, 1>, 1>("kuviConvert_16u32f_C1R"),
                                             addConversion<Converted<Kuv16u, Kuv8u, 1>, 1>("kuviConvert_16u8u_C1R"),
                                             addConversion<Converted<Kuv16u, Kuv8u, 3>, 3>("kuviConvert_16u8u_C3R"),
                                             addConversion<Rounded<1>, 3>("kuviConvert_32f8u_C3R"),
                                             addConversion<Scaled<Kuv8u, Kuv32f>, 3>("kuviScale_8u32f_C3R"),
                                             addConversion<Scaled<Kuv32f, Kuv8u>, 3>("kuviScale_32f8u_C3R")};

// About the axes, in place too, and about the main diagonal.
template <class T, int channels, Kuv32s axis, class Form>
bool addMirror(const char* function) {
    return addOpenCV<Form>(function, [](auto& form) {
        cv::Mat src, dst;
        if constexpr (requires { form.srcDst; }) {
            src = dst = matrixOf(form.srcDst, form.size, channels);
        } else {
            src = matrixOf(form.src, form.size, channels);
            dst = matrixOf(form.dst, form.mirrored, channels);
        }
        return [src, dst]() mutable {
            if constexpr (axis == kuvAxisDiagonal) cv::transpose(src, dst);
            else cv::flip(src, dst, axis == kuvAxisBoth ? -1 : axis);
        };
    });
}

template <class T, int channels, Kuv32s axis>
bool addMirrors(const char* function, const char* inPlace) {
    return addMirror<T, channels, axis, Mirrored<T, channels, axis>>(function) &&
           addMirror<T, channels, axis, MirroredInPlace<T, channels, axis>>(inPlace);
}

template <class T, int channels>
bool addAxes(const char* function, const char* inPlace) {
    return addMirrors<T, channels, kuvAxisHorizontal>(function, inPlace) && addMirrors<T, channels, kuvAxisVertical>(function, inPlace) &&
           addMirrors<T, channels, kuvAxisBoth>(function, inPlace) &&
           addMirror<T, channels, kuvAxisVertical, Mirrored<T, channels, kuvAxisVertical, false>>(function);
}

template <class T>
bool addTransposition(const char* function) {
    return addMirror<T, 1, kuvAxisDiagonal, Mirrored<T, 1, kuvAxisDiagonal>>(function);
}
[[maybe_unused]] const bool mirrors[] = {addAxes<Kuv8u, 1>("kuviMirror_8u_C1R", "kuviMirror_8u_C1IR"),
                                         addAxes<Kuv8u, 3>("kuviMirror_8u_C3R", "kuviMirror_8u_C3IR"),
                                         addAxes<Kuv16u, 1>("kuviMirror_16u_C1R", "kuviMirror_16u_C1IR"),
                                         addAxes<Kuv16u, 3>("kuviMirror_16u_C3R", "kuviMirror_16u_C3IR"),
                                         addTransposition<Kuv8u>("kuviMirror_8u_C1R"), addTransposition<Kuv16u>("kuviMirror_16u_C1R")};

template <int channels, bool alike = false>
bool addTable(const char* function) {
    return addOpenCV<ToneMapped<Kuv8u, channels, kuvLutLinear, alike>>(function, [](auto& form) {
        cv::Mat table(1, 256, CV_8UC(channels));
        for (int i = 0; i < 256 * channels; ++i) {
            const int x = i / channels, c = alike ? 0 : i % channels;
            table.data[i] = static_cast<Kuv8u>(c == 0 ? 255 - x : c == 1 ? x ^ 127 : x);
        }
        return [srcDst = matrixOf(form.srcDst, form.size, channels), table]() mutable { cv::LUT(srcDst, table, srcDst); };
    });
}
[[maybe_unused]] const bool tables[] = {addTable<1>("kuviLUT_8u_C1IR"), addTable<3>("kuviLUT_8u_C3IR"),
                                        addTable<3, true>("kuviLUT_8u_C3IR"), addTable<4>("kuviLUT_8u_AC4IR")};

// `measure` gets the image and gives something that depends on all results.
template <class T, int channels, Kuv32s option = 0, int lowest = -100, class Measure>
bool addMeasurement(const char* function, Measure measure) {
    return addOpenCV<Measured<T, channels, option, lowest>>(function, [measure](auto& form) {
        return [src = matrixOf(form.src, form.size, channels), to = form.moments, measure]() { *to = measure(src); };
    });
}
auto total = [](const cv::Mat& src) { return cv::sum(src)[0]; };
auto mean = [](const cv::Mat& src) { return cv::mean(src)[0]; };
auto deviation = [](const cv::Mat& src) {
    cv::Scalar means, deviations;
    cv::meanStdDev(src, means, deviations);
    return means[0] + deviations[0];
};
auto range = [](const cv::Mat& src) {
    double smallest, largest;
    cv::minMaxLoc(src, &smallest, &largest);
    return smallest + largest;
};
// Of all channels together: it has no other.
auto largest = [](const cv::Mat& src) {
    double found;
    cv::minMaxLoc(src.reshape(1), nullptr, &found);
    return found;
};
[[maybe_unused]] const bool measurements[] = {
    addMeasurement<Kuv32f, 1>("kuviSum_32f_C1R", total), addMeasurement<Kuv32f, 1, 2>("kuviSum_32f_C1R", total),
    addMeasurement<Kuv32f, 1>("kuviMean_32f_C1R", mean), addMeasurement<Kuv32f, 1, 2>("kuviMean_32f_C1R", mean),
    addMeasurement<Kuv16s, 1>("kuviMean_16s_C1R", mean), addMeasurement<Kuv8u, 3>("kuviMean_8u_C3R", mean),
    addMeasurement<Kuv8u, 1>("kuviMean_StdDev_8u_C1R", deviation), addMeasurement<Kuv16u, 1>("kuviMean_StdDev_16u_C1R", deviation),
    addMeasurement<Kuv32f, 1>("kuviMean_StdDev_32f_C1R", deviation),
    addMeasurement<Kuv32f, 1, 0, 90>("kuviMean_StdDev_32f_C1R", deviation),
    addMeasurement<Kuv8u, 3, 2>("kuviMean_StdDev_8u_C3CR", deviation),
    addMeasurement<Kuv16s, 1>("kuviMinMax_16s_C1R", range), addMeasurement<Kuv32f, 1>("kuviMinMax_32f_C1R", range),
    addMeasurement<Kuv32f, 3>("kuviMax_32f_C3R", largest)};

#ifdef KUV_OPENCV_IMGPROC
[[maybe_unused]] const bool integral = addOpenCV<Integrated>("kuviIntegral_8u32s_C1R", [](auto& form) {
    return [src = matrixOf(form.src, form.size), dst = matrixOf(form.dst, form.tableSize)]() mutable { cv::integral(src, dst, CV_32S); };
});

template <int kernelWidth, int kernelHeight>
bool addFilter() {
    return addOpenCV<Filtered<kernelWidth, kernelHeight>>("kuviFilterBorder_32f_C1R", [](auto& form) {
        // With one destination for both, what goes past the caches would pay for the lines that it has just left there.
        const cv::Mat src = matrixOf(form.src, form.size), dst = matrixOf(form.dst, form.size).clone(),
                      kernel = matrixOf(form.kernel, form.kernelSize);
        return [src, dst, kernel]() mutable { cv::filter2D(src, dst, CV_32F, kernel, cv::Point(-1, -1), 0, cv::BORDER_REPLICATE); };
    });
}
[[maybe_unused]] const bool filters[] = {addFilter<3, 3>(),   addFilter<5, 5>(), addFilter<7, 7>(),
                                         addFilter<11, 11>(), addFilter<9, 1>(), addFilter<1, 9>()};

template <class Form, int srcChannels, int dstChannels>
bool addColourSpace(const char* function, int code) {
    return addOpenCV<Form>(function, [code](auto& form) {
        cv::Mat src, dst;
        if constexpr (requires { form.srcDst; }) {
            // It has no such operation in place: a second image takes the result.
            src = matrixOf(form.srcDst, form.size, srcChannels);
            dst = src.clone();
        } else {
            src = matrixOf(form.src, form.size, srcChannels);
            dst = matrixOf(form.dst, form.size, dstChannels);
        }
        return [src, dst, code]() mutable { cv::cvtColor(src, dst, code); };
    });
}

template <int channels>
bool addColourSpaces(const char* function, int code) {
    return addColourSpace<FromTo<Kuv8u, channels, 3>, channels, 3>(function, code) &&
           addColourSpace<FromTo<Kuv8u, channels, 3, false>, channels, 3>(function, code);
}
[[maybe_unused]] const bool colourSpaces[] = {addColourSpaces<2>("kuviCbYCr422ToRGB_8u_C2C3R", cv::COLOR_YUV2RGB_UYVY),
                                              addColourSpaces<1>("kuviGrayToRGB_8u_C1C3R", cv::COLOR_GRAY2RGB)};
[[maybe_unused]] const bool orders[] = {
    addColourSpace<FromTo<Kuv8u, 4, 3>, 4, 3>("kuviCopy_8u_AC4C3R", cv::COLOR_BGRA2BGR),
    addColourSpace<FromTo<Kuv16u, 4, 3>, 4, 3>("kuviCopy_16u_AC4C3R", cv::COLOR_BGRA2BGR),
    addColourSpace<Reversed<Kuv8u, 3>, 3, 3>("kuviSwapChannels_8u_C3R", cv::COLOR_BGR2RGB),
    addColourSpace<Reversed<Kuv16u, 3>, 3, 3>("kuviSwapChannels_16u_C3R", cv::COLOR_BGR2RGB),
    addColourSpace<ReversedInPlace<3>, 3, 3>("kuviSwapChannels_8u_C3IR", cv::COLOR_BGR2RGB),
    addColourSpace<ReversedInPlace<4>, 4, 4>("kuviSwapChannels_8u_C4IR", cv::COLOR_BGRA2RGBA)};

// Channel by channel: it has no other histograms of single channels.
template <class T, int channels, int bins, bool even = true, Content content = Content::noise>
bool addHistogram(const char* function) {
    return addOpenCV<Counted<T, channels, bins, even, content>>(function, [](auto& form) {
        std::vector<float> ends = {form.levels.front(), form.levels.back()};
        return [src = matrixOf(form.src, form.size, channels), ranges = even ? ends : form.levels, hist = cv::Mat()]() mutable {
            const float* list = ranges.data();
            const int count = bins;
            for (int c = 0; c < channels; ++c) cv::calcHist(&src, 1, &c, cv::Mat(), hist, 1, &count, &list, even);
        };
    });
}
[[maybe_unused]] const bool histograms[] = {
    addHistogram<Kuv8u, 1, 256>("kuviHistogram_8u_C1R"), addHistogram<Kuv8u, 1, 256, true, Content::flat>("kuviHistogram_8u_C1R"),
    addHistogram<Kuv8u, 3, 256>("kuviHistogram_8u_C3R"), addHistogram<Kuv8u, 4, 256>("kuviHistogram_8u_C4R"),
    addHistogram<Kuv16u, 1, 256>("kuviHistogram_16u_C1R"), addHistogram<Kuv16u, 1, 256, false>("kuviHistogram_16u_C1R"),
    addHistogram<Kuv16u, 4, 256>("kuviHistogram_16u_C4R"),
    addHistogram<Kuv32f, 1, 256>("kuviHistogram_32f_C1R"), addHistogram<Kuv32f, 1, 256, true, Content::flat>("kuviHistogram_32f_C1R"),
    addHistogram<Kuv32f, 1, 19, false>("kuviHistogram_32f_C1R"), addHistogram<Kuv32f, 1, 64, false>("kuviHistogram_32f_C1R"),
    addHistogram<Kuv32f, 1, 256, false>("kuviHistogram_32f_C1R")};

template <class T>
bool addInterpolation(const char* function) {
    return addOpenCV<Interpolated<T>>(function, [](auto& form) {
        const cv::Mat src = matrixOf(form.src, form.size), dst = matrixOf(form.dst, form.size, 3);
        return [src, dst]() mutable { cv::cvtColor(src, dst, cv::COLOR_BayerBG2RGB); };
    });
}
[[maybe_unused]] const bool interpolations[] = {addInterpolation<Kuv8u>("kuviCFAToRGB_8u_C1C3R"),
                                                addInterpolation<Kuv16u>("kuviCFAToRGB_16u_C1C3R")};

template <int percent>
bool addResized() {
    return addOpenCV<Resized<percent>>("kuviResizeLinear_16s_C3R", [](auto& form) {
        const cv::Mat src = matrixOf(form.src, form.srcSize, 3), dst = matrixOf(form.dst, form.dstSize, 3);
        return [src, dst]() mutable { cv::resize(src, dst, dst.size(), 0, 0, cv::INTER_LINEAR); };
    });
}
[[maybe_unused]] const bool resized[] = {addResized<50>(), addResized<70>(), addResized<160>(), addResized<200>()};

// It takes 8-bit markers and gives labels of 16 or 32 bits in another image, in about the same time; where there are too many groups
// for 16 bits, too.
template <Markers kind, Kuv32s norm = kuvLabelNeighbours8>
bool addLabels() {
    return addOpenCV<Labelled<kind, norm>>("kuviLabelMarkers_16u_C1IR", [](auto& form) {
        return [markers = matrixOf(form.markers, form.size), labels = cv::Mat(), to = &form.count]() mutable {
            *to = cv::connectedComponents(markers, labels, norm == kuvLabelNeighbours8 ? 8 : 4, CV_16U);
        };
    });
}
[[maybe_unused]] const bool labels[] = {addLabels<Markers::noise>(), addLabels<Markers::blobs>(), addLabels<Markers::lines>(),
                                        addLabels<Markers::noise, kuvLabelNeighbours4>()};
#endif

}  // namespace
