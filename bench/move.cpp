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
KUV_BENCHMARK(kuviSet_16u_C1R, "aligned", Constant<Kuv16u>)
KUV_BENCHMARK(kuviSet_32s_C1R, "aligned", Constant<Kuv32s>)
KUV_BENCHMARK(kuviSet_32f_C1R, "aligned", Constant<Kuv32f>)
KUV_ADD(__COUNTER__, addCLibrary<Constant<Kuv8u>>("kuviSet_8u_C1R", "memset", setByMemset))
KUV_LOOP_PEERS(kuviSet_16u_C1R, set16, Constant<Kuv16u>)
KUV_LOOP_PEERS(kuviSet_32s_C1R, set32, Constant<Kuv32s>)
KUV_LOOP_PEERS(kuviSet_32f_C1R, setReal, Constant<Kuv32f>)

KUV_BENCHMARK(kuviSet_8u_C4CR, "aligned", Constant<Kuv8u, 4>)
KUV_LOOP_PEERS(kuviSet_8u_C4CR, setChannelOf4, Constant<Kuv8u, 4>)

#define CONVERSION(function, name, loop, ...)               \
    KUV_BENCHMARK(function, name, __VA_ARGS__)              \
    KUV_LOOP_PEERS(function, loop, __VA_ARGS__)
CONVERSION(kuviConvert_8u32f_C1R, "aligned", convert8to32f, Converted<Kuv8u, Kuv32f, 1>)
CONVERSION(kuviConvert_8u32f_C1R, "unaligned", convert8to32f, Converted<Kuv8u, Kuv32f, 1, false>)
CONVERSION(kuviConvert_8u32f_C3R, "aligned", convertThree8to32f, Converted<Kuv8u, Kuv32f, 3>)
CONVERSION(kuviConvert_16u32f_C1R, "aligned", convert16to32f, Converted<Kuv16u, Kuv32f, 1>)
CONVERSION(kuviConvert_16u8u_C1R, "aligned", convert16to8, Converted<Kuv16u, Kuv8u, 1>)
CONVERSION(kuviConvert_16u8u_C1R, "unaligned", convert16to8, Converted<Kuv16u, Kuv8u, 1, false>)
CONVERSION(kuviConvert_16u8u_C3R, "aligned", convertThree16to8, Converted<Kuv16u, Kuv8u, 3>)
CONVERSION(kuviConvert_32f8u_C3R, "toward zero", convert32fTo8, Rounded<0>)
CONVERSION(kuviConvert_32f8u_C3R, "to even", convert32fTo8, Rounded<1>)
CONVERSION(kuviConvert_32f8u_C3R, "from zero", convert32fTo8, Rounded<2>)
CONVERSION(kuviScale_8u32f_C3R, "aligned", scale8to32f, Scaled<Kuv8u, Kuv32f>)
CONVERSION(kuviScale_32f8u_C3R, "aligned", scale32fTo8, Scaled<Kuv32f, Kuv8u>)

