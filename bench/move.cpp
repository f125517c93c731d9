// Moving and setting samples, and the C library's memcpy and memset on the same images.
#include <gnu/libc-version.h>

#include <cstring>

#include "loops.hpp"
#include "support/cases.hpp"
#include "support/forms.hpp"

using namespace kuvbench;

namespace {

// As a caller would write it: one run where the rows touch, else row by row.
template <class T, int channels>
KuvStatus copyByMemcpy(const T* src, Kuv32s srcStep, T* dst, Kuv32s dstStep, KuviSize size) {
    const std::size_t row = static_cast<std::size_t>(size.width) * channels * sizeof(T);
    if (static_cast<std::size_t>(srcStep) == row && srcStep == dstStep) {
        std::memcpy(dst, src, row * static_cast<std::size_t>(size.height));
    } else {
        for (std::ptrdiff_t y = 0; y < size.height; ++y) {
            std::memcpy(reinterpret_cast<char*>(dst) + y * dstStep, reinterpret_cast<const char*>(src) + y * srcStep, row);
        }
    }
    return kuvStatusOk;
}

KuvStatus setByMemset(Kuv8u value, Kuv8u* dst, Kuv32s dstStep, KuviSize size) {
    if (dstStep == size.width) {
        std::memset(dst, value, static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height));
    } else {
        for (std::ptrdiff_t y = 0; y < size.height; ++y) std::memset(dst + y * dstStep, value, static_cast<std::size_t>(size.width));
    }
    return kuvStatusOk;
}

KuvStatus copySignal(const Kuv8u* src, Kuv8u* dst, Kuv32s len) {
    std::memcpy(dst, src, static_cast<std::size_t>(len));
    return kuvStatusOk;
}

KuvStatus zeroSignal(Kuv8u* dst, Kuv32s len) {
    std::memset(dst, 0, static_cast<std::size_t>(len));
    return kuvStatusOk;
}

template <class Form, class Function>
bool addCLibrary(const char* function, const char* name, Function* peer) {
    return addPeer(function, typeid(Form), {gnu_get_libc_version(), false, nullptr, contenderOf<Form>(name, "", peer)});
}

}  // namespace

namespace kuvbench {
using ::addCLibrary;
}

