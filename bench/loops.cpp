// Compiled for each instruction set, so nothing of the standard library stands here: its inline functions would be emitted with
// AVX2 instructions, and the linker might keep those for everyone.
#include "loops.hpp"

#include <stddef.h>

#define KUV_SHIFT_LOOP(name, shift)                                                                                 \
    KuvStatus KUV_LOOP(name)(Kuv32u value, Kuv16u* srcDst, Kuv32s srcDstStep, KuviSize roiSize) {                    \
        for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                             \
            Kuv16u* row = (Kuv16u*)((char*)srcDst + y * srcDstStep);                                                 \
            for (ptrdiff_t x = 0; x < roiSize.width; ++x) row[x] = (Kuv16u)(row[x] shift value);                     \
        }                                                                                                            \
        return kuvStatusOk;                                                                                          \
    }
KUV_SHIFT_LOOP(shiftLeft, <<)
KUV_SHIFT_LOOP(shiftRight, >>)

#define KUV_SHIFT_CHANNELS_LOOP(name, samples, shift)                                                                \
    KuvStatus KUV_LOOP(name)(const Kuv32u value[3], Kuv16u* srcDst, Kuv32s srcDstStep, KuviSize roiSize) {           \
        const Kuv32u first = value[0], second = value[1], third = value[2];                                          \
        for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                             \
            Kuv16u* pixel = (Kuv16u*)((char*)srcDst + y * srcDstStep);                                               \
            for (ptrdiff_t x = 0; x < roiSize.width; ++x, pixel += samples) {                                        \
                pixel[0] = (Kuv16u)(pixel[0] shift first);                                                           \
                pixel[1] = (Kuv16u)(pixel[1] shift second);                                                          \
                pixel[2] = (Kuv16u)(pixel[2] shift third);                                                           \
            }                                                                                                        \
        }                                                                                                            \
        return kuvStatusOk;                                                                                          \
    }
KUV_SHIFT_CHANNELS_LOOP(shiftThreeLeft, 3, <<)
KUV_SHIFT_CHANNELS_LOOP(shiftThreeRight, 3, >>)
KUV_SHIFT_CHANNELS_LOOP(shiftColoursLeft, 4, <<)
KUV_SHIFT_CHANNELS_LOOP(shiftColoursRight, 4, >>)

#define KUV_SHIFT_SIGNAL_LOOP(name, shift)                                                                           \
    KuvStatus KUV_LOOP(name)(Kuv32s value, Kuv16u* srcDst, Kuv32s len) {                                             \
        for (ptrdiff_t i = 0; i < len; ++i) srcDst[i] = (Kuv16u)(srcDst[i] shift value);                             \
        return kuvStatusOk;                                                                                          \
    }
KUV_SHIFT_SIGNAL_LOOP(shiftSignalLeft, <<)
KUV_SHIFT_SIGNAL_LOOP(shiftSignalRight, >>)

#define KUV_SET_LOOP(name, T, pitch)                                                                                 \
    KuvStatus KUV_LOOP(name)(T value, T* dst, Kuv32s dstStep, KuviSize roiSize) {                                    \
        for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                             \
            T* to = (T*)((char*)dst + y * dstStep);                                                                  \
            for (ptrdiff_t x = 0; x < roiSize.width; ++x) to[pitch * x] = value;                                     \
        }                                                                                                            \
        return kuvStatusOk;                                                                                          \
    }
KUV_SET_LOOP(set16, Kuv16u, 1)
KUV_SET_LOOP(set32, Kuv32s, 1)
KUV_SET_LOOP(setReal, Kuv32f, 1)
KUV_SET_LOOP(setChannelOf4, Kuv8u, 4)

// A statement for each sample x of the source; `to` is the destination's.
#define KUV_EACH_SAMPLE(S, D, samples, ...)                                                                          \
    for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                                 \
        const S* from = (const S*)((const char*)src + y * srcStep);                                                  \
        D* to = (D*)((char*)dst + y * dstStep);                                                                      \
        for (ptrdiff_t i = 0; i < (ptrdiff_t)samples * roiSize.width; ++i) {                                         \
            const S x = from[i];                                                                                     \
            to[i] = __VA_ARGS__;                                                                                     \
        }                                                                                                            \
    }                                                                                                                \
    return kuvStatusOk;

#define KUV_CONVERT_LOOP(name, S, D, samples, ...)                                                                   \
    KuvStatus KUV_LOOP(name)(const S* src, Kuv32s srcStep, D* dst, Kuv32s dstStep, KuviSize roiSize) {               \
        KUV_EACH_SAMPLE(S, D, samples, __VA_ARGS__)                                                                  \
    }