#define MIRROR_AXIS(type, T, channels, loop, axis, name)                                                                  \
    KUV_BENCHMARK(kuviMirror_##type##R, name, Mirrored<T, channels, axis>)                                                \
    KUV_LOOP_PEERS(kuviMirror_##type##R, loop, Mirrored<T, channels, axis>)                                               \
    KUV_BENCHMARK(kuviMirror_##type##IR, name, MirroredInPlace<T, channels, axis>)                                        \
    KUV_LOOP_PEERS(kuviMirror_##type##IR, loop##InPlace, MirroredInPlace<T, channels, axis>)
#define MIRROR(type, T, channels, loop)                                                                                   \
    MIRROR_AXIS(type, T, channels, loop, kuvAxisHorizontal, "horizontal axis")                                            \
    MIRROR_AXIS(type, T, channels, loop, kuvAxisVertical, "vertical axis")                                                \
    MIRROR_AXIS(type, T, channels, loop, kuvAxisBoth, "both axes")                                                        \
    KUV_BENCHMARK(kuviMirror_##type##R, "vertical axis unaligned", Mirrored<T, channels, kuvAxisVertical, false>)        \
    KUV_LOOP_PEERS(kuviMirror_##type##R, loop, Mirrored<T, channels, kuvAxisVertical, false>)
MIRROR(8u_C1, Kuv8u, 1, mirrorOne8)
MIRROR(8u_C3, Kuv8u, 3, mirrorThree8)
MIRROR(16u_C1, Kuv16u, 1, mirrorOne16)
MIRROR(16u_C3, Kuv16u, 3, mirrorThree16)

#define TRANSPOSITION(function, T, loop)                                                                                  \
    KUV_BENCHMARK(function, "diagonal", Mirrored<T, 1, kuvAxisDiagonal>)                                                  \
    KUV_BENCHMARK(function, "second diagonal", Mirrored<T, 1, kuvAxisSecondDiagonal>)                                     \
    KUV_LOOP_PEERS(function, loop, Mirrored<T, 1, kuvAxisDiagonal>)                                                       \
    KUV_LOOP_PEERS(function, loop, Mirrored<T, 1, kuvAxisSecondDiagonal>)
TRANSPOSITION(kuviMirror_8u_C1R, Kuv8u, transpose8)
TRANSPOSITION(kuviMirror_16u_C1R, Kuv16u, transpose16)

KUV_BENCHMARK(kuviSwapChannels_8u_C3R, "aligned", Reversed<Kuv8u, 3>)
KUV_BENCHMARK(kuviSwapChannels_8u_C3R, "unaligned", Reversed<Kuv8u, 3, false>)
KUV_BENCHMARK(kuviSwapChannels_16u_C3R, "aligned", Reversed<Kuv16u, 3>)
KUV_BENCHMARK(kuviSwapChannels_16u_C3R, "unaligned", Reversed<Kuv16u, 3, false>)
KUV_BENCHMARK(kuviSwapChannels_8u_AC4R, "aligned", Reversed<Kuv8u, 4>)
KUV_BENCHMARK(kuviSwapChannels_8u_AC4R, "unaligned", Reversed<Kuv8u, 4, false>)
KUV_BENCHMARK(kuviSwapChannels_16u_AC4R, "aligned", Reversed<Kuv16u, 4>)
KUV_BENCHMARK(kuviSwapChannels_16u_AC4R, "unaligned", Reversed<Kuv16u, 4, false>)
KUV_BENCHMARK(kuviSwapChannels_8u_C3IR, "aligned", ReversedInPlace<3>)
KUV_BENCHMARK(kuviSwapChannels_8u_C3IR, "unaligned", ReversedInPlace<3, false>)
KUV_BENCHMARK(kuviSwapChannels_8u_C4IR, "aligned", ReversedInPlace<4>)
KUV_BENCHMARK(kuviSwapChannels_8u_C4IR, "unaligned", ReversedInPlace<4, false>)

KUV_LOOP_PEERS(kuviSwapChannels_8u_C3R, swapThree, Reversed<Kuv8u, 3>)
KUV_LOOP_PEERS(kuviSwapChannels_16u_C3R, swapThree16, Reversed<Kuv16u, 3>)
KUV_LOOP_PEERS(kuviSwapChannels_8u_AC4R, swapColours, Reversed<Kuv8u, 4>)
KUV_LOOP_PEERS(kuviSwapChannels_16u_AC4R, swapColours16, Reversed<Kuv16u, 4>)
KUV_LOOP_PEERS(kuviSwapChannels_8u_C3IR, swapThreeInPlace, ReversedInPlace<3>)
KUV_LOOP_PEERS(kuviSwapChannels_8u_C4IR, swapFourInPlace, ReversedInPlace<4>)

#define LAYOUT_COPY(function, loop, ...)                    \
    KUV_BENCHMARK(function, "aligned", __VA_ARGS__)         \
    KUV_LOOP_PEERS(function, loop, __VA_ARGS__)
LAYOUT_COPY(kuviCopy_8u_AC4R, copyAC4_8u, FromTo<Kuv8u, 4, 4>)
LAYOUT_COPY(kuviCopy_16u_AC4R, copyAC4_16u, FromTo<Kuv16u, 4, 4>)
LAYOUT_COPY(kuviCopy_8u_C3AC4R, copyC3AC4_8u, FromTo<Kuv8u, 3, 4>)
LAYOUT_COPY(kuviCopy_16u_C3AC4R, copyC3AC4_16u, FromTo<Kuv16u, 3, 4>)
LAYOUT_COPY(kuviCopy_8u_AC4C3R, copyAC4C3_8u, FromTo<Kuv8u, 4, 3>)
LAYOUT_COPY(kuviCopy_16u_AC4C3R, copyAC4C3_16u, FromTo<Kuv16u, 4, 3>)
LAYOUT_COPY(kuviCopy_8u_C1C3R, copyC1C3, FromTo<Kuv8u, 1, 3>)
LAYOUT_COPY(kuviCopy_8u_P3C3R, copyP3C3, Planar<3>)
LAYOUT_COPY(kuviCopy_8u_P4C4R, copyP4C4, Planar<4>)
LAYOUT_COPY(kuviCopy_8u_C1MR, copyMasked8, UnderMask<Kuv8u>)
LAYOUT_COPY(kuviCopy_16u_C1MR, copyMasked16, UnderMask<Kuv16u>)