#define PLAIN_COPY(function, T, channels)                                                                                   \
    KUV_BENCHMARK(function, "aligned", FromTo<T, channels>)                                                                 \
    KUV_BENCHMARK(function, "unaligned", FromTo<T, channels, channels, false>)                                              \
    KUV_ADD(__COUNTER__, addCLibrary<FromTo<T, channels>>(#function, "memcpy", copyByMemcpy<T, channels>))                  \
    KUV_ADD(__COUNTER__, addCLibrary<FromTo<T, channels, channels, false>>(#function, "memcpy", copyByMemcpy<T, channels>))
PLAIN_COPY(kuviCopy_8u_C1R, Kuv8u, 1)
PLAIN_COPY(kuviCopy_16u_C1R, Kuv16u, 1)
PLAIN_COPY(kuviCopy_16s_C1R, Kuv16s, 1)
PLAIN_COPY(kuviCopy_32s_C1R, Kuv32s, 1)
PLAIN_COPY(kuviCopy_32f_C1R, Kuv32f, 1)
PLAIN_COPY(kuviCopy_8u_C3R, Kuv8u, 3)
PLAIN_COPY(kuviCopy_16u_C3R, Kuv16u, 3)
PLAIN_COPY(kuviCopy_8u_C4R, Kuv8u, 4)

KUV_BENCHMARK(kuvsCopy_8u, "run", ByteSignal)
KUV_BENCHMARK(kuvsZero_8u, "run", ByteSignal)
KUV_ADD(__COUNTER__, addCLibrary<ByteSignal>("kuvsCopy_8u", "memcpy", copySignal))
KUV_ADD(__COUNTER__, addCLibrary<ByteSignal>("kuvsZero_8u", "memset", zeroSignal))

KUV_BENCHMARK(kuviSet_8u_C1R, "aligned", Constant<Kuv8u>)
KUV_ADD(__COUNTER__, addCLibrary<Constant<Kuv8u>>("kuviSet_8u_C1R", "memset", setByMemset))
KUV_BENCHMARK_AND_LOOPS(kuviSet_16u_C1R, set16, "aligned", Constant<Kuv16u>)
KUV_BENCHMARK_AND_LOOPS(kuviSet_32s_C1R, set32, "aligned", Constant<Kuv32s>)
KUV_BENCHMARK_AND_LOOPS(kuviSet_32f_C1R, setReal, "aligned", Constant<Kuv32f>)
KUV_BENCHMARK_AND_LOOPS(kuviSet_8u_C4CR, setChannelOf4, "aligned", Constant<Kuv8u, 4>)

KUV_BENCHMARK_AND_LOOPS(kuviConvert_8u32f_C1R, convert8to32f, "aligned", Converted<Kuv8u, Kuv32f, 1>)
KUV_BENCHMARK_AND_LOOPS(kuviConvert_8u32f_C1R, convert8to32f, "unaligned", Converted<Kuv8u, Kuv32f, 1, false>)
KUV_BENCHMARK_AND_LOOPS(kuviConvert_8u32f_C3R, convertThree8to32f, "aligned", Converted<Kuv8u, Kuv32f, 3>)
KUV_BENCHMARK_AND_LOOPS(kuviConvert_16u32f_C1R, convert16to32f, "aligned", Converted<Kuv16u, Kuv32f, 1>)
KUV_BENCHMARK_AND_LOOPS(kuviConvert_16u8u_C1R, convert16to8, "aligned", Converted<Kuv16u, Kuv8u, 1>)
KUV_BENCHMARK_AND_LOOPS(kuviConvert_16u8u_C1R, convert16to8, "unaligned", Converted<Kuv16u, Kuv8u, 1, false>)
KUV_BENCHMARK_AND_LOOPS(kuviConvert_16u8u_C3R, convertThree16to8, "aligned", Converted<Kuv16u, Kuv8u, 3>)
KUV_BENCHMARK_AND_LOOPS(kuviConvert_32f8u_C3R, convert32fTo8, "toward zero", Rounded<0>)
KUV_BENCHMARK_AND_LOOPS(kuviConvert_32f8u_C3R, convert32fTo8, "to even", Rounded<1>)
KUV_BENCHMARK_AND_LOOPS(kuviConvert_32f8u_C3R, convert32fTo8, "from zero", Rounded<2>)
KUV_BENCHMARK_AND_LOOPS(kuviScale_8u32f_C3R, scale8to32f, "aligned", Scaled<Kuv8u, Kuv32f>)
KUV_BENCHMARK_AND_LOOPS(kuviScale_32f8u_C3R, scale32fTo8, "aligned", Scaled<Kuv32f, Kuv8u>)

#define MIRROR_AXIS(type, T, channels, loop, axis, name)                                                                  \
    KUV_BENCHMARK_AND_LOOPS(kuviMirror_##type##R, loop, name, Mirrored<T, channels, axis>)                                \
    KUV_BENCHMARK_AND_LOOPS(kuviMirror_##type##IR, loop##InPlace, name, MirroredInPlace<T, channels, axis>)
#define MIRROR(type, T, channels, loop)                                                                                   \
    MIRROR_AXIS(type, T, channels, loop, kuvAxisHorizontal, "horizontal axis")                                            \
    MIRROR_AXIS(type, T, channels, loop, kuvAxisVertical, "vertical axis")                                                \
    MIRROR_AXIS(type, T, channels, loop, kuvAxisBoth, "both axes")                                                        \
    KUV_BENCHMARK_AND_LOOPS(kuviMirror_##type##R, loop, "vertical axis unaligned", Mirrored<T, channels, kuvAxisVertical, false>)
MIRROR(8u_C1, Kuv8u, 1, mirrorOne8)
MIRROR(8u_C3, Kuv8u, 3, mirrorThree8)
MIRROR(16u_C1, Kuv16u, 1, mirrorOne16)
MIRROR(16u_C3, Kuv16u, 3, mirrorThree16)

#define TRANSPOSITION(function, T, loop)                                                                                  \
    KUV_BENCHMARK_AND_LOOPS(function, loop, "diagonal", Mirrored<T, 1, kuvAxisDiagonal>)                                  \
    KUV_BENCHMARK_AND_LOOPS(function, loop, "second diagonal", Mirrored<T, 1, kuvAxisSecondDiagonal>)
TRANSPOSITION(kuviMirror_8u_C1R, Kuv8u, transpose8)
TRANSPOSITION(kuviMirror_16u_C1R, Kuv16u, transpose16)

KUV_BENCHMARK_AND_LOOPS(kuviSwapChannels_8u_C3R, swapThree, "aligned", Reversed<Kuv8u, 3>)
KUV_BENCHMARK_AND_LOOPS(kuviSwapChannels_16u_C3R, swapThree16, "aligned", Reversed<Kuv16u, 3>)
KUV_BENCHMARK_AND_LOOPS(kuviSwapChannels_8u_AC4R, swapColours, "aligned", Reversed<Kuv8u, 4>)
KUV_BENCHMARK_AND_LOOPS(kuviSwapChannels_16u_AC4R, swapColours16, "aligned", Reversed<Kuv16u, 4>)
KUV_BENCHMARK_AND_LOOPS(kuviSwapChannels_8u_C3IR, swapThreeInPlace, "aligned", ReversedInPlace<3>)
KUV_BENCHMARK_AND_LOOPS(kuviSwapChannels_8u_C4IR, swapFourInPlace, "aligned", ReversedInPlace<4>)
KUV_BENCHMARK(kuviSwapChannels_8u_C3R, "unaligned", Reversed<Kuv8u, 3, false>)
KUV_BENCHMARK(kuviSwapChannels_16u_C3R, "unaligned", Reversed<Kuv16u, 3, false>)
KUV_BENCHMARK(kuviSwapChannels_8u_AC4R, "unaligned", Reversed<Kuv8u, 4, false>)
KUV_BENCHMARK(kuviSwapChannels_16u_AC4R, "unaligned", Reversed<Kuv16u, 4, false>)
KUV_BENCHMARK(kuviSwapChannels_8u_C3IR, "unaligned", ReversedInPlace<3, false>)
KUV_BENCHMARK(kuviSwapChannels_8u_C4IR, "unaligned", ReversedInPlace<4, false>)

KUV_BENCHMARK_AND_LOOPS(kuviCopy_8u_AC4R, copyAC4_8u, "aligned", FromTo<Kuv8u, 4, 4>)
KUV_BENCHMARK_AND_LOOPS(kuviCopy_16u_AC4R, copyAC4_16u, "aligned", FromTo<Kuv16u, 4, 4>)
KUV_BENCHMARK_AND_LOOPS(kuviCopy_8u_C3AC4R, copyC3AC4_8u, "aligned", FromTo<Kuv8u, 3, 4>)
KUV_BENCHMARK_AND_LOOPS(kuviCopy_16u_C3AC4R, copyC3AC4_16u, "aligned", FromTo<Kuv16u, 3, 4>)
KUV_BENCHMARK_AND_LOOPS(kuviCopy_8u_AC4C3R, copyAC4C3_8u, "aligned", FromTo<Kuv8u, 4, 3>)
KUV_BENCHMARK_AND_LOOPS(kuviCopy_16u_AC4C3R, copyAC4C3_16u, "aligned", FromTo<Kuv16u, 4, 3>)
KUV_BENCHMARK_AND_LOOPS(kuviCopy_8u_C1C3R, copyC1C3, "aligned", FromTo<Kuv8u, 1, 3>)
KUV_BENCHMARK_AND_LOOPS(kuviCopy_8u_P3C3R, copyP3C3, "aligned", Planar<3>)
KUV_BENCHMARK_AND_LOOPS(kuviCopy_8u_P4C4R, copyP4C4, "aligned", Planar<4>)
KUV_BENCHMARK_AND_LOOPS(kuviCopy_8u_C1MR, copyMasked8, "aligned", UnderMask<Kuv8u>)
KUV_BENCHMARK_AND_LOOPS(kuviCopy_16u_C1MR, copyMasked16, "aligned", UnderMask<Kuv16u>)