KUV_CONVERT_LOOP(convert8to32f, Kuv8u, Kuv32f, 1, (Kuv32f)x)
KUV_CONVERT_LOOP(convertThree8to32f, Kuv8u, Kuv32f, 3, (Kuv32f)x)
KUV_CONVERT_LOOP(convert16to32f, Kuv16u, Kuv32f, 1, (Kuv32f)x)
KUV_CONVERT_LOOP(convert16to8, Kuv16u, Kuv8u, 1, (Kuv8u)(x < 255 ? x : 255))
KUV_CONVERT_LOOP(convertThree16to8, Kuv16u, Kuv8u, 3, (Kuv8u)(x < 255 ? x : 255))

static inline Kuv32f clamped(Kuv32f x, Kuv32f lowest, Kuv32f highest) {
    return x > highest ? highest : x > lowest ? x : lowest;
}

KuvStatus KUV_LOOP(convert32fTo8)(const Kuv32f* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize, Kuv32s roundMode) {
    if (roundMode == 0) {
        KUV_EACH_SAMPLE(Kuv32f, Kuv8u, 3, (Kuv8u)(int)clamped(x, 0, 255))
    } else if (roundMode == 1) {
        KUV_EACH_SAMPLE(Kuv32f, Kuv8u, 3, (Kuv8u)(int)__builtin_rintf(clamped(x, 0, 255)))
    } else {
        KUV_EACH_SAMPLE(Kuv32f, Kuv8u, 3, (Kuv8u)(int)(clamped(x, 0, 255) + 0.5f))
    }
}

KuvStatus KUV_LOOP(scale8to32f)(const Kuv8u* src, Kuv32s srcStep, Kuv32f* dst, Kuv32s dstStep, KuviSize roiSize, Kuv32f vMin, Kuv32f vMax) {
    const Kuv64f step = ((Kuv64f)vMax - vMin) / 255, lowest = vMin;
    KUV_EACH_SAMPLE(Kuv8u, Kuv32f, 3, (Kuv32f)(step * x + lowest))
}

KuvStatus KUV_LOOP(scale32fTo8)(const Kuv32f* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize, Kuv32f vMin, Kuv32f vMax) {
    const Kuv64f k = 255 / ((Kuv64f)vMax - vMin), start = 0.5 - vMin * k;
    KUV_EACH_SAMPLE(Kuv32f, Kuv8u, 3, (Kuv8u)(int)(start + clamped(x, vMin, vMax) * k))
}

#define KUV_SWAP_LOOP(name, T, channels)                                                                             \
    KuvStatus KUV_LOOP(name)(const T* src, Kuv32s srcStep, T* dst, Kuv32s dstStep, KuviSize roiSize, const Kuv32s* dstOrder) { \
        const ptrdiff_t first = dstOrder[0], second = dstOrder[1], third = dstOrder[2];                              \
        for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                             \
            const T* from = (const T*)((const char*)src + y * srcStep);                                              \
            T* to = (T*)((char*)dst + y * dstStep);                                                                  \
            for (ptrdiff_t x = 0; x < roiSize.width; ++x, from += channels, to += channels) {                        \
                const T a = from[first], b = from[second], c = from[third];                                          \
                to[0] = a, to[1] = b, to[2] = c;                                                                     \
            }                                                                                                        \
        }                                                                                                            \
        return kuvStatusOk;                                                                                          \
    }
KUV_SWAP_LOOP(swapThree, Kuv8u, 3)
KUV_SWAP_LOOP(swapThree16, Kuv16u, 3)
KUV_SWAP_LOOP(swapColours, Kuv8u, 4)
KUV_SWAP_LOOP(swapColours16, Kuv16u, 4)

KuvStatus KUV_LOOP(swapThreeInPlace)(Kuv8u* srcDst, Kuv32s srcDstStep, KuviSize roiSize, const Kuv32s* dstOrder) {
    return KUV_LOOP(swapThree)(srcDst, srcDstStep, srcDst, srcDstStep, roiSize, dstOrder);
}

KuvStatus KUV_LOOP(swapFourInPlace)(Kuv8u* srcDst, Kuv32s srcDstStep, KuviSize roiSize, const Kuv32s* dstOrder) {
    const ptrdiff_t order[4] = {dstOrder[0], dstOrder[1], dstOrder[2], dstOrder[3]};
    for (ptrdiff_t y = 0; y < roiSize.height; ++y) {
        Kuv8u* pixel = srcDst + y * srcDstStep;
        for (ptrdiff_t x = 0; x < roiSize.width; ++x, pixel += 4) {
            const Kuv8u a = pixel[order[0]], b = pixel[order[1]], c = pixel[order[2]], d = pixel[order[3]];
            pixel[0] = a, pixel[1] = b, pixel[2] = c, pixel[3] = d;
        }
    }
    return kuvStatusOk;
}

// The three axes: 0 exchanges rows, 1 reverses them, 2 does both.
#define KUV_MIRROR_LOOP(name, T, channels)                                                                           \
    KuvStatus KUV_LOOP(name)(const T* src, Kuv32s srcStep, T* dst, Kuv32s dstStep, KuviSize roiSize, Kuv32s axis) {  \
        const ptrdiff_t width = roiSize.width, height = roiSize.height;                                              \
        for (ptrdiff_t y = 0; y < height; ++y) {                                                                     \
            const T* from = (const T*)((const char*)src + y * srcStep);                                              \
            T* to = (T*)((char*)dst + (axis == 1 ? y : height - 1 - y) * dstStep);                                   \
            if (axis == 0) {                                                                                         \
                for (ptrdiff_t x = 0; x < channels * width; ++x) to[x] = from[x];                                    \
            } else {                                                                                                 \
                for (ptrdiff_t x = 0; x < width; ++x) {                                                              \
                    for (int c = 0; c < channels; ++c) to[channels * x + c] = from[channels * (width - 1 - x) + c];  \
                }                                                                                                    \
            }                                                                                                        \
        }                                                                                                            \
        return kuvStatusOk;                                                                                          \
    }                                                                                                                \
    KuvStatus KUV_LOOP(name##InPlace)(T* srcDst, Kuv32s srcDstStep, KuviSize roiSize, Kuv32s axis) {                 \
        const ptrdiff_t width = roiSize.width, height = roiSize.height;                                              \
        for (ptrdiff_t y = 0; y < (axis == 1 ? height : (height + 1) / 2); ++y) {                                    \
            T* a = (T*)((char*)srcDst + y * srcDstStep);                                                             \
            T* b = (T*)((char*)srcDst + (axis == 1 ? y : height - 1 - y) * srcDstStep);                              \
            const ptrdiff_t count = axis == 0 ? channels * width : a == b ? width / 2 : width;                       \
            if (axis == 0) {                                                                                         \
                for (ptrdiff_t x = 0; x < count; ++x) {                                                              \
                    const T kept = a[x];                                                                             \
                    a[x] = b[x], b[x] = kept;                                                                        \
                }                                                                                                    \
            } else {                                                                                                 \
                for (ptrdiff_t x = 0; x < count; ++x) {                                                              \
                    for (int c = 0; c < channels; ++c) {                                                             \
                        T* other = b + channels * (width - 1 - x) + c;                                               \
                        const T kept = a[channels * x + c];                                                          \
                        a[channels * x + c] = *other, *other = kept;                                                 \
                    }                                                                                                \
                }                                                                                                    \
            }                                                                                                        \
        }                                                                                                            \
        return kuvStatusOk;                                                                                          \
    }
KUV_MIRROR_LOOP(mirrorOne8, Kuv8u, 1)
KUV_MIRROR_LOOP(mirrorThree8, Kuv8u, 3)
KUV_MIRROR_LOOP(mirrorOne16, Kuv16u, 1)
KUV_MIRROR_LOOP(mirrorThree16, Kuv16u, 3)

// About the main diagonal, or the second one.
#define KUV_TRANSPOSE_LOOP(name, T)                                                                                  \
    KuvStatus KUV_LOOP(name)(const T* src, Kuv32s srcStep, T* dst, Kuv32s dstStep, KuviSize roiSize, Kuv32s axis) {  \
        for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                             \
            T* to = (T*)((char*)dst + (axis == 3 ? y : roiSize.height - 1 - y) * dstStep);                           \
            for (ptrdiff_t x = 0; x < roiSize.width; ++x) {                                                          \
                const T* from = (const T*)((const char*)src + (axis == 3 ? x : roiSize.width - 1 - x) * srcStep);    \
                to[x] = from[y];                                                                                     \
            }                                                                                                        \
        }                                                                                                            \
        return kuvStatusOk;                                                                                          \
    }
KUV_TRANSPOSE_LOOP(transpose8, Kuv8u)
KUV_TRANSPOSE_LOOP(transpose16, Kuv16u)

#define KUV_LAYOUT_LOOP(name, T, colours, srcSamples, dstSamples)                                                    \
    KuvStatus KUV_LOOP(name)(const T* src, Kuv32s srcStep, T* dst, Kuv32s dstStep, KuviSize roiSize) {               \
        for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                             \
            const T* from = (const T*)((const char*)src + y * srcStep);                                              \
            T* to = (T*)((char*)dst + y * dstStep);                                                                  \
            for (ptrdiff_t x = 0; x < roiSize.width; ++x) {                                                          \
                for (int c = 0; c < colours; ++c) to[dstSamples * x + c] = from[srcSamples * x + c];                 \
            }                                                                                                        \
        }                                                                                                            \
        return kuvStatusOk;                                                                                          \
    }
KUV_LAYOUT_LOOP(copyAC4_8u, Kuv8u, 3, 4, 4)
KUV_LAYOUT_LOOP(copyAC4_16u, Kuv16u, 3, 4, 4)
KUV_LAYOUT_LOOP(copyC3AC4_8u, Kuv8u, 3, 3, 4)
KUV_LAYOUT_LOOP(copyC3AC4_16u, Kuv16u, 3, 3, 4)
KUV_LAYOUT_LOOP(copyAC4C3_8u, Kuv8u, 3, 4, 3)
KUV_LAYOUT_LOOP(copyAC4C3_16u, Kuv16u, 3, 4, 3)
KUV_LAYOUT_LOOP(copyC1C3, Kuv8u, 1, 1, 3)

#define KUV_PLANES_LOOP(name, channels)                                                                              \
    KuvStatus KUV_LOOP(name)(const Kuv8u* const src[channels], Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep,           \
                             KuviSize roiSize) {                                                                     \
        for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                             \
            const Kuv8u* from[channels]; /* for all that the compiler knows, dst overlaps the table of pointers */   \
            for (int c = 0; c < channels; ++c) from[c] = src[c] + y * srcStep;                                       \
            Kuv8u* to = dst + y * dstStep;                                                                           \
            for (ptrdiff_t x = 0; x < roiSize.width; ++x) {                                                          \
                for (int c = 0; c < channels; ++c) to[channels * x + c] = from[c][x];                                \
            }                                                                                                        \
        }                                                                                                            \
        return kuvStatusOk;                                                                                          \
    }
KUV_PLANES_LOOP(copyP3C3, 3)
KUV_PLANES_LOOP(copyP4C4, 4)

#define KUV_MASKED_LOOP(name, T)                                                                                     \
    KuvStatus KUV_LOOP(name)(const T* src, Kuv32s srcStep, T* dst, Kuv32s dstStep, KuviSize roiSize,                 \
                             const Kuv8u* mask, Kuv32s maskStep) {                                                   \
        for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                             \
            const T* from = (const T*)((const char*)src + y * srcStep);                                              \
            T* to = (T*)((char*)dst + y * dstStep);                                                                  \
            for (ptrdiff_t x = 0; x < roiSize.width; ++x) {                                                          \
                if (mask[y * maskStep + x] != 0) to[x] = from[x];                                                    \
            }                                                                                                        \
        }                                                                                                            \
        return kuvStatusOk;                                                                                          \
    }
KUV_MASKED_LOOP(copyMasked8, Kuv8u)
KUV_MASKED_LOOP(copyMasked16, Kuv16u)

// What becomes of an entry of the palette and the destination's pixel `to`.
#define KUV_PALETTE_LOOP(name, S, D, channels, ...)                                                                  \
    KuvStatus KUV_LOOP(name)(const S* src, Kuv32s srcStep, D* dst, Kuv32s dstStep, KuviSize roiSize,                 \
                             const D* table, Kuv32s nBitSize) {                                                      \
        const ptrdiff_t mask = ((ptrdiff_t)1 << nBitSize) - 1;                                                       \
        for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                             \
            const S* from = (const S*)((const char*)src + y * srcStep);                                              \
            D* to = (D*)((char*)dst + y * dstStep);                                                                  \
            for (ptrdiff_t x = 0; x < roiSize.width; ++x, to += channels) {                                          \
                const D* entry = table + channels * (from[x] & mask);                                                \
                __VA_ARGS__;                                                                                         \
            }                                                                                                        \
        }                                                                                                            \
        return kuvStatusOk;                                                                                          \
    }
#define KUV_THREE_BYTES const Kuv8u a = entry[0], b = entry[1], c = entry[2]; to[0] = a, to[1] = b, to[2] = c
KUV_PALETTE_LOOP(palette8to24, Kuv8u, Kuv8u, 3, KUV_THREE_BYTES)
KUV_PALETTE_LOOP(palette8to32, Kuv8u, Kuv32u, 1, *to = *entry)
KUV_PALETTE_LOOP(palette16to24, Kuv16u, Kuv8u, 3, KUV_THREE_BYTES)
KUV_PALETTE_LOOP(palette16to32, Kuv16u, Kuv32u, 1, *to = *entry)

// Without noise, in single precision.
#define KUV_REDUCE_ARGUMENTS                                                                                                   \
    const Kuv16u *src, Kuv32s srcStep, Kuv8u *dst, Kuv32s dstStep, KuviSize roiSize, Kuv32s, KuvDitherType ditherType,         \
        Kuv32s levels, Kuv8u *buffer

#define KUV_REDUCE_LOOP(name, samples, channels)                                                                               \
    KuvStatus KUV_LOOP(name)(KUV_REDUCE_ARGUMENTS) {                                                                           \
        (void)ditherType, (void)buffer;                                                                                        \
        const float count = (float)(levels - 1), step = 1 / count, half = 0.5f / count;                                        \
        for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                                       \
            const Kuv16u* from = (const Kuv16u*)((const char*)src + y * srcStep);                                              \
            Kuv8u* to = (Kuv8u*)((char*)dst + y * dstStep);                                                                    \
            for (ptrdiff_t x = 0; x < roiSize.width; ++x, from += samples, to += samples) {                                    \
                for (int c = 0; c < channels; ++c) {                                                                           \
                    const float value = from[c] * (1 / 65535.0f);                                                              \
                    float level = (float)(int)(count * value) * step;                                                          \
                    if (value - level > half) level += step;                                                                   \
                    const int byte = (int)(level * 255);                                                                       \
                    to[c] = (Kuv8u)(byte > 255 ? 255 : byte);                                                                  \
                }                                                                                                              \
            }                                                                                                                  \
        }                                                                                                                      \
        return kuvStatusOk;                                                                                                    \
    }
KUV_REDUCE_LOOP(reduceOne, 1, 1)
KUV_REDUCE_LOOP(reduceThree, 3, 3)
KUV_REDUCE_LOOP(reduceColours, 4, 3)

#define KUV_ORDER_LOOP(name, samples, channels)                                                                                \
    KuvStatus KUV_LOOP(name)(KUV_REDUCE_ARGUMENTS) {                                                                           \
        (void)ditherType, (void)buffer;                                                                                        \
        static const unsigned char matrix[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};              \
        const float step = 65535.0f / (float)(levels - 1), inverse = (float)(levels - 1) / 65535.0f;                           \
        for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                                       \
            const Kuv16u* from = (const Kuv16u*)((const char*)src + y * srcStep);                                              \
            Kuv8u* to = (Kuv8u*)((char*)dst + y * dstStep);                                                                    \
            float thresholds[4];                                                                                               \
            for (int i = 0; i < 4; ++i) thresholds[i] = matrix[y % 4][i] * step / 15;                                          \
            for (ptrdiff_t x = 0; x < roiSize.width; ++x, from += samples, to += samples) {                                    \
                for (int c = 0; c < channels; ++c) {                                                                           \
                    float base = (float)(int)(inverse * from[c]) * step;                                                       \
                    if (from[c] - base > thresholds[x % 4]) base += step;                                                      \
                    const int byte = (int)base >> 8;                                                                           \
                    to[c] = (Kuv8u)(byte > 255 ? 255 : byte);                                                                  \
                }                                                                                                              \
            }                                                                                                                  \
        }                                                                                                                      \
        return kuvStatusOk;                                                                                                    \
    }
KUV_ORDER_LOOP(orderOne, 1, 1)
KUV_ORDER_LOOP(orderThree, 3, 3)
KUV_ORDER_LOOP(orderColours, 4, 3)

// Lines of errors as long as a row, with two more on both sides, that change places after each row.
#define KUV_DIFFUSE_ROWS(samples, channels, sum)                                                                               \
    for (int c = 0; c < channels; ++c) {                                                                                       \
        for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                                       \
            const Kuv16u* from = (const Kuv16u*)((const char*)src + y * srcStep) + c;                                          \
            Kuv8u* to = (Kuv8u*)((char*)dst + y * dstStep) + c;                                                                \
            float left = 0;                                                                                                    \
            for (ptrdiff_t x = 0; x < roiSize.width; ++x) {                                                                    \
                const float value = from[x * samples] + (sum);                                                                 \
                float error = 0;                                                                                               \
                if (value >= 65535) {                                                                                          \
                    to[x * samples] = 255;                                                                                     \
                } else if (value < 0) {                                                                                        \
                    to[x * samples] = 0;                                                                                       \
                } else {                                                                                                       \
                    float base = (float)(int)(inverse * value) * step;                                                         \
                    if (value - base > half) base += step;                                                                     \
                    to[x * samples] = (Kuv8u)((int)base >> 8);                                                                 \
                    error = value - base;                                                                                      \
                }                                                                                                              \
                r[x] = error;                                                                                                  \
                left = error;                                                                                                  \
            }                                                                                                                  \
            float* oldest = ditherType == kuvDitherFloydSteinberg ? p : q;                                                     \
            if (ditherType != kuvDitherFloydSteinberg) q = p;                                                                  \
            p = r;                                                                                                             \
            r = oldest;                                                                                                        \
        }                                                                                                                      \
    }

#define KUV_THREE_ROWS(a, b, d)                                                                                                \
    (q[x - 2] + q[x + 2] + a * (p[x] + left) + b * (q[x] + p[x - 1] + p[x + 1] + r[x - 2]) +                                   \
     d * (q[x - 1] + q[x + 1] + p[x - 2] + p[x + 2]))

#define KUV_DIFFUSE_LOOP(name, samples, channels)                                                                              \
    KuvStatus KUV_LOOP(name)(KUV_REDUCE_ARGUMENTS) {                                                                           \
        const float step = 65535.0f / (float)(levels - 1), inverse = (float)(levels - 1) / 65535.0f, half = step / 2;          \
        const ptrdiff_t pitch = roiSize.width + 4;                                                                             \
        float *r = (float*)buffer + 2, *p = r + pitch, *q = p + pitch;                                                         \
        for (ptrdiff_t i = -2; i < 3 * pitch - 2; ++i) r[i] = 0;                                                               \
        if (ditherType == kuvDitherFloydSteinberg) {                                                                           \
            KUV_DIFFUSE_ROWS(samples, channels, (3 * p[x + 1] + p[x - 1] + 5 * p[x] + 7 * left) * 0.0625f)                     \
        } else if (ditherType == kuvDitherJarvisJudiceNinke) {                                                                 \
            KUV_DIFFUSE_ROWS(samples, channels, KUV_THREE_ROWS(7, 5, 3) * (1 / 48.0f))                                         \
        } else {                                                                                                               \
            KUV_DIFFUSE_ROWS(samples, channels, KUV_THREE_ROWS(8, 4, 2) * (1 / 42.0f))                                         \
        }                                                                                                                      \
        return kuvStatusOk;                                                                                                    \
    }
KUV_DIFFUSE_LOOP(diffuseOne, 1, 1)
KUV_DIFFUSE_LOOP(diffuseThree, 3, 3)
KUV_DIFFUSE_LOOP(diffuseColours, 4, 3)

// Eight samples at a time, or as many as four pixels have; the second word of the map tells where its tables begin.
template <class T, int samples>
static inline void mapRow(const T* tables, T* to, ptrdiff_t width) {
    constexpr int mapped = samples == 4 ? 3 : samples, group = samples == 1 ? 8 : 4;
    constexpr ptrdiff_t entries = (ptrdiff_t)1 << 8 * sizeof(T);
    ptrdiff_t x = 0;
    for (; x + group <= width; x += group, to += group * samples) {
        T results[group * mapped];
#pragma GCC unroll 12
        for (int i = 0; i < group * mapped; ++i) results[i] = tables[i % mapped * entries + to[i / mapped * samples + i % mapped]];
#pragma GCC unroll 12
        for (int i = 0; i < group * mapped; ++i) to[i / mapped * samples + i % mapped] = results[i];
    }
    for (; x < width; ++x, to += samples) {
        for (int c = 0; c < mapped; ++c) to[c] = tables[c * entries + to[c]];
    }
}
#define KUV_MAP_LOOP(name, T, samples)                                                                                       \
    KuvStatus KUV_LOOP(name)(T* srcDst, Kuv32s srcDstStep, KuviSize roiSize, const KuviToneMapSpec* spec) {                  \
        const T* tables = (const T*)((const char*)spec + ((const Kuv32u*)spec)[1]);                                          \
        for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                                     \
            mapRow<T, samples>(tables, (T*)((char*)srcDst + y * srcDstStep), roiSize.width);                                 \
        }                                                                                                                    \
        return kuvStatusOk;                                                                                                  \
    }
KUV_MAP_LOOP(mapOne8, Kuv8u, 1)
KUV_MAP_LOOP(mapThree8, Kuv8u, 3)
KUV_MAP_LOOP(mapColours8, Kuv8u, 4)
KUV_MAP_LOOP(mapOne16, Kuv16u, 1)
KUV_MAP_LOOP(mapThree16, Kuv16u, 3)
KUV_MAP_LOOP(mapColours16, Kuv16u, 4)

static inline Kuv8u integerPart(int sum) {
    const int value = sum >> 16;
    return (Kuv8u)(value < 0 ? 0 : value > 255 ? 255 : value);
}

// Of even widths.
KuvStatus KUV_LOOP(expandVideo)(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize) {
    for (ptrdiff_t y = 0; y < roiSize.height; ++y) {
        const Kuv8u* from = src + y * srcStep;
        Kuv8u* to = dst + y * dstStep;
        for (ptrdiff_t x = 0; x < roiSize.width / 2; ++x, from += 4, to += 6) {
            const int b = from[0] - 128, r = from[2] - 128, first = 76282 * from[1] - 1187744, second = 76282 * from[3] - 1187744;
            to[0] = integerPart(first + 104593 * r);
            to[1] = integerPart(first - 25689 * b - 53279 * r);
            to[2] = integerPart(first + 132184 * b);
            to[3] = integerPart(second + 104593 * r);
            to[4] = integerPart(second - 25689 * b - 53279 * r);
            to[5] = integerPart(second + 132184 * b);
        }
    }
    return kuvStatusOk;
}

KuvStatus KUV_LOOP(repeatGrey)(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize) {
    for (ptrdiff_t y = 0; y < roiSize.height; ++y) {
        const Kuv8u* from = src + y * srcStep;
        Kuv8u* to = dst + y * dstStep;
        for (ptrdiff_t x = 0; x < roiSize.width; ++x) to[3 * x] = to[3 * x + 1] = to[3 * x + 2] = from[x];
    }
    return kuvStatusOk;
}

// A statement for each sample x of a region.
#define KUV_EACH_MEASURED(T, samples, ...)                                                                           \
    for (ptrdiff_t y = 0; y < roiSize.height; ++y) {                                                                 \
        const T* from = (const T*)((const char*)src + y * srcStep);                                                  \
        for (ptrdiff_t i = 0; i < (ptrdiff_t)roiSize.width; ++i, from += samples) {                                  \
            const T x = *from;                                                                                       \
            __VA_ARGS__;                                                                                             \
        }                                                                                                            \
    }

KuvStatus KUV_LOOP(sumReals)(const Kuv32f* src, Kuv32s srcStep, KuviSize roiSize, Kuv64f* sum, Kuv32s) {
    Kuv64f all = 0;
    KUV_EACH_MEASURED(Kuv32f, 1, all += x)
    *sum = all;
    return kuvStatusOk;
}

KuvStatus KUV_LOOP(meanReals)(const Kuv32f* src, Kuv32s srcStep, KuviSize roiSize, Kuv64f* mean, Kuv32s) {
    Kuv64f all = 0;
    KUV_EACH_MEASURED(Kuv32f, 1, all += x)
    *mean = all / ((Kuv64f)roiSize.width * roiSize.height);
    return kuvStatusOk;
}

KuvStatus KUV_LOOP(meanSigned)(const Kuv16s* src, Kuv32s srcStep, KuviSize roiSize, Kuv64f* mean) {
    Kuv64s all = 0;
    KUV_EACH_MEASURED(Kuv16s, 1, all += x)
    *mean = (Kuv64f)all / ((Kuv64f)roiSize.width * roiSize.height);
    return kuvStatusOk;
}

KuvStatus KUV_LOOP(meanThree)(const Kuv8u* src, Kuv32s srcStep, KuviSize roiSize, Kuv64f mean[3]) {
    Kuv64s first = 0, second = 0, third = 0;
    KUV_EACH_MEASURED(Kuv8u, 3, first += x; second += from[1]; third += from[2])
    const Kuv64f count = (Kuv64f)roiSize.width * roiSize.height;
    mean[0] = (Kuv64f)first / count;
    mean[1] = (Kuv64f)second / count;
    mean[2] = (Kuv64f)third / count;
    return kuvStatusOk;
}

#define KUV_DEVIATION_LOOP(name, T, Sum, samples, channel, ...)                                                      \
    KuvStatus KUV_LOOP(name)(const T* src, Kuv32s srcStep, KuviSize roiSize, __VA_ARGS__ Kuv64f* mean, Kuv64f* stdDev) { \
        Sum sum = 0, squares = 0;                                                                                    \
        src += channel;                                                                                              \
        KUV_EACH_MEASURED(T, samples, sum += x; squares += (Sum)x * (Sum)x)                                          \
        const Kuv64f count = (Kuv64f)roiSize.width * roiSize.height, average = (Kuv64f)sum / count;                  \
        *mean = average;                                                                                             \
        *stdDev = __builtin_sqrt(__builtin_fabs((Kuv64f)squares / count - average * average));                       \
        return kuvStatusOk;                                                                                          \
    }
KUV_DEVIATION_LOOP(deviation8, Kuv8u, Kuv64u, 1, 0)
KUV_DEVIATION_LOOP(deviation16, Kuv16u, Kuv64u, 1, 0)
KUV_DEVIATION_LOOP(deviationReals, Kuv32f, Kuv64f, 1, 0)
KUV_DEVIATION_LOOP(deviationOfThree, Kuv8u, Kuv64u, 3, coi - 1, Kuv32s coi,)

#define KUV_RANGE_LOOP(name, T)                                                                                      \
    KuvStatus KUV_LOOP(name)(const T* src, Kuv32s srcStep, KuviSize roiSize, T* minValue, T* maxValue) {             \
        T smallest = *src, largest = *src;                                                                           \
        KUV_EACH_MEASURED(T, 1, smallest = x < smallest ? x : smallest; largest = x > largest ? x : largest)         \
        *minValue = smallest;                                                                                        \
        *maxValue = largest;                                                                                         \
        return kuvStatusOk;                                                                                          \
    }
KUV_RANGE_LOOP(rangeSigned, Kuv16s)
KUV_RANGE_LOOP(rangeReals, Kuv32f)

KuvStatus KUV_LOOP(largestOfThree)(const Kuv32f* src, Kuv32s srcStep, KuviSize roiSize, Kuv32f maxValue[3]) {
    Kuv32f first = src[0], second = src[1], third = src[2];
    KUV_EACH_MEASURED(Kuv32f, 3, first = x > first ? x : first; second = from[1] > second ? from[1] : second;
                      third = from[2] > third ? from[2] : third)
    maxValue[0] = first;
    maxValue[1] = second;
    maxValue[2] = third;
    return kuvStatusOk;
}

// Counts every value, and sums for each channel what lies between the levels.
static inline void sumChannel(const Kuv32u* counts, int lowest, int values, const KuviBinPlan* spec, int channel, Kuv32u* hist) {
    const Kuv32s* words = (const Kuv32s*)spec;
    const Kuv32s* levels = (const Kuv32s*)((const char*)spec + words[8 + channel]);
    for (ptrdiff_t k = 0; k + 1 < words[4 + channel]; ++k) {
        const int first = levels[k] - lowest, last = levels[k + 1] - lowest;
        Kuv32u sum = 0;
        for (ptrdiff_t v = first < 0 ? 0 : first; v < (last > values ? values : last); ++v) sum += counts[v];
        hist[k] = sum;
    }
}
#define KUV_COUNT_LOOP(name, T, lowest, values)                                                                      \
    KuvStatus KUV_LOOP(name)(const T* src, Kuv32s srcStep, KuviSize roiSize, Kuv32u* hist, const KuviBinPlan* spec, Kuv8u* buffer) { \
        Kuv32u* counts = (Kuv32u*)buffer;                                                                            \
        for (ptrdiff_t v = 0; v < values; ++v) counts[v] = 0;                                                        \
        KUV_EACH_MEASURED(T, 1, ++counts[x - lowest])                                                                \
        sumChannel(counts, lowest, values, spec, 0, hist);                                                           \
        return kuvStatusOk;                                                                                          \
    }
KUV_COUNT_LOOP(count8, Kuv8u, 0, 256)
KUV_COUNT_LOOP(count16, Kuv16u, 0, 65536)
KUV_COUNT_LOOP(countSigned, Kuv16s, -32768, 65536)

#define KUV_COUNT_CHANNELS_LOOP(name, T, channels, values)                                                           \
    KuvStatus KUV_LOOP(name)(const T* src, Kuv32s srcStep, KuviSize roiSize, Kuv32u* const hist[channels], const KuviBinPlan* spec, \
                             Kuv8u* buffer) {                                                                        \
        Kuv32u* counts = (Kuv32u*)buffer;                                                                            \
        for (ptrdiff_t v = 0; v < channels * values; ++v) counts[v] = 0;                                             \
        KUV_EACH_MEASURED(T, channels, ++counts[x]; for (int c = 1; c < channels; ++c) ++counts[c * values + from[c]]) \
        for (int c = 0; c < channels; ++c) sumChannel(counts + c * values, 0, values, spec, c, hist[c]);             \
        return kuvStatusOk;                                                                                          \
    }
KUV_COUNT_CHANNELS_LOOP(countThree8, Kuv8u, 3, 256)
KUV_COUNT_CHANNELS_LOOP(countFour8, Kuv8u, 4, 256)
KUV_COUNT_CHANNELS_LOOP(countFour16, Kuv16u, 4, 65536)

// Bins of one width, as exact as single precision.
KuvStatus KUV_LOOP(countReals)(const Kuv32f* src, Kuv32s srcStep, KuviSize roiSize, Kuv32u* hist, const KuviBinPlan* spec, Kuv8u*) {
    const Kuv32s* words = (const Kuv32s*)spec;
    const Kuv32f* levels = (const Kuv32f*)((const char*)spec + words[8]);
    const int bins = words[4] - 1;
    const Kuv32f first = levels[0], last = levels[bins], scale = (Kuv32f)bins / (last - first);
    for (ptrdiff_t k = 0; k < bins; ++k) hist[k] = 0;
    KUV_EACH_MEASURED(Kuv32f, 1, if (x >= first && x < last) {
        const int k = (int)((x - first) * scale);
        ++hist[k < bins ? k : bins - 1];
    })
    return kuvStatusOk;
}

KuvStatus KUV_LOOP(integrate)(const Kuv8u* src, Kuv32s srcStep, Kuv32s* dst, Kuv32s dstStep, KuviSize roiSize, Kuv32s val) {
    for (ptrdiff_t x = 0; x <= roiSize.width; ++x) dst[x] = val;
    for (ptrdiff_t y = 0; y < roiSize.height; ++y) {
        const Kuv8u* from = src + y * srcStep;
        const Kuv32s* above = (const Kuv32s*)((const char*)dst + y * dstStep);
        Kuv32s* to = (Kuv32s*)((char*)dst + (y + 1) * dstStep);
        Kuv32u sum = 0;
        to[0] = val;
        for (ptrdiff_t x = 0; x < roiSize.width; ++x) {
            sum += from[x];
            to[x + 1] = (Kuv32s)((Kuv32u)above[x + 1] + sum);
        }
    }
    return kuvStatusOk;
}
