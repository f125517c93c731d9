/** @file kuvcv.h
 *  kuvCV: exact image and signal primitives for x86 processors.
 *
 *  The conventions of all functions, told once:
 *
 *  - **Images.** An image argument is a pointer to the first element of the region to work on and a row step: the signed
 *    distance in bytes from one row's first element to the next row's. A region size is in pixels. Neither a pointer nor a step
 *    need be aligned, to the sample type or to anything else.
 *  - **Step classes.** Each function tells which steps it accepts. A: a step below 1 is refused. B: a step below the row's width
 *    in bytes is refused. C: steps are not examined; zero and negative steps are used as they stand, row by row in order.
 *    D: zero is refused. Refusals are #kuvStatusBadStep.
 *  - **Statuses.** Checks run in the order in which a function lists its statuses, and the first failure is returned. After an
 *    error no output has been written, unless a function tells what has. A warning (positive) comes with a complete result.
 *  - **Overlap.** A source and a destination that overlap without being the same image are not supported unless a function
 *    says so.
 *  - **Memory.** No primitive allocates, and none reads or writes a byte outside the regions it was given, but for two reads that
 *    kuviDemosaicAHD_* (a side of 5) and kuviCbYCr422ToRGB_8u_C2C3R() (a width of 1) tell of.
 *  - **Threads.** Every function may be called from any number of threads at once on different data. The library starts no
 *    thread and takes no lock.
 *  - **Variants.** The functions that compute on data exist in six variants for growing instruction sets, switched for all at
 *    once; see kuvSetCpuFeatures(). Results agree bit for bit unless a function tells of a difference.
 */
#ifndef KUVCV_H
#define KUVCV_H

#if defined(__GNUC__)
#define KUV_API __attribute__((visibility("default")))
#else
#define KUV_API
#endif

#ifdef __cplusplus
#include <cstdint>
extern "C" {
#else
#include <stdint.h>
#endif

/** @defgroup values Types, statuses and selectors
 *  Of samples and values the name tells width, signedness and kind.
 *  @{ */
typedef uint8_t Kuv8u;   /**< 8 bits, unsigned */
typedef int8_t Kuv8s;    /**< 8 bits, signed */
typedef uint16_t Kuv16u; /**< 16 bits, unsigned */
typedef int16_t Kuv16s;  /**< 16 bits, signed */
typedef uint32_t Kuv32u; /**< 32 bits, unsigned */
typedef int32_t Kuv32s;  /**< 32 bits, signed */
typedef float Kuv32f;    /**< 32 bits, IEEE 754 binary32 */
typedef uint64_t Kuv64u; /**< 64 bits, unsigned */
typedef int64_t Kuv64s;  /**< 64 bits, signed */
typedef double Kuv64f;   /**< 64 bits, IEEE 754 binary64 */

/** A complex value. */
typedef struct Kuv32fc {
    Kuv32f re; /**< real part */
    Kuv32f im; /**< imaginary part */
} Kuv32fc;

/** @name Geometry
 *  In pixels.
 *  @{ */
/** A size. */
typedef struct KuviSize {
    Kuv32s width;  /**< pixels in a row */
    Kuv32s height; /**< rows */
} KuviSize;

/** A rectangle. */
typedef struct KuviRect {
    Kuv32s x;      /**< left column */
    Kuv32s y;      /**< top row */
    Kuv32s width;  /**< pixels in a row */
    Kuv32s height; /**< rows */
} KuviRect;

/** A position. */
typedef struct KuviPoint {
    Kuv32s x; /**< column */
    Kuv32s y; /**< row */
} KuviPoint;
/** @} */

/** The result of a call: 0 success, negative an error, positive a warning. */
typedef Kuv32s KuvStatus;

/** The values of KuvStatus. */
enum {
    kuvStatusInternal = -9999,           /**< a selector or a record's state cannot be served, or images overlap about a diagonal */
    kuvStatusSizeOverflow = -232,        /**< a computed size does not fit a signed 32-bit value */
    kuvStatusBadBorder = -225,           /**< border type undefined or unsupported */
    kuvStatusBadDitherType = -224,       /**< dither type undefined for the operation */
    kuvStatusBadRoundMode = -213,        /**< rounding mode undefined */
    kuvStatusStepNotMultiple = -108,     /**< a row step is not a multiple of the element size */
    kuvStatusBadHistLevels = -107,       /**< histogram level count below 2 */
    kuvStatusBadLutLevels = -106,        /**< lookup table level count below 2 */
    kuvStatusBadChannelOrder = -60,      /**< channel order entry out of range */
    kuvStatusBadNoise = -55,             /**< noise percentage not 0..100 */
    kuvStatusBadLevels = -54,            /**< dither level count not 2..256 */
    kuvStatusBadChannelCount = -53,      /**< channel count not 1, 3 or 4 */
    kuvStatusBadChannelOfInterest = -52, /**< channel of interest not 1..3 */
    kuvStatusBadChannels = -47,          /**< channel count outside what the operation accepts */
    kuvStatusBadShift = -32,             /**< shift count negative */
    kuvStatusBadInterpolation = -22,     /**< interpolation selector undefined or unsupported */
    kuvStatusBadAxis = -21,              /**< mirror axis undefined */
    kuvStatusBadContext = -17,           /**< a record fails its identity check or is of the wrong kind */
    kuvStatusBadFlag = -16,              /**< transform normalisation flag undefined */
    kuvStatusBadOrder = -15,             /**< a transform by powers of two is too long */
    kuvStatusBadStep = -14,              /**< a row step is not one that the function accepts */
    kuvStatusEmptyRange = -13,           /**< vMax not above vMin */
    kuvStatusBadDataType = -12,          /**< a data-type selector is not supported by this operation */
    kuvStatusOutOfRange = -11,           /**< a value lies outside its permitted range */
    kuvStatusDivByZero = -10,            /**< a divisor constant is 0 */
    kuvStatusNullPtr = -8,               /**< a required pointer is null */
    kuvStatusRangeOrder = -7,            /**< lower level not below upper level */
    kuvStatusBadSize = -6,               /**< a width, height or length is below its minimum, or a transform's length is not supported */
    kuvStatusBadArg = -5,                /**< bad selector or label range, or a tone map or bin plan that is none or not of the kind */
    kuvStatusOk = 0,                     /**< success */
    kuvStatusNoOperation = 1,            /**< a size is 0: nothing was to be done */
    kuvStatusSqrtOfNegative = 3,         /**< a negative input to the square root; its result is a NaN */
    kuvStatusDivByZeroWarning = 6,       /**< a zero divisor element was met */
    kuvStatusNotVendorCpu = 20,          /**< processor of another vendor than the one tested for */
    kuvStatusNoCpuid = 36,               /**< processor query not available, or a mask that selects nothing */
    kuvStatusNoCacheInfo = 37,           /**< the processor does not tell its cache sizes */
    kuvStatusAntialiasIgnored = 46,      /**< antialiasing has no effect with the chosen interpolation */
    kuvStatusSizeWarning = 48,           /**< a size could not be honoured in full; the covered part is computed */
    kuvStatusFeatureMissing = 49,        /**< a requested processor feature is absent */
    kuvStatusFeatureUnknown = 50,        /**< undefined feature bits were requested */
    kuvStatusFeatureIncomplete = 51,     /**< a feature mask lacked bits that its variant needs; they were supplied */
    kuvStatusRoundFlagSet = 52           /**< the flag 16 was set in a rounding selector; the record is complete */
};

/** Layout of a Bayer mosaic at image sample (0, 0): the two by two period read left to right, top row first. */
typedef Kuv32s KuvCfaLayout;

/** The values of KuvCfaLayout. */
enum {
    kuvCfaBGGR = 0, /**< B G over G R */
    kuvCfaRGGB = 1, /**< R G over G B */
    kuvCfaGBRG = 2, /**< G B over R G */
    kuvCfaGRBG = 3  /**< G R over B G */
};

/** Axes of kuviMirror_*: what an image is mirrored about. */
enum {
    kuvAxisHorizontal = 0,    /**< the horizontal axis: rows change places */
    kuvAxisVertical = 1,      /**< the vertical axis: each row is reversed */
    kuvAxisBoth = 2,          /**< both of them: a rotation by half a turn */
    kuvAxisDiagonal = 3,      /**< the main diagonal: a transposition */
    kuvAxisSecondDiagonal = 4 /**< the second diagonal, from the upper right to the lower left */
};

/** How kuviReduceBits_* hide the steps between their levels. */
typedef Kuv32s KuvDitherType;

/** The values of KuvDitherType. */
enum {
    kuvDitherOff = 0,               /**< not at all: the nearest level */
    kuvDitherFloydSteinberg = 1,    /**< the error goes to four neighbours in two rows */
    kuvDitherJarvisJudiceNinke = 2, /**< the error goes to twelve neighbours in three rows, in parts of 48 */
    kuvDitherStucki = 3,            /**< the error goes to twelve neighbours in three rows, in parts of 42 */
    kuvDitherOrdered4x4 = 4         /**< a matrix of 4 by 4 thresholds */
};

/** What connects markers to a group: the `norm` of kuviLabelMarkers_16u_C1IR(). */
enum {
    kuvLabelNeighbours8 = 0, /**< eight neighbours: pixels that share a side or a corner */
    kuvLabelNeighbours4 = 1  /**< four neighbours: pixels that share a side */
};

/** Data-type selectors of set-up functions. */
enum {
    kuvDataType8u = 1,  /**< #Kuv8u */
    kuvDataType16u = 5, /**< #Kuv16u */
    kuvDataType16s = 7, /**< #Kuv16s */
    kuvDataType32f = 13 /**< #Kuv32f */
};

/** Channel selectors of set-up functions. */
enum {
    kuvChannelsC1 = 1, /**< one channel */
    kuvChannelsC3 = 3, /**< three interleaved channels */
    kuvChannelsC4 = 4, /**< four interleaved channels */
    kuvChannelsAC4 = 9 /**< four interleaved channels, the fourth passed over */
};

/** What stands beyond an image's known pixels: one of the three rules, with any of the flags; or all four flags alone. Resizing knows the
 *  first rule only. */
enum {
    kuvBorderClamp = 1,       /**< the nearest known pixel */
    kuvBorderReflect = 3,     /**< reflection about the outermost known pixels, which are not repeated */
    kuvBorderFill = 6,        /**< a constant */
    kuvBorderHaveTop = 16,    /**< the rows above the region are in memory */
    kuvBorderHaveBottom = 32, /**< the rows below the region are in memory */
    kuvBorderHaveLeft = 64,   /**< the columns left of the region are in memory */
    kuvBorderHaveRight = 128  /**< the columns right of the region are in memory */
};

/** The interpolation that this library makes resize plans for. */
enum {
    kuvResizeLinear = 2 /**< between two samples in each direction */
};
/** @} */
/** @defgroup processor Processor features and version
 *  @{ */

/** A set of processor features, one bit each. */
typedef Kuv64u KuvCpuFeatures;

#define KUV_CPU_MMX ((KuvCpuFeatures)0x1)           /**< MMX */
#define KUV_CPU_SSE ((KuvCpuFeatures)0x2)           /**< SSE */
#define KUV_CPU_SSE2 ((KuvCpuFeatures)0x4)          /**< SSE2 */
#define KUV_CPU_SSE3 ((KuvCpuFeatures)0x8)          /**< SSE3 */
#define KUV_CPU_SSSE3 ((KuvCpuFeatures)0x10)        /**< SSSE3 */
#define KUV_CPU_MOVBE ((KuvCpuFeatures)0x20)        /**< MOVBE */
#define KUV_CPU_SSE41 ((KuvCpuFeatures)0x40)        /**< SSE4.1 */
#define KUV_CPU_SSE42 ((KuvCpuFeatures)0x80)        /**< SSE4.2 */
#define KUV_CPU_AVX ((KuvCpuFeatures)0x100)         /**< AVX, by the processor */
#define KUV_CPU_OS_AVX ((KuvCpuFeatures)0x200)      /**< the operating system saves XMM and YMM state */
#define KUV_CPU_AES ((KuvCpuFeatures)0x400)         /**< AES */
#define KUV_CPU_PCLMULQDQ ((KuvCpuFeatures)0x800)   /**< PCLMULQDQ */
#define KUV_CPU_RDRAND ((KuvCpuFeatures)0x2000)     /**< RDRAND */
#define KUV_CPU_F16C ((KuvCpuFeatures)0x4000)       /**< F16C */
#define KUV_CPU_AVX2 ((KuvCpuFeatures)0x8000)       /**< AVX2, BMI1, BMI2 and FMA together */
#define KUV_CPU_ADX ((KuvCpuFeatures)0x10000)       /**< ADX */
#define KUV_CPU_RDSEED ((KuvCpuFeatures)0x20000)    /**< RDSEED */
#define KUV_CPU_PREFETCHW ((KuvCpuFeatures)0x40000) /**< PREFETCHW */
#define KUV_CPU_SHA ((KuvCpuFeatures)0x80000)       /**< SHA */
#define KUV_CPU_AVX512F ((KuvCpuFeatures)0x100000)  /**< AVX-512 F */
#define KUV_CPU_AVX512CD ((KuvCpuFeatures)0x200000) /**< AVX-512 CD */
#define KUV_CPU_AVX512ER ((KuvCpuFeatures)0x400000) /**< AVX-512 ER */
#define KUV_CPU_AVX512PF ((KuvCpuFeatures)0x800000) /**< AVX-512 PF */
#define KUV_CPU_AVX512BW ((KuvCpuFeatures)0x1000000)   /**< AVX-512 BW */
#define KUV_CPU_AVX512DQ ((KuvCpuFeatures)0x2000000)   /**< AVX-512 DQ */
#define KUV_CPU_AVX512VL ((KuvCpuFeatures)0x4000000)   /**< AVX-512 VL */
#define KUV_CPU_AVX512VBMI ((KuvCpuFeatures)0x8000000) /**< AVX-512 VBMI */
#define KUV_CPU_MPX ((KuvCpuFeatures)0x10000000)       /**< MPX */
/** In kuvSetCpuFeatures() only: obey the mask whatever the processor offers. */
#define KUV_CPU_FORCE ((KuvCpuFeatures)0x8000000000000000)

/** Detects the processor's features and selects the best variant.
 *
 *  The library does so itself when it is loaded; a call at any later time replaces the effect of kuvSetCpuFeatures(), for all
 *  threads at once.
 *
 *  @return #kuvStatusNotVendorCpu on a processor of another vendor than Intel, which gets the same variant all the same, or on one
 *          that cannot be asked;
 *          otherwise what kuvSetCpuFeatures() would return for the detected mask. */
KUV_API KuvStatus kuvInit(void);

/** Selects the variant for a set of features, for all functions and all threads at once.
 *
 *  The strongest of these whose feature is in the set is taken: h9 (#KUV_CPU_AVX2, or a whole AVX-512 group), g9 (#KUV_CPU_AVX),
 *  p8 (#KUV_CPU_SSE42), s8 (SSE4.1, MOVBE or SSSE3), w7 (SSE3 or SSE2), else px. AVX, AVX2 and AVX-512 bits (but for
 *  VBMI) are dropped from the set if the operating system does not save the wide registers, unless #KUV_CPU_FORCE is set. Features that
 *  the variant takes for granted are added. A variant is selected in every case, also with a warning. Each call is served entirely by
 *  the variant that it found when it entered; calls under way go on in theirs.
 *
 *  With #KUV_CPU_FORCE the set is obeyed without a look at the processor, which may then meet instructions that it does not
 *  have. The set in force before the call then counts as detected, for kuvGetCpuFeatures() and kuvInit() too.
 *
 *  @param features the set
 *  @return without #KUV_CPU_FORCE, #kuvStatusFeatureMissing if a bit of the set, an undefined one too, is not detected, or needs wide
 *          registers that the operating system does not save; else #kuvStatusFeatureUnknown if undefined bits (29, 30, 32 to 62) are
 *          set, which only an earlier #KUV_CPU_FORCE can have made detected ones; then, with #KUV_CPU_FORCE too, #kuvStatusNoCpuid if
 *          the set has none of the features above, nor #KUV_CPU_SSE (then px is in force); else #kuvStatusFeatureIncomplete if features
 *          were added; else #kuvStatusOk. */
KUV_API KuvStatus kuvSetCpuFeatures(KuvCpuFeatures features);

/** Gives the detected features, and on request the raw words of a CPUID query.
 *
 *  @param features receives the detected set. If it held the eight ASCII bytes "getinfoa" before the call, `cpuidInfo` chooses
 *         the query.
 *  @param cpuidInfo null, or four words that receive EAX, EBX, ECX, EDX. The query is leaf 1; or, with "getinfoa", leaf
 *         `cpuidInfo[0]`, sub-leaf `cpuidInfo[2]`.
 *  @return #kuvStatusNoCpuid if the processor cannot be asked; #kuvStatusNullPtr if `features` is null; else #kuvStatusOk. */
KUV_API KuvStatus kuvGetCpuFeatures(KuvCpuFeatures* features, Kuv32u* cpuidInfo);

/** The version of the library, as seen by the variant in force. */
typedef struct KuvLibraryVersion {
    Kuv32s versionMajor;       /**< 2017 */
    Kuv32s versionMinor;       /**< 0 */
    Kuv32s versionUpdate;      /**< 3 */
    Kuv32s revision;           /**< revision of the source */
    char variantCode[4];       /**< "px", "w7", "s8", "p8", "g9" or "h9", padded with zeros */
    const char* libraryTitle;  /**< name of library and variant */
    const char* versionText;   /**< version and revision */
    const char* buildDateText; /**< date */
} KuvLibraryVersion;

/** Gives the version record of the variant in force.
 *
 *  @return a constant record, the same one at each call under one variant; never null. */
KUV_API const KuvLibraryVersion* kuvcvGetLibVersion(void);
/** @} */

/** @defgroup memory Aligned memory
 *
 *  Blocks that begin on 64-byte boundaries. A block of any of these allocators goes back by any of kuvFree(), kuviFree() and
 *  kuvsFree(). Memory is not initialised. A failure is a null result and nothing else.
 *  @{ */

/** Allocates `length` bytes on a 64-byte boundary.
 *
 *  @param length bytes, 1 to 0x7FFFFFB7
 *  @return the block; null if `length` is out of range or the heap has no room. */
KUV_API void* kuvMalloc(Kuv32s length);

/** Releases a block; null is ignored.
 *  @param ptr null, or a block of one of this library's allocators */
KUV_API void kuvFree(void* ptr);

/** Rounds an address up: `ptr + (-(ptr & (alignBytes - 1)) & (alignBytes - 1))` in integers as wide as a pointer.
 *
 *  @param ptr an address
 *  @param alignBytes a power of two. Nothing is checked: 0 gives null, any other value what the formula gives, with a negative
 *         one extended by its sign.
 *  @return the rounded address */
KUV_API void* kuvAlignPtr(void* ptr, Kuv32s alignBytes);

/** @name Images
 *  Allocate an image of `width` by `height` pixels whose rows all begin on 64-byte boundaries. `*stepBytes` receives the row step:
 *  the row's bytes rounded up to a multiple of 64. Step times height must not exceed 0x7FFFFFB7.
 *
 *  Null is returned, in this order: if `stepBytes` is null; if `width` or `height` is below 1 or the row alone is too large, with
 *  `*stepBytes` set to 0; if the whole image is too large or the heap has no room, with `*stepBytes` as computed
 *  (a step of 0x80000000 as the lowest integer).
 *  @{ */
KUV_API Kuv8u* kuviMalloc_8u_C1(Kuv32s width, Kuv32s height, Kuv32s* stepBytes);    /**< 1 byte a pixel */
KUV_API Kuv8u* kuviMalloc_8u_C3(Kuv32s width, Kuv32s height, Kuv32s* stepBytes);    /**< 3 bytes a pixel */
KUV_API Kuv8u* kuviMalloc_8u_AC4(Kuv32s width, Kuv32s height, Kuv32s* stepBytes);   /**< 4 bytes a pixel */
KUV_API Kuv16u* kuviMalloc_16u_C1(Kuv32s width, Kuv32s height, Kuv32s* stepBytes);  /**< 2 bytes a pixel */
KUV_API Kuv16u* kuviMalloc_16u_C3(Kuv32s width, Kuv32s height, Kuv32s* stepBytes);  /**< 6 bytes a pixel */
KUV_API Kuv16u* kuviMalloc_16u_C4(Kuv32s width, Kuv32s height, Kuv32s* stepBytes);  /**< 8 bytes a pixel */
KUV_API Kuv16u* kuviMalloc_16u_AC4(Kuv32s width, Kuv32s height, Kuv32s* stepBytes); /**< 8 bytes a pixel */
KUV_API Kuv16s* kuviMalloc_16s_C1(Kuv32s width, Kuv32s height, Kuv32s* stepBytes);  /**< 2 bytes a pixel */
KUV_API Kuv16s* kuviMalloc_16s_C3(Kuv32s width, Kuv32s height, Kuv32s* stepBytes);  /**< 6 bytes a pixel */
KUV_API Kuv32s* kuviMalloc_32s_C1(Kuv32s width, Kuv32s height, Kuv32s* stepBytes);  /**< 4 bytes a pixel */
KUV_API Kuv32f* kuviMalloc_32f_C1(Kuv32s width, Kuv32s height, Kuv32s* stepBytes);  /**< 4 bytes a pixel */
KUV_API Kuv32f* kuviMalloc_32f_C3(Kuv32s width, Kuv32s height, Kuv32s* stepBytes);  /**< 12 bytes a pixel */
/** @} */

/** kuvFree() under another name.
 *  @param ptr null, or a block of one of this library's allocators */
KUV_API void kuviFree(void* ptr);

/** Allocates a signal of `length` samples.
 *  @param length samples, at least 1
 *  @return the block; null if `length` is out of range or the heap has no room. */
KUV_API Kuv8u* kuvsMalloc_8u(Kuv32s length);

/** Allocates a signal of `length` samples.
 *  @param length samples, at least 1; its bytes must not exceed 0x7FFFFFB7
 *  @return the block; null if `length` is out of range or the heap has no room. */
KUV_API Kuv32f* kuvsMalloc_32f(Kuv32s length);

/** kuvFree() under another name.
 *  @param ptr null, or a block of one of this library's allocators */
KUV_API void kuvsFree(void* ptr);
/** @} */

/** @defgroup arithmetic Arithmetic
 *  @{ */

/** Adds an image to another in place: `srcDst(x, y) = srcDst(x, y) + src(x, y)`.
 *
 *  Each sum is the exact sum rounded once to single precision in the caller's rounding mode, in every variant. One NaN operand
 *  gives that NaN made quiet; which of two NaN operands is kept is not stated.
 *
 *  Step class C: with a step of 0 the same row takes part again and again.
 *
 *  @param src the summand
 *  @param srcStep row step of `src` in bytes
 *  @param srcDst the image that is added to; may be `src` itself
 *  @param srcDstStep row step of `srcDst` in bytes
 *  @param roiSize size of both in pixels, at least 1 by 1
 *  @return #kuvStatusNullPtr if `src` or `srcDst` is null; #kuvStatusBadSize if the width or height is below 1; else
 *          #kuvStatusOk. */
KUV_API KuvStatus kuviAdd_32f_C1IR(const Kuv32f* src, Kuv32s srcStep, Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize);

/** @name Differences of images
 *  @{ */
/** `kuviSub_32f_C1IR`: `srcDst(x, y) = srcDst(x, y) - src(x, y)`. `kuviSub_32f_C1R`: `dst(x, y) = src2(x, y) - src1(x, y)`, the second
 *  less the first.
 *
 *  Each difference is the exact one rounded once to single precision in the caller's rounding mode, in every variant. One NaN operand
 *  gives that NaN made quiet, two give the one that is subtracted from; infinity less itself is the NaN 0xFFC00000.
 *
 *  Step class C: rows are done from the first, and those on one place take part again and again. `dst` may be one of the sources, or
 *  `srcDst` be `src`; what any other overlap gives is not stated. Large images may bypass the caches on their way to `dst`.
 *
 *  `src`, `src1`, `src2`, `srcDst`, `dst`: the images. `srcStep` and so on: their row steps in bytes. `roiSize`: size of all in pixels,
 *  at least 1 by 1.
 *
 *  @return #kuvStatusNullPtr if an image is null; #kuvStatusBadSize if the width or height is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuviSub_32f_C1IR(const Kuv32f* src, Kuv32s srcStep, Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize);
KUV_API KuvStatus kuviSub_32f_C1R(const Kuv32f* src1, Kuv32s src1Step, const Kuv32f* src2, Kuv32s src2Step, Kuv32f* dst,
                                  Kuv32s dstStep, KuviSize roiSize);
/** @} */

/** @name Sums, differences and products with constants
 *  @{ */
/** `kuviAddC_32f_C3IR`: `srcDst(x, y)[c] = srcDst(x, y)[c] + value[c]` for each of three channels c. `kuviMulC_32f_C3IR`:
 *  `srcDst(x, y)[c] = srcDst(x, y)[c] * value[c]`. `kuviSubC_32f_C1IR`: `srcDst(x, y) = srcDst(x, y) - value`.
 *
 *  Each result is the exact one rounded once to single precision in the caller's rounding mode, in every variant. One NaN operand gives
 *  that NaN made quiet; an invalid operation such as infinity times 0 gives the NaN 0xFFC00000. Of two NaN operands a difference keeps the
 *  sample; which one a sum or a product keeps is not stated.
 *
 *  Step class C: with a step of 0 the same row takes part again and again.
 *
 *  `value`: the constant, or those of the three channels, read before any sample is written. `srcDst`: the image. `srcDstStep`: its row
 *  step in bytes. `roiSize`: size in pixels, at least 1 by 1.
 *
 *  @return #kuvStatusNullPtr if `srcDst`, or `value` where it is an array, is null; #kuvStatusBadSize if the width or height is below 1;
 *  else #kuvStatusOk. */
KUV_API KuvStatus kuviAddC_32f_C3IR(const Kuv32f value[3], Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize);
KUV_API KuvStatus kuviMulC_32f_C3IR(const Kuv32f value[3], Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize);
KUV_API KuvStatus kuviSubC_32f_C1IR(Kuv32f value, Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize);
/** @} */

/** Divides an image by a constant in place, as a product with its reciprocal: `srcDst(x, y) = srcDst(x, y) * r`, where r is 1 / `value`
 *  computed in double precision and rounded to single precision.
 *
 *  So a result may differ from the quotient rounded once, in the last bit. Every rounding follows the caller's mode, and all variants give
 *  the same. One NaN operand gives that NaN made quiet, which of two is kept is not stated; infinity times an r of 0 is the NaN
 *  0xFFC00000.
 *
 *  Step class A: rows are done from the first, and those on one place take part again and again.
 *
 *  @param value the divisor; a NaN is accepted
 *  @param srcDst the image
 *  @param srcDstStep its row step in bytes
 *  @param roiSize size in pixels, at least 1 by 1
 *  @return #kuvStatusNullPtr if `srcDst` is null; #kuvStatusBadSize if the width or height is below 1; #kuvStatusBadStep if the step is
 *          below 1; #kuvStatusDivByZero if `value` equals 0; else #kuvStatusOk. */
KUV_API KuvStatus kuviDivC_32f_C1IR(Kuv32f value, Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize);

/** Divides an image by another in place: `srcDst(x, y) = srcDst(x, y) / src(x, y)`.
 *
 *  Each quotient is the exact one rounded once to single precision in the caller's rounding mode, in every variant. Where the divisor is 0,
 *  whatever its sign, the result is that of the dividend alone: +infinity if it is above 0, -infinity if it is below 0, and the NaN
 *  0xFFC00000 if it is 0 or a NaN. Elsewhere one NaN operand gives that NaN made quiet, and two give the dividend.
 *
 *  A divisor of 0 does not stop the work: it is told by a warning in the end.
 *
 *  Step class A, for both steps: rows are done from the first, and those on one place take part again and again. `srcDst` may be `src`;
 *  what any other overlap gives is not stated.
 *
 *  @param src the divisors
 *  @param srcStep row step of `src` in bytes
 *  @param srcDst the image that is divided
 *  @param srcDstStep row step of `srcDst` in bytes
 *  @param roiSize size of both in pixels, at least 1 by 1
 *  @return #kuvStatusNullPtr if `src` or `srcDst` is null; #kuvStatusBadSize if the width or height is below 1; #kuvStatusBadStep if a step
 *          is below 1; #kuvStatusDivByZeroWarning if a divisor was 0; else #kuvStatusOk. */
KUV_API KuvStatus kuviDiv_32f_C1IR(const Kuv32f* src, Kuv32s srcStep, Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize);

/** @name Absolute values and squares
 *  @{ */
/** `kuviAbs_32f_C1IR`: `srcDst(x, y) = |srcDst(x, y)|`, the sample with its sign bit cleared and all else kept, of a NaN as well.
 *  `kuviSqr_32f_C1IR`: `srcDst(x, y) = srcDst(x, y) * srcDst(x, y)`, rounded once to single precision in the caller's rounding mode; a
 *  NaN is made quiet.
 *
 *  Step class A, and the lowest two bits of the step are cleared then: one of 6 acts as 4, and one of 1 to 3 as 0. Rows are done from the
 *  first, and those on one place take part again and again.
 *
 *  `srcDst`: the image, which may stand at any address. `srcDstStep`: its row step in bytes. `roiSize`: size in pixels, at least 1 by 1.
 *
 *  @return #kuvStatusNullPtr if `srcDst` is null; #kuvStatusBadSize if the width or height is below 1; #kuvStatusBadStep if the step is
 *  below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuviAbs_32f_C1IR(Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize);
KUV_API KuvStatus kuviSqr_32f_C1IR(Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize);
/** @} */

/** Absolute difference of two images: `dst(x, y) = |src1(x, y) - src2(x, y)|`.
 *
 *  The difference is rounded once to single precision in the caller's rounding mode, in every variant, then its sign bit is cleared: of a
 *  NaN as well, which is that of the one NaN operand made quiet, of two that of `src1`, or 0x7FC00000 of infinity less itself.
 *
 *  Step class B, for all three steps, which must be multiples of 4 as well. `dst` may be one of the sources; what any other overlap gives
 *  is not stated. Large images may bypass the caches on their way to `dst`.
 *
 *  @param src1 the one image
 *  @param src1Step row step of `src1` in bytes
 *  @param src2 the other image
 *  @param src2Step row step of `src2` in bytes
 *  @param dst the image of the differences
 *  @param dstStep row step of `dst` in bytes
 *  @param roiSize size of all three in pixels, at least 1 by 1
 *  @return #kuvStatusNullPtr if an image is null; #kuvStatusBadSize if the width or height is below 1; #kuvStatusBadStep if any step is
 *          below four times the width; #kuvStatusStepNotMultiple if any step is no multiple of 4; else #kuvStatusOk. */
KUV_API KuvStatus kuviAbsDiff_32f_C1R(const Kuv32f* src1, Kuv32s src1Step, const Kuv32f* src2, Kuv32s src2Step, Kuv32f* dst,
                                      Kuv32s dstStep, KuviSize roiSize);

/** Takes the square roots of an image in place: `srcDst(x, y) = sqrt(srcDst(x, y))`.
 *
 *  Each root is the exact one rounded once to single precision in the caller's rounding mode, in every variant; that of -0 is -0, that of
 *  +infinity is +infinity. A sample below 0 becomes the NaN 0xFFC00000. A NaN becomes 0xFFC00000 too in px, and a NaN of any kind
 *  elsewhere.
 *
 *  A sample that has no root does not stop the work: it is told by a warning in the end. In px that is any sample below 0 and any NaN;
 *  in the other variants it is any whose sign bit is set but for -0, so a NaN with a clear sign bit gives none.
 *
 *  Unlike all other functions, those other variants change the processor's control register for the caller: if all floating-point
 *  exceptions are masked, they clear the bit by which denormal operands count as zero, once the arguments have been checked, and leave it
 *  so. px leaves the register alone. Where the bit stays set, denormal samples count as zeros of their sign.
 *
 *  Step class A, and the lowest two bits of the step are cleared then: one of 6 acts as 4, and one of 1 to 3 as 0. Rows are done from the
 *  first, and those on one place take part again and again.
 *
 *  @param srcDst the image, which may stand at any address
 *  @param srcDstStep its row step in bytes
 *  @param roiSize size in pixels, at least 1 by 1
 *  @return #kuvStatusNullPtr if `srcDst` is null; #kuvStatusBadSize if the width or height is below 1; #kuvStatusBadStep if the step is
 *          below 1; #kuvStatusSqrtOfNegative if a sample had no root, as told above; else #kuvStatusOk. */
KUV_API KuvStatus kuviSqrt_32f_C1IR(Kuv32f* srcDst, Kuv32s srcDstStep, KuviSize roiSize);

/** @name Scaled sums and differences of images
 *  @{ */
/** With v the exact sum or difference and f the scale factor, the result is v times 2 to the power of -f, rounded to the nearest
 *  integer, of two equally near ones to the even one, and limited to -32768 to 32767:
 *
 *  - `kuviAdd_16s_C1RSfs`: `dst(x, y)` from v = `src2(x, y) + src1(x, y)`;
 *  - `kuviAdd_16s_C3IRSfs`: `srcDst(x, y)[c]` from v = `srcDst(x, y)[c] + src(x, y)[c]` for each channel c;
 *  - `kuviSub_16s_C1RSfs`: `dst(x, y)` from v = `src2(x, y) - src1(x, y)`: the first image is the one that is taken away;
 *  - `kuviSub_16s_C1IRSfs`: `srcDst(x, y)` from v = `srcDst(x, y) - src(x, y)`.
 *
 *  Any scale factor is good. At 1, a v of 3 gives 2, of 1 and -1 gives 0, of -3 gives -2. At -1 v is doubled; from -15 downward
 *  nothing but its sign is left: 32767, 0 or -32768. Above 16 every result is 0, and no source is read.
 *
 *  Step class C: with a step of 0 the same row takes part again and again. Rows are done from the first. `dst` may be `src1` or
 *  `src2`, with the same step, and `srcDst` may be `src`. Large images may bypass the caches on their way to `dst`.
 *
 *  `src1`, `src2`, `src`: the images that are read. `dst`: the one that is written. `srcDst`: the one that is changed.
 *  `src1Step`, `src2Step`, `srcStep`, `dstStep`, `srcDstStep`: their row steps in bytes. `roiSize`: size of all in pixels, at least
 *  1 by 1. `scaleFactor`: f.
 *
 *  @return #kuvStatusNullPtr if an image is null; #kuvStatusBadSize if the width or height is below 1; else #kuvStatusOk.
 *  `kuviAdd_16s_C3IRSfs` looks at the width before the pointers, and at the height after them. */
KUV_API KuvStatus kuviAdd_16s_C1RSfs(const Kuv16s* src1, Kuv32s src1Step, const Kuv16s* src2, Kuv32s src2Step, Kuv16s* dst,
                                     Kuv32s dstStep, KuviSize roiSize, Kuv32s scaleFactor);
KUV_API KuvStatus kuviAdd_16s_C3IRSfs(const Kuv16s* src, Kuv32s srcStep, Kuv16s* srcDst, Kuv32s srcDstStep, KuviSize roiSize,
                                      Kuv32s scaleFactor);
KUV_API KuvStatus kuviSub_16s_C1RSfs(const Kuv16s* src1, Kuv32s src1Step, const Kuv16s* src2, Kuv32s src2Step, Kuv16s* dst,
                                     Kuv32s dstStep, KuviSize roiSize, Kuv32s scaleFactor);
KUV_API KuvStatus kuviSub_16s_C1IRSfs(const Kuv16s* src, Kuv32s srcStep, Kuv16s* srcDst, Kuv32s srcDstStep, KuviSize roiSize,
                                      Kuv32s scaleFactor);
/** @} */

/** @name Scaled sums and differences of an image and a constant
 *  @{ */
/** With v the exact value of `srcDst(x, y) + value`, or of `srcDst(x, y) - value`, and f the scale factor, `srcDst(x, y)` becomes
 *  v times 2 to the power of -f, rounded to the nearest integer, of two equally near ones to the even one, and limited to
 *  -32768 to 32767. Of three channels each has its own constant.
 *
 *  Any scale factor is good. From -15 downward nothing but the sign of v is left: 32767, 0 or -32768. Above 16 every result is 0,
 *  and no sample is read.
 *
 *  Step class C: with a step of 0 the same row takes part again and again. Rows are done from the first.
 *
 *  `value`: the constant, or the three of them, read before any sample is written. `srcDst`: the image. `srcDstStep`: its row step
 *  in bytes. `roiSize`: size in pixels, at least 1 by 1. `scaleFactor`: f.
 *
 *  @return #kuvStatusNullPtr if `srcDst`, or the pointer `value`, is null; #kuvStatusBadSize if the width or height is below 1; else
 *  #kuvStatusOk. */
KUV_API KuvStatus kuviAddC_16s_C1IRSfs(Kuv16s value, Kuv16s* srcDst, Kuv32s srcDstStep, KuviSize roiSize, Kuv32s scaleFactor);
KUV_API KuvStatus kuviAddC_16s_C3IRSfs(const Kuv16s value[3], Kuv16s* srcDst, Kuv32s srcDstStep, KuviSize roiSize,
                                       Kuv32s scaleFactor);
KUV_API KuvStatus kuviSubC_16s_C1IRSfs(Kuv16s value, Kuv16s* srcDst, Kuv32s srcDstStep, KuviSize roiSize, Kuv32s scaleFactor);
/** @} */

/** Squares an image in place and scales the squares: `srcDst(x, y)` becomes its exact square times 2 to the power of
 *  -`scaleFactor`, rounded to the nearest integer and limited to 32767.
 *
 *  Of two equally near integers the even one is taken, which of squares is always the lower one: so 3 at 1 gives 4, and 5 gives
 *  12. Any scale factor is good. From -15 downward the result is 0 for a sample of 0 and 32767 for any other; above 30 every result
 *  is 0, and no sample is read.
 *
 *  Step class A, and the lowest bit of the step is taken as 0: with a step of 1 the same row is squared again and again. Rows are
 *  done from the first.
 *
 *  @param srcDst the image
 *  @param srcDstStep row step of `srcDst` in bytes, at least 1
 *  @param roiSize size in pixels, at least 1 by 1
 *  @param scaleFactor how many binary places the squares are shifted to the right, or, if it is negative, to the left
 *  @return #kuvStatusNullPtr if `srcDst` is null; #kuvStatusBadSize if the width or height is below 1; #kuvStatusBadStep if the step
 *          is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuviSqr_16s_C1IRSfs(Kuv16s* srcDst, Kuv32s srcDstStep, KuviSize roiSize, Kuv32s scaleFactor);

/** @name Shifts of images by a constant
 *  @{ */
/** `srcDst(x, y) = srcDst(x, y) << value`, cut to 16 bits, or `srcDst(x, y) >> value`, filled with zeros.
 *
 *  Any count is good: one of 0 changes nothing, one above 15 sets the samples to 0 without reading them.
 *
 *  Step class A, and the step is looked at before the size. Rows are done from the first: samples that belong to several rows are
 *  shifted as often.
 *
 *  `value`: the count. `srcDst`: the image. `srcDstStep`: its row step in bytes. `roiSize`: size in pixels, at least 1 by 1.
 *
 *  @return #kuvStatusNullPtr if `srcDst` is null; #kuvStatusBadStep if the step is below 1; #kuvStatusBadSize if the width or
 *  height is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuviLShiftC_16u_C1IR(Kuv32u value, Kuv16u* srcDst, Kuv32s srcDstStep, KuviSize roiSize);
KUV_API KuvStatus kuviRShiftC_16u_C1IR(Kuv32u value, Kuv16u* srcDst, Kuv32s srcDstStep, KuviSize roiSize);
/** @} */

/** @name Shifts of images by a constant for each channel
 *  @{ */
/** `srcDst(x, y)[c] = srcDst(x, y)[c] << value[c]`, cut to 16 bits, or `srcDst(x, y)[c] >> value[c]`, filled with zeros, for each
 *  of three colour channels c.
 *
 *  Any count is good: a channel whose count is 0 is not changed, one whose count is above 15 becomes 0. In `AC4` images the
 *  fourth sample of a pixel is alpha: it keeps its value, and nothing behind the last colour sample of a row is touched, nor need
 *  it be memory.
 *
 *  Step class A, and the step is looked at before the size. Rows are done from the first: samples that belong to several rows are
 *  shifted as often.
 *
 *  `value`: three counts, read before any sample is written. `srcDst`: the image. `srcDstStep`: its row step in bytes. `roiSize`:
 *  size in pixels, at least 1 by 1.
 *
 *  @return #kuvStatusNullPtr if `value` or `srcDst` is null; #kuvStatusBadStep if the step is below 1; #kuvStatusBadSize if the
 *  width or height is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuviLShiftC_16u_C3IR(const Kuv32u value[3], Kuv16u* srcDst, Kuv32s srcDstStep, KuviSize roiSize);
KUV_API KuvStatus kuviRShiftC_16u_C3IR(const Kuv32u value[3], Kuv16u* srcDst, Kuv32s srcDstStep, KuviSize roiSize);
KUV_API KuvStatus kuviLShiftC_16u_AC4IR(const Kuv32u value[3], Kuv16u* srcDst, Kuv32s srcDstStep, KuviSize roiSize);
KUV_API KuvStatus kuviRShiftC_16u_AC4IR(const Kuv32u value[3], Kuv16u* srcDst, Kuv32s srcDstStep, KuviSize roiSize);
/** @} */

/** @name Shifts of signals by a constant
 *  @{ */
/** `srcDst[i] = srcDst[i] << value`, cut to 16 bits, or `srcDst[i] >> value`, filled with zeros.
 *
 *  A count above 15 sets the samples to 0 without reading them. With one of 0 the signal is not accessed. The count is signed
 *  here, and a negative one is refused, after the pointer and the length have been looked at.
 *
 *  `value`: the count. `srcDst`: the signal, which may stand at an odd address. `len`: samples, at least 1.
 *
 *  @return #kuvStatusNullPtr if `srcDst` is null; #kuvStatusBadSize if `len` is below 1; #kuvStatusBadShift if `value` is below
 *  0; else #kuvStatusOk. */
KUV_API KuvStatus kuvsLShiftC_16u_I(Kuv32s value, Kuv16u* srcDst, Kuv32s len);
KUV_API KuvStatus kuvsRShiftC_16u_I(Kuv32s value, Kuv16u* srcDst, Kuv32s len);
/** @} */
/** @} */

/** @defgroup move Moving, setting and converting samples
 *  @{ */

/** @name Plain copies
 *  @{ */
/** `dst(x, y) = src(x, y)` for every sample of every pixel, bits unchanged.
 *
 *  Step class C: rows are copied from the first, so that destination rows on one place leave the last one there. `src` and `dst` may
 *  be one image; what any other overlap gives is not stated. Large images may bypass the caches, depending on the variant and the
 *  cache's size; the copy is complete when the function returns.
 *
 *  `src`, `dst`: the images. `srcStep`, `dstStep`: their row steps in bytes. `roiSize`: size in pixels, at least 1 by 1.
 *
 *  @return #kuvStatusNullPtr if `src` or `dst` is null; #kuvStatusBadSize if the width or height is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuviCopy_8u_C1R(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviCopy_16u_C1R(const Kuv16u* src, Kuv32s srcStep, Kuv16u* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviCopy_16s_C1R(const Kuv16s* src, Kuv32s srcStep, Kuv16s* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviCopy_32s_C1R(const Kuv32s* src, Kuv32s srcStep, Kuv32s* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviCopy_32f_C1R(const Kuv32f* src, Kuv32s srcStep, Kuv32f* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviCopy_8u_C3R(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviCopy_16u_C3R(const Kuv16u* src, Kuv32s srcStep, Kuv16u* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviCopy_8u_C4R(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize);
/** @} */

/** @name Copies between layouts
 *  @{ */
/** - `AC4R`: samples 0 to 2 of each pixel of four. The destination's fourth sample keeps its value.
 *  - `C3AC4R`: the three samples of a pixel to the first three of four. The destination's fourth sample keeps its value.
 *  - `AC4C3R`: samples 0 to 2 of a pixel of four to a pixel of three.
 *  - `C1C3R`: each sample to the first of a pixel of three; the other two keep their values. To fill channel c, pass the address of the
 *    first destination pixel's sample c.
 *
 *  A fourth sample, or one that is kept, behind the last sample that is copied in a row is not touched: it need not be memory.
 *
 *  Step class C. Rows are copied from the first. `AC4R` may have one image as `src` and `dst`; what any other overlap gives is not stated.
 *
 *  `src`, `dst`: the images. `srcStep`, `dstStep`: their row steps in bytes. `roiSize`: size in pixels, at least 1 by 1.
 *
 *  @return #kuvStatusNullPtr if `src` or `dst` is null; #kuvStatusBadSize if the width or height is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuviCopy_8u_AC4R(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviCopy_16u_AC4R(const Kuv16u* src, Kuv32s srcStep, Kuv16u* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviCopy_8u_C3AC4R(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviCopy_16u_C3AC4R(const Kuv16u* src, Kuv32s srcStep, Kuv16u* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviCopy_8u_AC4C3R(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviCopy_16u_AC4C3R(const Kuv16u* src, Kuv32s srcStep, Kuv16u* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviCopy_8u_C1C3R(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize);
/** @} */

/** @name Planes to pixels
 *  @{ */
/** `dst(x, y)[c] = src[c](x, y)`: three or four planes of one step to interleaved pixels of as many samples.
 *
 *  Step class C. What an overlap gives is not stated. Large images may bypass the caches on their way to `dst`.
 *
 *  `src`: the planes. `srcStep`: row step of each in bytes. `dst`, `dstStep`: the image and its row step in bytes. `roiSize`: size in
 *  pixels, at least 1 by 1.
 *
 *  @return #kuvStatusNullPtr if `src`, `dst` or a plane is null; #kuvStatusBadSize if the width or height is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuviCopy_8u_P3C3R(const Kuv8u* const src[3], Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviCopy_8u_P4C4R(const Kuv8u* const src[4], Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize);
/** @} */

/** @name Copies under a mask
 *  @{ */
/** `dst(x, y) = src(x, y)` where `mask(x, y)` is not 0; elsewhere `dst` keeps its value.
 *
 *  Step class C. Rows are copied from the first. What an overlap of the images gives is not stated.
 *
 *  `src`, `dst`, `mask`: the images. `srcStep`, `dstStep`, `maskStep`: their row steps in bytes. `roiSize`: size in pixels, at least 1 by
 *  1.
 *
 *  @return #kuvStatusNullPtr if `src`, `dst` or `mask` is null; #kuvStatusBadSize if the width or height is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuviCopy_8u_C1MR(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize, const Kuv8u* mask,
                                   Kuv32s maskStep);
KUV_API KuvStatus kuviCopy_16u_C1MR(const Kuv16u* src, Kuv32s srcStep, Kuv16u* dst, Kuv32s dstStep, KuviSize roiSize, const Kuv8u* mask,
                                    Kuv32s maskStep);
/** @} */

/** Copies bytes: `dst[i] = src[i]`.
 *
 *  `src` and `dst` may be equal; what any other overlap gives is not stated. Large copies may bypass the caches.
 *
 *  @param src the source
 *  @param dst the destination
 *  @param len bytes, at least 1
 *  @return #kuvStatusNullPtr if `src` or `dst` is null; #kuvStatusBadSize if `len` is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuvsCopy_8u(const Kuv8u* src, Kuv8u* dst, Kuv32s len);

/** Clears bytes: `dst[i] = 0`.
 *
 *  @param dst the destination
 *  @param len bytes, at least 1
 *  @return #kuvStatusNullPtr if `dst` is null; #kuvStatusBadSize if `len` is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuvsZero_8u(Kuv8u* dst, Kuv32s len);

/** @name Constants
 *  @{ */
/** `dst(x, y) = value`, bits unchanged, so that a NaN keeps its payload.
 *
 *  Step class C. Padding between rows is not written. Large fills may bypass the caches, as large copies do.
 *
 *  `value`: the constant. `dst`: the image. `dstStep`: its row step in bytes. `roiSize`: size in pixels, at least 1 by 1.
 *
 *  @return #kuvStatusNullPtr if `dst` is null; #kuvStatusBadSize if the width or height is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuviSet_8u_C1R(Kuv8u value, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviSet_16u_C1R(Kuv16u value, Kuv16u* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviSet_32s_C1R(Kuv32s value, Kuv32s* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviSet_32f_C1R(Kuv32f value, Kuv32f* dst, Kuv32s dstStep, KuviSize roiSize);
/** @} */

/** Sets one channel of an image of four: `dst(x, y)[0] = value`.
 *
 *  The other three samples of a pixel keep their values, and nothing behind the last pixel's written sample is touched. To set channel
 *  c, pass the address of the first pixel's sample c.
 *
 *  Step class C.
 *
 *  @param value the constant
 *  @param dst the channel's sample of the first pixel
 *  @param dstStep row step of `dst` in bytes
 *  @param roiSize size in pixels, at least 1 by 1
 *  @return #kuvStatusNullPtr if `dst` is null; #kuvStatusBadSize if the width or height is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuviSet_8u_C4CR(Kuv8u value, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize);

/** @name Conversions between types
 *  @{ */
/** - `8u32f`, `16u32f`: `dst(x, y) = src(x, y)`, which is exact.
 *  - `16u8u`: `dst(x, y) = min(src(x, y), 255)`.
 *
 *  Step class A. Large images may bypass the caches on their way to `dst`. What an overlap of the images gives is not stated.
 *
 *  `src`, `dst`: the images. `srcStep`, `dstStep`: their row steps in bytes. `roiSize`: size in pixels, at least 1 by 1.
 *
 *  @return #kuvStatusNullPtr if `src` or `dst` is null; #kuvStatusBadSize if the width or height is below 1; #kuvStatusBadStep if
 *  `srcStep` or `dstStep` is below 1; else #kuvStatusOk. In kuviConvert_8u32f_C3R() alone a width below 1 gives #kuvStatusBadSize before
 *  the pointers are looked at. */
KUV_API KuvStatus kuviConvert_8u32f_C1R(const Kuv8u* src, Kuv32s srcStep, Kuv32f* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviConvert_8u32f_C3R(const Kuv8u* src, Kuv32s srcStep, Kuv32f* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviConvert_16u32f_C1R(const Kuv16u* src, Kuv32s srcStep, Kuv32f* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviConvert_16u8u_C1R(const Kuv16u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize);
KUV_API KuvStatus kuviConvert_16u8u_C3R(const Kuv16u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize);
/** @} */

/** Converts single precision to 8 bits: `dst(x, y)[c] = min(max(round(src(x, y)[c]), 0), 255)`.
 *
 *  `round` goes toward zero with a `roundMode` of 0, to the nearest integer and from halves to the even one with 1, and to the nearest
 *  and from halves away from zero with any other. A NaN gives 0. The result does not depend on the processor's rounding mode, which
 *  is the caller's again when the function returns.
 *
 *  Step class A. Large images may bypass the caches on their way to `dst`. What an overlap of the images gives is not stated.
 *
 *  @param src the source
 *  @param srcStep row step of `src` in bytes
 *  @param dst the destination
 *  @param dstStep row step of `dst` in bytes
 *  @param roiSize size in pixels, at least 1 by 1
 *  @param roundMode 0, 1, or any other value; see above
 *  @return #kuvStatusNullPtr if `src` or `dst` is null; #kuvStatusBadSize if the width or height is below 1; #kuvStatusBadStep if
 *          `srcStep` or `dstStep` is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuviConvert_32f8u_C3R(const Kuv32f* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize,
                                        Kuv32s roundMode);

/** Lays the range of 8 bits on another: `dst(x, y)[c] = s * src(x, y)[c] + vMin` with `s = (vMax - vMin) / 255`.
 *
 *  In double precision, each operation rounded by itself and none fused, and the sum rounded once more to single precision; in the
 *  caller's rounding mode. So 0 gives `vMin`, and 255 gives `vMax` within rounding.
 *
 *  Step class A. Large images may bypass the caches on their way to `dst`. What an overlap of the images gives is not stated.
 *
 *  @param src the source
 *  @param srcStep row step of `src` in bytes
 *  @param dst the destination
 *  @param dstStep row step of `dst` in bytes
 *  @param roiSize size in pixels, at least 1 by 1
 *  @param vMin what 0 becomes
 *  @param vMax what 255 becomes
 *  @return #kuvStatusEmptyRange if `vMax - vMin` is 0 or below (a NaN is neither); #kuvStatusNullPtr if `src` or `dst` is null;
 *          #kuvStatusBadSize if the width or height is below 1; #kuvStatusBadStep if `srcStep` or `dstStep` is below 1; else
 *          #kuvStatusOk. */
KUV_API KuvStatus kuviScale_8u32f_C3R(const Kuv8u* src, Kuv32s srcStep, Kuv32f* dst, Kuv32s dstStep, KuviSize roiSize, Kuv32f vMin,
                                      Kuv32f vMax);

/** Lays a range on that of 8 bits: `dst(x, y)[c] = round((src(x, y)[c] - vMin) * 255 / (vMax - vMin))`, from 0 to 255.
 *
 *  Exactly: samples of `vMax` and more give 255, others of `vMin` and less give 0. Between them, in double precision, each operation
 *  rounded by itself and none fused, in the caller's rounding mode: with `k = 255 / (vMax - vMin)` and `b = -(vMin * k)`, and `i` the
 *  integer part of `y = (0.5 + b) + x * k`, the result is `i - 1` if `i` is odd and equals `y`, else `i`. So halves go to the even
 *  neighbour. A NaN gives 0.
 *
 *  Step class A. Large images may bypass the caches on their way to `dst`. What an overlap of the images gives is not stated.
 *
 *  @param src the source
 *  @param srcStep row step of `src` in bytes
 *  @param dst the destination
 *  @param dstStep row step of `dst` in bytes
 *  @param roiSize size in pixels, at least 1 by 1
 *  @param vMin what becomes 0
 *  @param vMax what becomes 255
 *  @return as kuviScale_8u32f_C3R() */
KUV_API KuvStatus kuviScale_32f8u_C3R(const Kuv32f* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize, Kuv32f vMin,
                                      Kuv32f vMax);

/** @name Mirror images
 *  @{ */
/** With W and H the width and height of `roiSize`, `dst(x, y)` is
 *
 *  - #kuvAxisHorizontal: `src(x, H-1-y)`
 *  - #kuvAxisVertical: `src(W-1-x, y)`
 *  - #kuvAxisBoth: `src(W-1-x, H-1-y)`
 *  - #kuvAxisDiagonal: `src(y, x)`, in the one-channel functions only
 *  - #kuvAxisSecondDiagonal: `src(H-1-y, W-1-x)`, in the one-channel functions only
 *
 *  The channels of a pixel keep their order. About the diagonals `roiSize` is the destination's size, so that the source is H pixels wide
 *  and W rows high.
 *
 *  Step class C, but for the diagonals: rows are done in the order of the source, so that destination rows on one place leave there what
 *  comes from the last one. If `src` is `dst` with the same step, the image is mirrored in place as by the function for that, with its
 *  checks. What any other overlap gives is not stated. Large images may bypass the caches.
 *
 *  The diagonals have checks of their own: steps are at least 1, and even for 16-bit samples. An overlap of the images is refused as far
 *  as it shows in the corners: if the first or last sample of an image's first or last row lies within a row of the other image.
 *
 *  `src`, `dst`: the images. `srcStep`, `dstStep`: their row steps in bytes. `roiSize`: size of `dst` in pixels, at least 1 by 1. `axis`:
 *  the axis.
 *
 *  @return #kuvStatusNullPtr if `src` or `dst` is null; #kuvStatusBadSize if the width or height is below 1; #kuvStatusBadAxis if `axis`
 *  is none that the function has; else #kuvStatusOk. About the diagonals, of a one-channel image: #kuvStatusNullPtr if `src` or `dst` is
 *  null; #kuvStatusBadStep if a step is below 1, or odd with 16-bit samples; #kuvStatusBadSize if the width or height is below 1;
 *  #kuvStatusInternal if the images overlap in the sense above; else #kuvStatusOk. */
KUV_API KuvStatus kuviMirror_8u_C1R(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize, Kuv32s axis);
KUV_API KuvStatus kuviMirror_8u_C3R(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize, Kuv32s axis);
KUV_API KuvStatus kuviMirror_16u_C1R(const Kuv16u* src, Kuv32s srcStep, Kuv16u* dst, Kuv32s dstStep, KuviSize roiSize, Kuv32s axis);
KUV_API KuvStatus kuviMirror_16u_C3R(const Kuv16u* src, Kuv32s srcStep, Kuv16u* dst, Kuv32s dstStep, KuviSize roiSize, Kuv32s axis);
/** @} */

/** @name Mirror images in place
 *  @{ */
/** What kuviMirror_8u_C1R() and its like give for #kuvAxisHorizontal, #kuvAxisVertical and #kuvAxisBoth, onto the image itself.
 *
 *  Step class C: rows are exchanged in pairs, the outermost first, and rows are reversed from the first. With a step of 0 an exchange of
 *  rows changes nothing; about both axes the middle row of an odd height is still reversed, once, and about the vertical axis the one row
 *  is reversed `roiSize.height` times.
 *
 *  `srcDst`: the image. `srcDstStep`: its row step in bytes. `roiSize`: size in pixels, at least 1 by 1. `axis`: the axis.
 *
 *  @return #kuvStatusNullPtr if `srcDst` is null; #kuvStatusBadSize if the width or height is below 1; #kuvStatusBadAxis if `axis` is not
 *  one of the three; else #kuvStatusOk. */
KUV_API KuvStatus kuviMirror_8u_C1IR(Kuv8u* srcDst, Kuv32s srcDstStep, KuviSize roiSize, Kuv32s axis);
KUV_API KuvStatus kuviMirror_8u_C3IR(Kuv8u* srcDst, Kuv32s srcDstStep, KuviSize roiSize, Kuv32s axis);
KUV_API KuvStatus kuviMirror_16u_C1IR(Kuv16u* srcDst, Kuv32s srcDstStep, KuviSize roiSize, Kuv32s axis);
KUV_API KuvStatus kuviMirror_16u_C3IR(Kuv16u* srcDst, Kuv32s srcDstStep, KuviSize roiSize, Kuv32s axis);
/** @} */

/** @name Channels reordered
 *  @{ */
/** `dst(x, y)[c] = src(x, y)[dstOrder[c]]` for each colour channel c: {2, 1, 0} reverses three channels, {0, 0, 0} spreads the first.
 *
 *  A pixel is read whole before any of it is written, so `src` and `dst` may be one image with one step. In `AC4` images the fourth
 *  sample of a pixel is alpha: that of the destination keeps its value, and nothing behind the last colour sample of a row is touched,
 *  nor need it be memory.
 *
 *  Step class D: a negative step walks upward. Rows are done from the first.
 *
 *  `src`, `dst`: the images. `srcStep`, `dstStep`: their row steps in bytes. `roiSize`: size in pixels, at least 1 by 1. `dstOrder`:
 *  for each colour channel of the destination, the channel of the source: three entries of 0 to 2.
 *
 *  @return #kuvStatusNullPtr if `src` or `dst` is null; #kuvStatusBadStep if a step is 0; #kuvStatusBadSize if the width or height is
 *  below 1; #kuvStatusNullPtr if `dstOrder` is null; #kuvStatusBadChannelOrder if an entry is out of its range; else #kuvStatusOk. */
KUV_API KuvStatus kuviSwapChannels_16u_C3R(const Kuv16u* src, Kuv32s srcStep, Kuv16u* dst, Kuv32s dstStep, KuviSize roiSize,
                                           const Kuv32s* dstOrder);
KUV_API KuvStatus kuviSwapChannels_8u_AC4R(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize,
                                           const Kuv32s* dstOrder);
KUV_API KuvStatus kuviSwapChannels_16u_AC4R(const Kuv16u* src, Kuv32s srcStep, Kuv16u* dst, Kuv32s dstStep, KuviSize roiSize,
                                            const Kuv32s* dstOrder);
/** @} */

/** kuviSwapChannels_16u_C3R() on 8-bit samples, with another order of checks.
 *
 *  If `src` is `dst` the image is reordered in place with rows `dstStep` apart, whatever `srcStep` is.
 *
 *  @param src the source
 *  @param srcStep row step of `src` in bytes; not 0, even if `src` is `dst`
 *  @param dst the destination; may be `src`
 *  @param dstStep row step of `dst` in bytes
 *  @param roiSize size in pixels, at least 1 by 1
 *  @param dstOrder for each channel of the destination, the channel of the source: three entries of 0 to 2
 *  @return #kuvStatusNullPtr if `src`, `dst` or `dstOrder` is null; #kuvStatusBadSize if the width or height is below 1;
 *          #kuvStatusBadStep if a step is 0; #kuvStatusBadChannelOrder if an entry is out of its range; else #kuvStatusOk. */
KUV_API KuvStatus kuviSwapChannels_8u_C3R(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize,
                                          const Kuv32s* dstOrder);

/** Reorders three channels in place: `srcDst(x, y)[c] = srcDst(x, y)[dstOrder[c]]`, from samples read before any is written.
 *
 *  Step class D: a negative step walks upward. Rows are done from the first.
 *
 *  @param srcDst the image
 *  @param srcDstStep row step of `srcDst` in bytes
 *  @param roiSize size in pixels, at least 1 by 1
 *  @param dstOrder for each channel, the one that it is taken from: three entries of 0 to 2
 *  @return #kuvStatusNullPtr if `srcDst` is null; #kuvStatusBadStep if the step is 0; #kuvStatusBadSize if the width or height is
 *          below 1; #kuvStatusNullPtr if `dstOrder` is null; #kuvStatusBadChannelOrder if an entry is out of its range; else
 *          #kuvStatusOk. */
KUV_API KuvStatus kuviSwapChannels_8u_C3IR(Kuv8u* srcDst, Kuv32s srcDstStep, KuviSize roiSize, const Kuv32s* dstOrder);

/** Reorders four channels in place: `srcDst(x, y)[c] = srcDst(x, y)[dstOrder[c]]`, from samples read before any is written.
 *
 *  Step class D: a negative step walks upward. Rows are done from the first.
 *
 *  @param srcDst the image
 *  @param srcDstStep row step of `srcDst` in bytes
 *  @param roiSize size in pixels, at least 1 by 1
 *  @param dstOrder for each channel, the one that it is taken from: four entries of 0 to 3
 *  @return #kuvStatusNullPtr if `srcDst` or `dstOrder` is null; #kuvStatusBadStep if the step is 0; #kuvStatusBadSize if the width or
 *          height is below 1; #kuvStatusBadChannelOrder if an entry is out of its range; else #kuvStatusOk. */
KUV_API KuvStatus kuviSwapChannels_8u_C4IR(Kuv8u* srcDst, Kuv32s srcDstStep, KuviSize roiSize, const Kuv32s* dstOrder);
/** @} */

/** @defgroup tone Tone maps, palettes and dithers
 *  @{ */

/** A tone map that kuviLUT_Init_8u() or kuviLUT_Init_16u() made, at the start of a block that the caller allocates and owns. It must
 *  not be copied or moved, and may stand at any address. */
typedef struct KuviToneMapSpec KuviToneMapSpec;

/** Curves of tone maps. */
enum {
    kuvLutStep = 1,   /**< constant between levels */
    kuvLutLinear = 2, /**< straight between levels */
    kuvLutCubic = 6   /**< cubic through four neighbouring control points */
};

/** Gives the size of the block for a tone map.
 *
 *  With n the level count of the first channel, T the sum of those in use (C3 and AC4: three, C4: four) and A(x) the next multiple of
 *  64 from x on, the size is 184 more than
 *
 *  - 8u: 256 a channel in use
 *  - 16u and 16s: 0x20000 a channel in use, and with #kuvLutStep also 8n for C1 and A(8T) for C3
 *  - 32f with #kuvLutStep: 8n for C1, else A(8T)
 *  - 32f with #kuvLutLinear: A(8T) + 8(T - channels in use)
 *  - 32f with #kuvLutCubic: A(8T) + 24(T - channels in use); if a channel in use has fewer than four levels, as with #kuvLutLinear
 *
 *  This version makes tone maps of 8u and 16u only. A size past 32 bits wraps.
 *
 *  @param interpolation #kuvLutStep, #kuvLutLinear or #kuvLutCubic
 *  @param dataType #kuvDataType8u, #kuvDataType16u, #kuvDataType16s or #kuvDataType32f
 *  @param channels #kuvChannelsC1, #kuvChannelsC3, #kuvChannelsC4 or #kuvChannelsAC4
 *  @param roiSize checked, and not used for anything
 *  @param nLevels level counts, each at least 2: one for C1, three for C3 and AC4, four for C4
 *  @param specSize receives the size in bytes
 *  @return #kuvStatusBadInterpolation if `interpolation` is none of the three; #kuvStatusNullPtr if `nLevels` or `specSize` is null;
 *          #kuvStatusBadSize if the width or height is below 1; #kuvStatusBadLutLevels if the fourth count of C4 is below 2;
 *          #kuvStatusBadChannels if `channels` is none of the four; #kuvStatusBadLutLevels if another count in use is below 2;
 *          #kuvStatusBadDataType if `dataType` is none of the four; else #kuvStatusOk. */
KUV_API KuvStatus kuviLUT_GetSize(Kuv32s interpolation, Kuv32s dataType, Kuv32s channels, KuviSize roiSize, const Kuv32s* nLevels,
                                  Kuv32s* specSize);

/** Makes a tone map of 8-bit samples from control points: a table of max + 1 entries for each channel, max being 255.
 *
 *  Channel c has n = `nLevels[c]` control points: the sample L[k] = `levels[c][k]` becomes V[k] = `values[c][k]`. Levels should rise and
 *  lie within 0 to max + 1. Below the first level and from the last one on the table is the identity, so that the last value is
 *  never used. In detail, each step writing over the ones before it:
 *
 *  1. Entries below L[0] are the identity.
 *  2. For k = 0 to n - 2, each entry x from L[k] to before L[k+1] becomes, limited to 0 to max,
 *     - #kuvLutStep: V[k]
 *     - #kuvLutLinear: `x*slope + ((V[k] + 0.5) - L[k]*slope)` with `slope = (V[k+1] - V[k]) / (L[k+1] - L[k])`
 *     - #kuvLutCubic: with s = k - 1 limited to 0 to n - 4, the cubic that is 0 at 0 and goes through P, Q and R, the differences of
 *       V[s], V[s+2] and V[s+3] to V[s+1], at u, v and w, the same differences of the levels:
 *       `d*(c*d^2 + a) + (d^2*b + (V[s+1] + 0.5))` at d = x - L[s+1]. If a channel in use has fewer than four levels, all are linear.
 *  3. Entries from L[n-1] on are the identity.
 *
 *  Linear and cubic sums are cut toward zero, before they are limited. They are in double precision, operation by operation in the
 *  order written, under the caller's rounding mode; differences of levels and of values are taken in 32-bit integers, which wrap. What
 *  no 32-bit integer holds, NaN too, becomes 0. The coefficients of the cubic are
 *
 *      M1 = v^2*u^3 - u^2*v^3,  M2 = w^3*u^2 - u^3*w^2,  M3 = v^3*w^2 - v^2*w^3,  D = 1 / (M1*w + (M2*v + M3*u))
 *      a = (M1*R + (M2*Q + M3*P)) * D
 *      b = ((w*u^3 - u*w^3)*Q + (P*(-w*v^3 + v*w^3) + (-u^3*v + v^3*u)*R)) * D
 *      c = ((v*u^2 - u*v^2)*R + ((-u^2*w + u*w^2)*Q + (v^2*w - w^2*v)*P)) * D
 *
 *  px to g9 give the same tables. In h9 the products of a linear or cubic sum that a term is added to are fused with that addition:
 *  `x*slope + ...`; `c*d^2 + a`, `d^2*b + ...`, `d*(...) + ...`. Where rounding moves a sum over an integer, an entry differs by 1;
 *  by more only in a cubic of points in no order, whose terms may cancel one another.
 *
 *  Levels are not examined. Outside of 0 to max + 1 they count as the nearer end of that range in the spans of entries, in step 2 of the
 *  linear and cubic rule as max if they begin a span; a level not above the one before it ends no span of step 2 (#kuvLutStep: after
 *  limiting). Linear and cubic, a span of a single entry is V[k] limited, even if only limiting made it so short.
 *
 *  The map is complete when its identity word is written, last of all; it does not refer to the caller's arrays. A map may be made
 *  again on the same block, with any arguments. From the check of `channels` on, an error leaves one word changed, the place of the
 *  tables: a map of another kind that the block held is to be made again.
 *
 *  @param interpolation #kuvLutStep, #kuvLutLinear or #kuvLutCubic
 *  @param channels #kuvChannelsC1, #kuvChannelsC3, #kuvChannelsC4 or #kuvChannelsAC4. No function applies a map of #kuvChannelsC4.
 *  @param roiSize checked, and not used for anything
 *  @param values for each channel (C3 and AC4: three, C4: four), its V
 *  @param levels for each channel, its L
 *  @param nLevels for each channel, its n, at least 2
 *  @param spec block of at least the size that kuviLUT_GetSize() gives; any address
 *  @return #kuvStatusBadInterpolation if `interpolation` is none of the three; #kuvStatusBadSize if the width or height is below 1;
 *          #kuvStatusNullPtr if `values`, `levels`, `nLevels` or `spec` is null; #kuvStatusBadChannels if `channels` is none of the four;
 *          #kuvStatusNullPtr if the pointer to a channel's values or levels is null; #kuvStatusBadLutLevels if a channel's count is below
 *          2; else #kuvStatusOk. */
KUV_API KuvStatus kuviLUT_Init_8u(Kuv32s interpolation, Kuv32s channels, KuviSize roiSize, const Kuv32s* const* values,
                                  const Kuv32s* const* levels, const Kuv32s* nLevels, KuviToneMapSpec* spec);

/** Makes a tone map of 16-bit samples: kuviLUT_Init_8u() with a max of 65535, and these differences.
 *
 *  - Cubic sums are limited to 0 to 65535 before they are cut, so that one past 32 bits becomes 65535, or 0 if negative. NaN becomes 0.
 *  - With #kuvLutStep, C1 and C3 maps keep a copy of the control points beside the tables.
 *  - With #kuvLutStep, C3, C4 and AC4, the checks of the channels run channel by channel: values, levels and count of the first, then
 *    those of the second. With C4 the tables of the channels before the one that fails have been written.
 *
 *  @param interpolation #kuvLutStep, #kuvLutLinear or #kuvLutCubic
 *  @param channels #kuvChannelsC1, #kuvChannelsC3, #kuvChannelsC4 or #kuvChannelsAC4
 *  @param roiSize checked, and not used for anything
 *  @param values for each channel, its V
 *  @param levels for each channel, its L
 *  @param nLevels for each channel, its n, at least 2
 *  @param spec block of at least the size that kuviLUT_GetSize() gives; any address
 *  @return the statuses of kuviLUT_Init_8u() */
KUV_API KuvStatus kuviLUT_Init_16u(Kuv32s interpolation, Kuv32s channels, KuviSize roiSize, const Kuv32s* const* values,
                                   const Kuv32s* const* levels, const Kuv32s* nLevels, KuviToneMapSpec* spec);

/** @name Tone maps applied
 *  @{ */
/** Replaces each sample by its channel's table entry, in place: `srcDst(x, y)[c] = table[c][srcDst(x, y)[c]]`. `AC4`: the fourth
 *  sample of a pixel stays as it is.
 *
 *  `16u_C1IR` and `16u_C3IR` look samples up among the control points that a #kuvLutStep map keeps, without its tables, if the product
 *  of width and height as a signed 32-bit number is below 4097. For levels that rise within 0 to 65536 this gives the same. In any
 *  case a sample x below L[0], or not below L[n-1], stays as it is, and any other becomes V[i] limited to 0 to 65535, where i is what a
 *  bisection gives: from i = 0 and a length of n - 1 on, while the length is above 1, half of it, rounded down, is taken off the length and
 *  added to i if x is not below L[i + half]; otherwise that half is the new length.
 *
 *  Step class A. A step is not compared with the row's width: rows that overlap are done in order, from the first. All variants give
 *  the same bits. Any number of threads may use a map at once.
 *
 *  `srcDst`: the image. `srcDstStep`: its row step in bytes. `roiSize`: size in pixels, at least 1 by 1. `spec`: a map made for the
 *  samples and channels in the function's name, by any of the three curves.
 *
 *  @return #kuvStatusNullPtr if `srcDst` or `spec` is null; #kuvStatusBadStep if the step is below 1; #kuvStatusBadSize if the width
 *  or height is below 1; #kuvStatusBadArg if `spec` is no such map; else #kuvStatusOk. */
KUV_API KuvStatus kuviLUT_8u_C1IR(Kuv8u* srcDst, Kuv32s srcDstStep, KuviSize roiSize, const KuviToneMapSpec* spec);
KUV_API KuvStatus kuviLUT_8u_C3IR(Kuv8u* srcDst, Kuv32s srcDstStep, KuviSize roiSize, const KuviToneMapSpec* spec);
KUV_API KuvStatus kuviLUT_8u_AC4IR(Kuv8u* srcDst, Kuv32s srcDstStep, KuviSize roiSize, const KuviToneMapSpec* spec);
KUV_API KuvStatus kuviLUT_16u_C1IR(Kuv16u* srcDst, Kuv32s srcDstStep, KuviSize roiSize, const KuviToneMapSpec* spec);
KUV_API KuvStatus kuviLUT_16u_C3IR(Kuv16u* srcDst, Kuv32s srcDstStep, KuviSize roiSize, const KuviToneMapSpec* spec);
KUV_API KuvStatus kuviLUT_16u_AC4IR(Kuv16u* srcDst, Kuv32s srcDstStep, KuviSize roiSize, const KuviToneMapSpec* spec);
/** @} */

/** @name Palettes
 *  @{ */
/** `dst(x, y) = table[src(x, y) & (2^nBitSize - 1)]`: what a sample holds beyond its low `nBitSize` bits does not count.
 *
 *  - `24u`: entries and pixels of three bytes, entry i at byte 3 * i, copied in their order whatever they stand for.
 *  - `32u`: entries and pixels of 32 bits.
 *
 *  Step class B. `table` has 2^`nBitSize` entries, and no byte behind them is read; like the images it may stand at any address.
 *
 *  `src`: the indices. `dst`: the colours. `srcStep`, `dstStep`: their row steps in bytes. `roiSize`: size in pixels, at least 1
 *  by 1. `table`: the palette. `nBitSize`: bits of an index, 1 to 8 with `8u` samples, 1 to 16 with `16u` samples.
 *
 *  @return #kuvStatusNullPtr if `src`, `dst` or `table` is null; #kuvStatusBadSize if the width or height is below 1;
 *  #kuvStatusOutOfRange if `nBitSize` is out of its range; #kuvStatusBadStep if a row of either image has more bytes than its step;
 *  else #kuvStatusOk. */
KUV_API KuvStatus kuviLUTPalette_8u24u_C1R(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize,
                                           const Kuv8u* table, Kuv32s nBitSize);
KUV_API KuvStatus kuviLUTPalette_8u32u_C1R(const Kuv8u* src, Kuv32s srcStep, Kuv32u* dst, Kuv32s dstStep, KuviSize roiSize,
                                           const Kuv32u* table, Kuv32s nBitSize);
KUV_API KuvStatus kuviLUTPalette_16u24u_C1R(const Kuv16u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize,
                                            const Kuv8u* table, Kuv32s nBitSize);
KUV_API KuvStatus kuviLUTPalette_16u32u_C1R(const Kuv16u* src, Kuv32s srcStep, Kuv32u* dst, Kuv32s dstStep, KuviSize roiSize,
                                            const Kuv32u* table, Kuv32s nBitSize);
/** @} */

/** @name Reduction of bits
 *  @{ */
/** 16-bit samples brought to `levels` evenly spaced values of 8 bits, with a choice of dithers.
 *
 *  With n = `levels` - 1, the step `s = 65535 / n` and its inverse `i = n / 65535` held in single precision, and trunc() cutting
 *  toward zero:
 *
 *  - #kuvDitherOff: `x = src / 65535`, `q = trunc(n * x) * (1 / n)`; where `x - q > 0.5 / n`, q grows by `1 / n`.
 *    `dst = min(255, trunc(q * 255 + 0.5))`.
 *  - All others quantise a value v with a threshold T: `base = trunc(i * v) * s`; where `v - base > T`, base is
 *    `trunc(i * v) * s + s` instead. `dst = min(255, trunc(base + 0.5) >> 8)`.
 *  - #kuvDitherOrdered4x4: v is the sample, `T = M[y % 4][x % 4] * (65535 / n)`, rounded to single precision, with the rows of M
 *    (0, 8, 2, 10), (12, 4, 14, 6), (3, 11, 1, 9), (15, 7, 13, 5), each divided by 15 in single precision. With noise,
 *    `T = s * (M[y % 4][x % 4] + N(x, y))`. All samples of a pixel have the same threshold.
 *  - The error diffusions add to the sample what is left of the neighbours before it: `v = src + e`. Where `v >= 65535`, dst is 255
 *    and the error c 0; where `v < 0`, both are 0; elsewhere v is quantised with `T = s / 2`, or N(x, y) if there is noise, and
 *    `c = v - base`, held in single precision. With p the errors of the row before and q those of the row before that:
 *    - #kuvDitherFloydSteinberg: `e = (5 * p[x] + 3 * p[x+1] + p[x-1] + 7 * c[x-1]) * 0.0625`.
 *    - #kuvDitherJarvisJudiceNinke: `e = (q[x-2] + q[x+2] + 7 * (p[x] + c[x-1]) + 5 * (q[x] + p[x-1] + p[x+1] + c[x-2]) +
 *      3 * (q[x-1] + q[x+1] + p[x-2] + p[x+2])) * k`, k being 1/48 in single precision.
 *    - #kuvDitherStucki: the same with 8, 4, 2 for 7, 5, 3, and 1/42 for 1/48.
 *
 *    Errors left and right of a row are 0, and so are those before the first row of the first channel. The channels follow one another,
 *    all rows of one before the first of the next, and the rows before the first row of a channel are the last ones of the channel
 *    before it.
 *
 *  x and y count from the region's first pixel.
 *
 *  **Noise.** With `noise` above 0, `N(x, y) = noises[(indices[x % 1024] + 2 * y + x) % 1024]`. Both tables come from a generator of
 *  uniform numbers that starts afresh in each call, so that equal calls have equal results: on 32-bit words A = 1131199209, B = 0,
 *  C = 1013904243, `D = 69069 * C + 1013904243` and E = -1, a number is `t = E + C - D`, signed; `r = t`, or t - 18 if t is
 *  negative; D = C, C = B, B = r; E = -1 if t is negative, else 0; `A = 69069 * A + 1013904243`; and then
 *  `(r + A) * ((high - low) / 2^32) + (high + low) / 2` in double precision, with r + A signed. `indices` are 1024 numbers with the
 *  bounds 0 and 1024, rounded to the nearest integer; `noises` are 1024 numbers held in single precision, with the bounds
 *  `(50 - noise) * s / 100` and `(50 + noise) * s / 100` for the error diffusions, `-noise / 100` and `noise / 100` for the ordered
 *  dither, these held in single precision as well.
 *
 *  **Variants.** px computes all this in double precision, but for what is said to be held in single precision. w7 to h9 agree bit
 *  for bit with one another; they compute in single precision, each operation rounded once, without the + 0.5 before the last trunc().
 *  A value close to a threshold may fall the other way. In these variants `x = src * 1.5259022e-5f`; Floyd-Steinberg's sum is
 *  `3 * p[x+1] + p[x-1] + 5 * p[x] + 7 * c[x-1]` from left to right; and with the weights a, b, c and the factor k of the two others,
 *  `e = (P + Q + b * c[x-2] + a * c[x-1]) * k` with `P = a * p[x] + b * (p[x-1] + p[x+1]) + c * (p[x-2] + p[x+2])` and
 *  `Q = b * q[x] + c * (q[x-1] + q[x+1]) + (q[x-2] + q[x+2])`.
 *
 *  Error diffusion in w7 to h9 uses up to 40 KiB of stack.
 *
 *  `AC4R` reduces the first three samples of a pixel. It reads the fourth of `dst`, which stays as it is, and may write it back.
 *
 *  Step class C. `src` and `dst` must not overlap; two calls at once need two buffers.
 *
 *  Sources: R. W. Floyd, L. Steinberg, "An adaptive algorithm for spatial greyscale", Proceedings of the Society for Information
 *  Display 17 (1976); J. F. Jarvis, C. N. Judice, W. H. Ninke, "A survey of techniques for the display of continuous tone pictures
 *  on bilevel displays", Computer Graphics and Image Processing 5 (1976); P. Stucki, "MECCA - a multiple-error correction
 *  computation algorithm for bilevel image hardcopy reproduction", IBM Research Report RZ1060 (1981); B. E. Bayer, "An optimum
 *  method for two-level rendition of continuous-tone pictures", IEEE International Conference on Communications (1973); for the
 *  noise G. Marsaglia, A. Zaman, "Some portable very-long-period random number generators", Computers in Physics 8 (1994).
 *
 *  `src`: the image. `dst`: what becomes of it. `srcStep`, `dstStep`: their row steps in bytes. `roiSize`: size in pixels, at least 1
 *  by 1. `noise`: how far thresholds are disturbed, 0 to 100 percent; without effect with #kuvDitherOff. `ditherType`: the dither.
 *  `levels`: 2 to 256. `buffer`: as many bytes as kuviReduceBitsGetBufferSize() tells, at any address and with any content; may be
 *  null where that is 0, and is not touched then.
 *
 *  @return #kuvStatusNullPtr if `src` or `dst` is null; #kuvStatusBadSize if the width or height is below 1; #kuvStatusBadNoise if
 *  `noise` is not 0 to 100; #kuvStatusBadLevels if `levels` is not 2 to 256; #kuvStatusBadDitherType if `ditherType` is none of the
 *  five; #kuvStatusNullPtr if `buffer` is null and needed; else #kuvStatusOk. */
KUV_API KuvStatus kuviReduceBits_16u8u_C1R(const Kuv16u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize,
                                           Kuv32s noise, KuvDitherType ditherType, Kuv32s levels, Kuv8u* buffer);
KUV_API KuvStatus kuviReduceBits_16u8u_C3R(const Kuv16u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize,
                                           Kuv32s noise, KuvDitherType ditherType, Kuv32s levels, Kuv8u* buffer);
KUV_API KuvStatus kuviReduceBits_16u8u_AC4R(const Kuv16u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize,
                                            Kuv32s noise, KuvDitherType ditherType, Kuv32s levels, Kuv8u* buffer);
/** @} */

/** Tells the size of the buffer that kuviReduceBits_* take.
 *
 *  With w the width: nothing for #kuvDitherOff; `8 * w + 80` bytes for #kuvDitherFloydSteinberg and `12 * w + 112` for
 *  #kuvDitherJarvisJudiceNinke and #kuvDitherStucki, with noise 6272 more; nothing for #kuvDitherOrdered4x4, with noise 6336.
 *  A size beyond 32 bits wraps around; an image of such a width cannot be diffused.
 *
 *  @param channels #kuvChannelsC1, #kuvChannelsC3, #kuvChannelsC4 or #kuvChannelsAC4; without influence on the size
 *  @param roiSize size of the image in pixels; the height is not looked at
 *  @param noise the noise that the image will be reduced with, 0 to 100
 *  @param ditherType the dither
 *  @param bufferSize gets the size in bytes
 *  @return #kuvStatusNullPtr if `bufferSize` is null; #kuvStatusBadSize if the width is below 1; #kuvStatusBadChannels if `channels` is
 *          none of the four; #kuvStatusBadNoise if `noise` is not 0 to 100; #kuvStatusBadDitherType if `ditherType` is none of the
 *          five; else #kuvStatusOk. */
KUV_API KuvStatus kuviReduceBitsGetBufferSize(Kuv32s channels, KuviSize roiSize, Kuv32s noise, KuvDitherType ditherType,
                                              Kuv32s* bufferSize);
/** @} */

/** @defgroup colour Camera colour
 *  @{ */

/** Reconstructs RGB from a Bayer mosaic by bilinear interpolation, with a gradient test for green.
 *
 *  With E the mosaic, continued beyond the image's borders by reflection (index -i for i, 2*last - i beyond the last), all in 32-bit
 *  integers:
 *
 *  - The colour of a site keeps its sample.
 *  - At a green site, the colour left and right of it is `(E(x-1, y) + E(x+1, y) + 1) >> 1`, the colour above and below it
 *    `(E(x, y-1) + E(x, y+1) + 1) >> 1`.
 *  - At a red or blue site, the other one of the two is the mean of the four diagonal neighbours, `(sum + 2) >> 2`.
 *  - Green at a red or blue site follows the smaller one of `|E(x, y-2) - E(x, y+2)|` and `|E(x-2, y) - E(x+2, y)|`: the mean of the
 *    neighbours above and below, or of those left and right, `(a + b + 1) >> 1`. If these are equal, and in the two outermost rows and
 *    columns of the image in any case, it is the mean of the four, `(sum + 2) >> 2`.
 *
 *  All variants give the same bits.
 *
 *  The region is clipped at the far edges of the image without a status. Pixels of it that lie before the image's first row or column have
 *  no stated value; nothing outside the region is written. A region of no width or height, or past both far edges, writes nothing. The
 *  caller must not pass a region that begins past one far edge only: it gets pixels of the image's last column or row at their place, which
 *  is before the region.
 *
 *  Step class C. `src` and `dst` must not overlap. w7 to h9 use up to 32 KiB of stack.
 *
 *  @param src the mosaic, at image sample (0, 0), not at the region
 *  @param roi the region to produce
 *  @param imageSize size of the whole mosaic, at least 2 by 2
 *  @param srcStep row step of `src` in bytes
 *  @param dst the region's first output pixel; three interleaved samples a pixel: R, G, B
 *  @param dstStep row step of `dst` in bytes
 *  @param layout colours of the mosaic at the image's origin, wherever the region lies
 *  @param interpolation not used; any value
 *  @return #kuvStatusNullPtr if `src` or `dst` is null; #kuvStatusBadSize if the image's width, then its height, is below 2;
 *          #kuvStatusBadArg if `layout` is not one of the four; else #kuvStatusOk. */
KUV_API KuvStatus kuviCFAToRGB_8u_C1C3R(const Kuv8u* src, KuviRect roi, KuviSize imageSize, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep,
                                        KuvCfaLayout layout, Kuv32s interpolation);

/** kuviCFAToRGB_8u_C1C3R() on 16-bit samples. */
KUV_API KuvStatus kuviCFAToRGB_16u_C1C3R(const Kuv16u* src, KuviRect roi, KuviSize imageSize, Kuv32s srcStep, Kuv16u* dst,
                                         Kuv32s dstStep, KuvCfaLayout layout, Kuv32s interpolation);

/** Reconstructs RGB from a Bayer mosaic by adaptive homogeneity-directed interpolation.
 *
 *  The image is interpolated twice, along rows (H) and along columns (V), and each pixel is taken whole from the direction that
 *  is more homogeneous around it. With E the mosaic, continued beyond its borders by reflection (index -i for i, 2*last - i
 *  beyond the last), all in 32-bit integers with shifts that round down:
 *
 *  1. Green at red and blue sites: `((a + b) >> 1) + ((2*E - p - q) >> 2)`, limited to the range from a to b, with a, b the
 *     nearest and p, q the next nearest samples left and right (H) or above and below (V).
 *  2. Red and blue in each direction from the colour differences to that direction's green G: at a green site `G + ((sum of E - G
 *     at the two nearest sites of the colour) >> 1)`, at a site of the opposite colour `G + ((sum of E - G at the four diagonal
 *     sites) >> 2)`, saturated.
 *  3. `Y = (66R + 129G + 25B + 128) >> 8`, `U = (-38R - 74G + 112B + 128) >> 8`, `V = (112R - 94G - 18B + 128) >> 8`.
 *  4. L is the absolute difference of Y and C the squared distance in (U, V) between a pixel and a neighbour. Thresholds:
 *     `min(max(L_H(left), L_H(right)), max(L_V(up), L_V(down)))`, and likewise for C. D is the number of the four neighbours within
 *     both thresholds in direction H less that number in direction V.
 *  5. S is the sum of D over the 3 by 3 pixels around. S above 0 takes H, S below 0 takes V; S equal to 0 repeats the decision of
 *     the pixel to the left, and at the left edge takes H.
 *
 *  The one difference between variants lies in that left edge. px has one, the region's. All others also begin afresh at the
 *  edges of the central block that keeps a distance of 5 samples from the image's border, so that a pixel with S equal to 0 close
 *  to the right of such an edge may take the other direction. These others agree bit for bit. The block begins on a red sample
 *  and has even sides. A region cut into bands of its full width gives the picture of one call in every variant if each band but
 *  the first begins on a row with red samples.
 *
 *  After K. Hirakawa and T. W. Parks, "Adaptive homogeneity-directed demosaicing algorithm", IEEE Transactions on Image Processing
 *  14(3), 2005, with another luminance and chrominance space and without the final median filter.
 *
 *  The region is clipped to the image without a status: x or y below 1 becomes 0, width and height unchanged; what reaches beyond
 *  the far edges is cut off; an empty region writes nothing.
 *
 *  An image dimension of exactly 5 makes single reflection reach one sample outside the image, which is read as it stands in
 *  memory: the caller provides it. From 6 on nothing outside the image is read.
 *
 *  Step class C, for all three steps. `src`, `dst` and `tmp` must not overlap. With a `dstStep` of 0 the last row stays; what rows
 *  that share some of their bytes leave there is not stated.
 *
 *  @param src the mosaic, at image sample (0, 0), not at the region
 *  @param roi the region to produce
 *  @param imageSize size of the whole mosaic, at least 5 by 5
 *  @param srcStep row step of `src` in bytes
 *  @param dst the first output pixel, at the region's (clipped) origin; three interleaved samples a pixel: R, G, B
 *  @param dstStep row step of `dst` in bytes
 *  @param layout colours of the mosaic at the image's origin
 *  @param tmp 30 working lines, each of the clipped width + 6 samples if that width is even, + 8 if it is odd; their content is
 *         lost. May be null if the region is empty; in other cases a null is not found out. A variant may leave lines unused and work
 *         on up to 32 KiB of stack instead.
 *  @param tmpStep distance of the working lines in bytes
 *  @return #kuvStatusNullPtr if `src` or `dst` is null; #kuvStatusBadSize if the image's width, then its height, is below 5;
 *          #kuvStatusBadArg if `layout` is not one of the four; else #kuvStatusOk. */
KUV_API KuvStatus kuviDemosaicAHD_8u_C1C3R(const Kuv8u* src, KuviRect roi, KuviSize imageSize, Kuv32s srcStep, Kuv8u* dst,
                                           Kuv32s dstStep, KuvCfaLayout layout, Kuv8u* tmp, Kuv32s tmpStep);

/** kuviDemosaicAHD_8u_C1C3R() on 16-bit samples.
 *
 *  The working lines lie `tmpStep` with its lowest bit cleared apart. Squared chrominance distances wrap in 32 bits and compare as
 *  signed numbers.
 *
 *  @param src the mosaic, at image sample (0, 0), not at the region
 *  @param roi the region to produce
 *  @param imageSize size of the whole mosaic, at least 5 by 5
 *  @param srcStep row step of `src` in bytes
 *  @param dst the first output pixel, at the region's (clipped) origin
 *  @param dstStep row step of `dst` in bytes
 *  @param layout colours of the mosaic at the image's origin
 *  @param tmp 30 working lines as there, of two bytes a sample
 *  @param tmpStep distance of the working lines in bytes
 *  @return #kuvStatusNullPtr if `src` or `dst` is null; #kuvStatusBadSize if the image's width, then its height, is below 5;
 *          #kuvStatusBadArg if `layout` is not one of the four; else #kuvStatusOk. */
KUV_API KuvStatus kuviDemosaicAHD_16u_C1C3R(const Kuv16u* src, KuviRect roi, KuviSize imageSize, Kuv32s srcStep, Kuv16u* dst,
                                            Kuv32s dstStep, KuvCfaLayout layout, Kuv16u* tmp, Kuv32s tmpStep);

/** Expands packed 4:2:2 video to RGB.
 *
 *  The source has two bytes a pixel; each pair of pixels is Cb, Y of the first, Cr, Y of the second, and both share Cb and Cr. With
 *  b = Cb - 128, r = Cr - 128 and shifts that round down, each result limited to 0 to 255, a pixel is, by the exact formulae,
 *
 *  - `R = (76282*Y + 104593*r - 1187744) >> 16`
 *  - `G = (76282*Y - 25689*b - 53279*r - 1187744) >> 16`
 *  - `B = (76282*Y + 132184*b - 1187744) >> 16`
 *
 *  where 1187744 stands for luma's offset of 16 and a rounding term of one half; and by the quick formulae, with
 *  `m(a, k) = (a*k) >> 16` and `y = m((Y - 16) << 7, 4769)`,
 *
 *  - `R = (y + m(r << 7, 6537) + 4) >> 3`
 *  - `G = (y - (m(b << 7, 1605) + m(r << 7, 3330)) + 4) >> 3`
 *  - `B = (y + m(b << 7, 8263) + 4) >> 3`
 *
 *  Which formulae hold depends on the variant and on a pixel's place in its row. px and w7 are exact everywhere. In s8, p8 and g9 the
 *  quick formulae hold for the first pixels of a row, as many as the largest multiple of 8 that fits the width, in h9 of 16; the
 *  others, up to 7 and up to 15, are exact. A sample by the one and by the other differs by 1 at most.
 *
 *  The last pixel of an odd row has Cb and Y in its two bytes and takes the Cr of the pair before it. Where px and w7 find none, at a
 *  width of 1, they take the pixel's own Cb for r too. s8, p8, g9 and h9 do that at a width of 3 instead, and with a width of 1 they
 *  read r from the byte two places before `src(0, y)`, as it stands in memory: the caller provides it.
 *
 *  After ITU-R Recommendation BT.601: Y of 16 to 235 is black to white, Cb and Cr are 16 to 240 around 128.
 *
 *  Step class C. `src` and `dst` must not overlap.
 *
 *  @param src the video: Cb, Y, Cr, Y, two bytes a pixel
 *  @param srcStep row step of `src` in bytes
 *  @param dst three interleaved samples a pixel: R, G, B
 *  @param dstStep row step of `dst` in bytes
 *  @param roiSize size of both in pixels, at least 1 by 1
 *  @return #kuvStatusNullPtr if `src` or `dst` is null; #kuvStatusBadSize if the width or height is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuviCbYCr422ToRGB_8u_C2C3R(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize);

/** Repeats a grey sample in all three channels: `dst(x, y)[c] = src(x, y)`.
 *
 *  Step class C. `src` and `dst` must not overlap.
 *
 *  @param src the grey samples
 *  @param srcStep row step of `src` in bytes
 *  @param dst three interleaved samples a pixel: R, G, B
 *  @param dstStep row step of `dst` in bytes
 *  @param roiSize size of both in pixels, at least 1 by 1
 *  @return #kuvStatusNullPtr if `src` or `dst` is null; #kuvStatusBadSize if the width or height is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuviGrayToRGB_8u_C1C3R(const Kuv8u* src, Kuv32s srcStep, Kuv8u* dst, Kuv32s dstStep, KuviSize roiSize);
/** @} */

/** @defgroup stats Statistics
 *  Of a whole region. Integer samples are summed exactly in every variant, whatever the size of the region, so that these results agree
 *  bit for bit. Real samples are summed in a stated order. Regions may lie on themselves: nothing is written but the results, which may
 *  stand at any address and not in the region.
 *  @{ */

/** Sums single-precision samples.
 *
 *  px adds in double precision, in two sums that last the whole region: one of the samples in even columns and one of those in odd
 *  columns; `*sum` is the sum of both. `hint` has no effect there. All other variants agree with each other bit for bit, and with px
 *  within the rounding of their sums:
 *
 *  - With a `hint` of 2, samples are added in double precision, in sixteen sums that last the whole region: column x goes to sum x mod 16.
 *  - With any other `hint`, a row is added in single precision in such sixteen sums, these are added to each other in single precision,
 *    and the row's sum is added to a total in double precision. Faster, and less exact the longer the rows are; a row's sum can overflow.
 *
 *  The sixteen sums are added by halves: first j and j + 8, then j and j + 4, j and j + 2, 0 and 1. A NaN, or infinities of both signs,
 *  make a sum a NaN; which one is not stated.
 *
 *  Step class C.
 *
 *  @param src the samples
 *  @param srcStep row step of `src` in bytes
 *  @param roiSize size of the region in pixels, at least 1 by 1
 *  @param sum receives the sum
 *  @param hint 2 asks for accuracy; with any other value speed decides
 *  @return #kuvStatusNullPtr if `src` or `sum` is null; #kuvStatusBadSize if the width or height is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuviSum_32f_C1R(const Kuv32f* src, Kuv32s srcStep, KuviSize roiSize, Kuv64f* sum, Kuv32s hint);

/** The mean of single-precision samples: the sum that kuviSum_32f_C1R() gives with the same `hint`, divided by width * height.
 *
 *  That product is formed in 32 bits, signed, and wraps. The mean of a region of 2^31 samples and more is the caller's quotient of the
 *  sum and its true size. Variants differ as they do there.
 *
 *  Step class C.
 *
 *  @param src the samples
 *  @param srcStep row step of `src` in bytes
 *  @param roiSize size of the region in pixels, at least 1 by 1
 *  @param mean receives the mean
 *  @param hint 2 asks for accuracy; with any other value speed decides
 *  @return #kuvStatusNullPtr if `mean` or `src` is null; #kuvStatusBadSize if the width or height is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuviMean_32f_C1R(const Kuv32f* src, Kuv32s srcStep, KuviSize roiSize, Kuv64f* mean, Kuv32s hint);

/** The mean of signed 16-bit samples: their exact sum, divided once, in double precision, by width * height.
 *
 *  Step class C.
 *
 *  @param src the samples
 *  @param srcStep row step of `src` in bytes
 *  @param roiSize size of the region in pixels, at least 1 by 1
 *  @param mean receives the mean
 *  @return #kuvStatusNullPtr if `mean` or `src` is null; #kuvStatusBadSize if the width or height is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuviMean_16s_C1R(const Kuv16s* src, Kuv32s srcStep, KuviSize roiSize, Kuv64f* mean);

/** The means of three channels: the exact sum of each, multiplied in double precision by the reciprocal `1 / (width * height)`.
 *
 *  Reciprocal and product are rounded separately, so that a mean can differ from the quotient in its last bit.
 *
 *  Step class C.
 *
 *  @param src three interleaved samples a pixel
 *  @param srcStep row step of `src` in bytes
 *  @param roiSize size of the region in pixels, at least 1 by 1
 *  @param mean receives the mean of each channel
 *  @return #kuvStatusNullPtr if `mean` or `src` is null; #kuvStatusBadSize if the width or height is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuviMean_8u_C3R(const Kuv8u* src, Kuv32s srcStep, KuviSize roiSize, Kuv64f mean[3]);

/** @name Mean and standard deviation of integer samples
 *  @{ */
/** With sum and squares the exact sums of the samples and of their squares, each made a double by one rounding, and n = width * height
 *  in 32 bits, unsigned, in double precision, each operation rounded:
 *
 *  - `mean = sum / n`
 *  - `stdDev = sqrt(|squares / n - mean * mean|)`, the deviation with denominator n; the absolute value takes a difference that rounding
 *    has made negative
 *
 *  n wraps at 2^32 pixels. If it is 0 both results are 0. Large samples with a small deviation lose digits in the difference. A 1 by 1
 *  region has its sample for a mean and a deviation of 0.
 *
 *  Step class B. 16-bit images need a step that is a multiple of 2.
 *
 *  `src`: the samples; three interleaved ones a pixel in `C3C`. `srcStep`: its row step in bytes. `roiSize`: size of the region in
 *  pixels, at least 1 by 1. `coi`: the channel that is measured, 1 to 3. `mean`, `stdDev`: receive the results; either or both may be
 *  null, and that result is not stored.
 *
 *  @return #kuvStatusNullPtr if `src` is null; #kuvStatusBadSize if the width or height is below 1; #kuvStatusBadStep if `srcStep` is
 *  below the row's bytes; then #kuvStatusStepNotMultiple if 16-bit samples have an odd step, or #kuvStatusBadChannelOfInterest if `coi`
 *  is not 1 to 3; else #kuvStatusOk. */
KUV_API KuvStatus kuviMean_StdDev_8u_C1R(const Kuv8u* src, Kuv32s srcStep, KuviSize roiSize, Kuv64f* mean, Kuv64f* stdDev);
KUV_API KuvStatus kuviMean_StdDev_16u_C1R(const Kuv16u* src, Kuv32s srcStep, KuviSize roiSize, Kuv64f* mean, Kuv64f* stdDev);
KUV_API KuvStatus kuviMean_StdDev_8u_C3CR(const Kuv8u* src, Kuv32s srcStep, KuviSize roiSize, Kuv32s coi, Kuv64f* mean,
                                          Kuv64f* stdDev);
/** @} */

/** Mean and standard deviation of single-precision samples, in double precision, with a second pass where the deviation is small.
 *
 *  With n = width * height:
 *
 *  1. `mean = s1 / n` and `stdDev = sqrt(|s2 / n - mean * mean|)`, with s1 the sum of the samples and s2 that of their squares.
 *  2. If `stdDev * stdDev < 0.05 * mean * mean`, this difference has lost digits: `stdDev = sqrt(d / n)`, with d the sum of
 *     `(sample - mean) * (sample - mean)`.
 *
 *  Each of the sums s1, s2 and d is made of eight that last the whole region, column x in sum x mod 8, which are added by halves: first
 *  j and j + 4, then j and j + 2, then 0 and 1. Each operation is rounded. All variants agree bit for bit. A NaN makes both results NaNs,
 *  and so can an infinity; which NaN is not stated. A constant image whose mean is exact has a deviation of exactly 0.
 *
 *  Step class B. The step has to be a multiple of 4.
 *
 *  @param src the samples
 *  @param srcStep row step of `src` in bytes
 *  @param roiSize size of the region in pixels, at least 1 by 1
 *  @param mean receives the mean, unless null
 *  @param stdDev receives the deviation, unless null
 *  @return #kuvStatusNullPtr if `src` is null; #kuvStatusBadSize if the width or height is below 1; #kuvStatusBadStep if `srcStep` is
 *          below the row's bytes; #kuvStatusStepNotMultiple if it is not a multiple of 4; else #kuvStatusOk. */
KUV_API KuvStatus kuviMean_StdDev_32f_C1R(const Kuv32f* src, Kuv32s srcStep, KuviSize roiSize, Kuv64f* mean, Kuv64f* stdDev);

/** The smallest and the largest of signed 16-bit samples.
 *
 *  Step class C.
 *
 *  @param src the samples
 *  @param srcStep row step of `src` in bytes
 *  @param roiSize size of the region in pixels, at least 1 by 1
 *  @param minValue receives the smallest sample
 *  @param maxValue receives the largest sample
 *  @return #kuvStatusNullPtr if `src`, `minValue` or `maxValue` is null; #kuvStatusBadSize if the width or height is below 1; else
 *          #kuvStatusOk. */
KUV_API KuvStatus kuviMinMax_16s_C1R(const Kuv16s* src, Kuv32s srcStep, KuviSize roiSize, Kuv16s* minValue, Kuv16s* maxValue);

/** The smallest and the largest of single-precision samples.
 *
 *  Both start as the first sample and are replaced, row by row from left to right, by one that is below or above. Comparisons with a NaN
 *  do not hold: a NaN in the first sample is both results, and a later one is passed over. Of zeros the first one met stays, with its
 *  sign. All variants agree bit for bit.
 *
 *  Step class C.
 *
 *  @param src the samples
 *  @param srcStep row step of `src` in bytes
 *  @param roiSize size of the region in pixels, at least 1 by 1
 *  @param minValue receives the smallest sample
 *  @param maxValue receives the largest sample
 *  @return #kuvStatusNullPtr if `src`, `minValue` or `maxValue` is null; #kuvStatusBadSize if the width or height is below 1; else
 *          #kuvStatusOk. */
KUV_API KuvStatus kuviMinMax_32f_C1R(const Kuv32f* src, Kuv32s srcStep, KuviSize roiSize, Kuv32f* minValue, Kuv32f* maxValue);

/** The largest sample of each of three single-precision channels, by the rules of kuviMinMax_32f_C1R() from the first pixel on.
 *
 *  Step class C.
 *
 *  @param src three interleaved samples a pixel
 *  @param srcStep row step of `src` in bytes
 *  @param roiSize size of the region in pixels, at least 1 by 1
 *  @param maxValue receives the largest sample of each channel
 *  @return #kuvStatusNullPtr if `src` or `maxValue` is null; #kuvStatusBadSize if the width or height is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuviMax_32f_C3R(const Kuv32f* src, Kuv32s srcStep, KuviSize roiSize, Kuv32f maxValue[3]);

/** The bins of a histogram, for one to four channels: a record at the start of a caller's block, whose size kuviHistogramGetBufferSize()
 *  tells and which kuviHistogramInit() or kuviHistogramUniformInit() fills.
 *
 *  A channel has n levels and n - 1 bins: bin k holds the samples x with `level[k] <= x < level[k+1]`. A sample below the first level, or
 *  not below the last one, is counted nowhere, and neither is a NaN.
 *
 *  The block may stand at any address, and is valid only where it was filled. Nothing but the two functions named writes to it: threads may
 *  share it, each with results and a buffer of its own. */
typedef struct KuviBinPlan KuviBinPlan;

/** Gives the sizes of a histogram's blocks: 64 bytes and 4 for each level of each channel for the #KuviBinPlan; and as scratch space 1024
 *  bytes a channel for 8u, 0x40000 for 16u and 16s, 0 for 32f. A size past 32 bits wraps.
 *
 *  @param dataType #kuvDataType8u, #kuvDataType16u, #kuvDataType16s or #kuvDataType32f
 *  @param roiSize checked, and not used for anything
 *  @param nLevels level counts, one for each channel, each at least 2
 *  @param channels 1, 3 or 4
 *  @param uniform not used for anything
 *  @param specSize receives the size of the plan in bytes; with #kuvStatusBadDataType, too
 *  @param bufferSize receives the size of the scratch space in bytes; with #kuvStatusBadDataType 0
 *  @return #kuvStatusNullPtr if `nLevels`, `specSize` or `bufferSize` is null; #kuvStatusBadSize if the width or height is below 1;
 *          #kuvStatusBadChannelCount if `channels` is none of the three; #kuvStatusBadHistLevels if a count is below 2;
 *          #kuvStatusBadDataType if `dataType` is none of the four; else #kuvStatusOk. */
KUV_API KuvStatus kuviHistogramGetBufferSize(Kuv32s dataType, KuviSize roiSize, const Kuv32s* nLevels, Kuv32s channels, Kuv32s uniform,
                                             Kuv32s* specSize, Kuv32s* bufferSize);

/** Makes a plan of bins between given levels. For integer samples a level that is no integer is rounded up, which changes no count. Beyond
 *  32 bits it becomes the nearest integer of 32 bits.
 *
 *  All is checked before anything is written, channel by channel: an error leaves the block as it was. A plan may be made again on the
 *  same block.
 *
 *  @param dataType #kuvDataType8u, #kuvDataType16u, #kuvDataType16s or #kuvDataType32f
 *  @param levels for each channel its levels, which rise: each below the next
 *  @param nLevels for each channel the number of its levels, at least 2
 *  @param channels 1, 3 or 4
 *  @param spec block of at least the size that kuviHistogramGetBufferSize() gives; any address
 *  @return #kuvStatusBadDataType if `dataType` is none of the four; #kuvStatusNullPtr if `levels`, `nLevels` or `spec` is null;
 *          #kuvStatusBadChannelCount if `channels` is none of the three; then for each channel #kuvStatusNullPtr if its levels are null,
 *          #kuvStatusBadHistLevels if its count is below 2, #kuvStatusRangeOrder if one of its levels is not below the next; else
 *          #kuvStatusOk. */
KUV_API KuvStatus kuviHistogramInit(Kuv32s dataType, const Kuv32f* const* levels, const Kuv32s* nLevels, Kuv32s channels,
                                    KuviBinPlan* spec);

/** Makes a plan of bins of one width. With n = `nLevels[c]`, in double precision, each operation rounded:
 *  `step = (upperLevel[c] - lowerLevel[c]) / (n - 1)`, and level k is `k * step + lowerLevel[c]`, the first one `lowerLevel[c]` and
 *  the last one `upperLevel[c]` themselves.
 *
 *  For 32f the levels are rounded to single precision. For integer samples they are cut toward zero, not rounded up as by
 *  kuviHistogramInit(): bins of less than 1 can hold nothing, others can differ in width by 1. Beyond 32 bits a level becomes the nearest
 *  integer of 32 bits, a NaN (between infinite bounds) the lowest.
 *
 *  All is checked before anything is written. A plan may be made again on the same block.
 *
 *  @param dataType #kuvDataType8u, #kuvDataType16u, #kuvDataType16s or #kuvDataType32f
 *  @param lowerLevel for each channel the first level
 *  @param upperLevel for each channel the last level, above the first
 *  @param nLevels for each channel the number of its levels, at least 2
 *  @param channels 1, 3 or 4
 *  @param spec block of at least the size that kuviHistogramGetBufferSize() gives; any address
 *  @return #kuvStatusBadDataType if `dataType` is none of the four; #kuvStatusNullPtr if `lowerLevel`, `upperLevel`, `nLevels` or `spec` is
 *          null; #kuvStatusBadChannelCount if `channels` is none of the three; then for each channel #kuvStatusBadHistLevels if its count
 *          is below 2, #kuvStatusRangeOrder if its lower level is not below its upper one; #kuvStatusSizeWarning if, for integer samples,
 *          the step of a channel is below 1, and the plan is complete; else #kuvStatusOk. */
KUV_API KuvStatus kuviHistogramUniformInit(Kuv32s dataType, const Kuv32f* lowerLevel, const Kuv32f* upperLevel, const Kuv32s* nLevels,
                                           Kuv32s channels, KuviBinPlan* spec);

/** Gives the levels of a plan as they are used: integers converted to single precision, levels of 32f bit for bit.
 *
 *  @param spec a plan that has been made
 *  @param levels for each channel of the plan an array that receives its levels; these pointers are not checked
 *  @return #kuvStatusNullPtr if `spec` or `levels` is null; #kuvStatusBadArg if `spec` is no plan; else #kuvStatusOk. */
KUV_API KuvStatus kuviHistogramGetLevels(const KuviBinPlan* spec, Kuv32f* const* levels);

/** @name Histograms
 *  @{ */
/** Counts the samples of a region in each bin of a plan: `hist[k]`, or `hist[c][k]` of channel c, becomes the number of samples in bin k,
 *  modulo 2^32. The plan must be one for the sample type. A channel that the plan does not have leaves its counts as they were; of more
 *  channels the first are used.
 *
 *  The counts are those of the definition, with these exceptions; only the second and the third make variants differ:
 *
 *  - 16u and 16s, in every variant: a uniform plan is taken as `hist[(x - first) / step]` with `step = (last - first) / (n - 1)` if the
 *    product of width and height, as a signed 32-bit number, is below 65536 and last - first is a multiple of n - 1, in all channels.
 *    `first` and `last` are the integer levels at the ends. Where the bounds given were no integers, the levels between can lie elsewhere,
 *    and decide from 65536 pixels on.
 *  - 32f, a uniform plan of more than three levels, in h9: if `srcStep` divided by 16, cut to an integer, equals the width, the region is
 *    not `height` rows but the first width * height samples from `src` on, one after the other.
 *  - 32f, a uniform plan between infinite bounds: levels that are NaN hold nothing for certain; samples between the bounds go to the first
 *    or to the last bin.
 *
 *  `hist` is set, whatever it held. `buffer` is scratch space: its content before does not matter, and after means nothing. Step class B:
 *  a step that is less than a row's bytes is refused. Nothing may lie on anything else.
 *
 *  @param src the samples, at any address
 *  @param srcStep row step of `src` in bytes; may be odd
 *  @param roiSize size of the region in pixels, at least 1 by 1
 *  @param hist counts of as many bins as the plan has; C3 and C4: a pointer to those of each channel
 *  @param spec a plan
 *  @param buffer block of at least the size that kuviHistogramGetBufferSize() gives for the function's type and channels, at any address.
 *      32f: not used, may be null
 *  @return #kuvStatusNullPtr if `src`, `hist`, a pointer in `hist`, `spec` or `buffer` (not of 32f) is null; #kuvStatusBadSize if the width
 *          or height is below 1; #kuvStatusBadStep if the step is below the bytes of a row; #kuvStatusBadArg if `spec` is no plan; else
 *          #kuvStatusOk. */
KUV_API KuvStatus kuviHistogram_8u_C1R(const Kuv8u* src, Kuv32s srcStep, KuviSize roiSize, Kuv32u* hist, const KuviBinPlan* spec,
                                       Kuv8u* buffer);
KUV_API KuvStatus kuviHistogram_8u_C3R(const Kuv8u* src, Kuv32s srcStep, KuviSize roiSize, Kuv32u* const hist[3], const KuviBinPlan* spec,
                                       Kuv8u* buffer);
KUV_API KuvStatus kuviHistogram_8u_C4R(const Kuv8u* src, Kuv32s srcStep, KuviSize roiSize, Kuv32u* const hist[4], const KuviBinPlan* spec,
                                       Kuv8u* buffer);
KUV_API KuvStatus kuviHistogram_16u_C1R(const Kuv16u* src, Kuv32s srcStep, KuviSize roiSize, Kuv32u* hist, const KuviBinPlan* spec,
                                        Kuv8u* buffer);
KUV_API KuvStatus kuviHistogram_16u_C4R(const Kuv16u* src, Kuv32s srcStep, KuviSize roiSize, Kuv32u* const hist[4], const KuviBinPlan* spec,
                                        Kuv8u* buffer);
KUV_API KuvStatus kuviHistogram_16s_C1R(const Kuv16s* src, Kuv32s srcStep, KuviSize roiSize, Kuv32u* hist, const KuviBinPlan* spec,
                                        Kuv8u* buffer);
KUV_API KuvStatus kuviHistogram_32f_C1R(const Kuv32f* src, Kuv32s srcStep, KuviSize roiSize, Kuv32u* hist, const KuviBinPlan* spec,
                                        Kuv8u* buffer);
/** @} */

/** The table of running sums, from which the sum over any rectangle is four reads.
 *
 *  The table has one row and one column more than the source:
 *
 *      dst(x, y) = val + the sum of src(i, j) over all i < x and j < y
 *
 *  so that its first row and its first column are `val`. With `r = dst(x + w, y + h) - dst(x + w, y) - dst(x, y + h) + dst(x, y)`, r is
 *  the sum of the w by h samples from (x, y) on.
 *
 *  Sums wrap modulo 2^32 and no status tells of it. A region of up to 2^23 samples of any value stays in the range of `Kuv32s` from a
 *  `val` of 0 on; a rectangle of up to 2^24 samples is right, taken as `Kuv32u`, also where the table has wrapped.
 *
 *  Source: F. C. Crow, "Summed-area tables for texture mapping", Computer Graphics 18(3) (SIGGRAPH 1984).
 *
 *  Step class B, for the destination by its own row of `4 * (width + 1)` bytes. `dstStep` has to be a multiple of 4; `dst` may stand at
 *  any address.
 *
 *  @param src the samples
 *  @param srcStep row step of `src` in bytes
 *  @param dst the table
 *  @param dstStep row step of `dst` in bytes
 *  @param roiSize size of `src` in pixels, at least 1 by 1; the table is width + 1 by height + 1
 *  @param val what the sums start from
 *  @return #kuvStatusNullPtr if `src` or `dst` is null; #kuvStatusBadSize if the width or height is below 1; #kuvStatusBadStep if
 *          `srcStep` is below the width or `dstStep` below `4 * (width + 1)`; #kuvStatusStepNotMultiple if `dstStep` is not a multiple
 *          of 4; else #kuvStatusOk. */
KUV_API KuvStatus kuviIntegral_8u32s_C1R(const Kuv8u* src, Kuv32s srcStep, Kuv32s* dst, Kuv32s dstStep, KuviSize roiSize, Kuv32s val);
/** @} */

/** @defgroup filter Filters
 *
 *  A filter takes three steps: kuviFilterBorderGetSize() tells how large two blocks of the caller's have to be,
 *  kuviFilterBorderInit_32f() keeps a kernel in the one of them, and kuviFilterBorder_32f_C1R() filters as many images as there are,
 *  with the other one as working memory.
 *  @{ */

/** A kernel that kuviFilterBorderInit_32f() keeps, in a block that the caller allocates and owns. It must not be copied or moved, and
 *  may stand at any address. The block is aligned by the functions: the record begins at its first 64-byte boundary. */
typedef struct KuviBorderKernel KuviBorderKernel;

/** Tells the sizes of a filter's two blocks.
 *
 *  With kw by kh the kernel, rw by rh the region, e bytes a sample, c channels, t = (kh - 1) / 2 and l = (kw - 1) / 2 rounded down,
 *  b = kh - 1 - t and r = kw - 1 - l, but b = 2 if kh is 2 and r = 2 if kw is 2, and A(x) the next multiple of 64 from x on:
 *
 *  - `*specSize = A(f*kw*kh) + A(((kw + 1) / 2)*32*kh) + 191`, the quotient rounded down, with f = 2 for an integer kernel and 4
 *    otherwise. w7, s8 and p8 add `A(16*kw*kh)` for a kernel of 32f and 1, 3 or 4 channels.
 *  - `*bufferSize = R + 63 + X`. R is `N*c*e` rounded up to a multiple of 32, plus 32. If kw is at least rw or kh at least rh,
 *    `N = (kw + rw - 1)*(kh + rh - 1)`. Otherwise N is the larger of `(kw + rw - 1)*(kh + b - 1)`, or 0 if b is 0, and, if r is not 0,
 *    `(kh + rh - 1)*(kw + r - 1)`: what the strips along the region's sides take, not its area.
 *  - X is 0 in px, for two channels, and for samples other than 32f; else `32*kw*kh + 191` for one channel and `16*kw*kh + 191` for three
 *    and four, cut to a multiple of 64. So sizes are those of the variant in force; but no variant's run takes more of the buffer than
 *    any variant asks for.
 *
 *  An integer kernel counts as such with 8u and 32f samples, and with 16s samples of one channel and a kernel of at least 3 by 2, or of
 *  two channels and a kernel of at least 2 by 2; elsewhere the sizes are those of #kuvDataType32f. This version runs filters of
 *  single-precision samples in one channel only; the other sizes are those that such filters would take at least.
 *
 *  @param kernelSize width and height of the kernel, at least 1 by 1
 *  @param roiSize size in pixels of the region to be filtered, at least 1 by 1. Smaller ones may need more: in strips a region needs
 *         the less the smaller it is, but one not larger than the kernel on either side is taken as a whole.
 *  @param dataType type of the samples: #kuvDataType8u, #kuvDataType16u, #kuvDataType16s or #kuvDataType32f
 *  @param kernelType #kuvDataType32f, or #kuvDataType16s for an integer kernel
 *  @param channels 1 to 4
 *  @param specSize gets the size of the block for the kernel in bytes
 *  @param bufferSize gets the size of the working memory in bytes
 *  @return #kuvStatusBadSize if a width or height is below 1; #kuvStatusBadDataType if `dataType` is none of the four, or
 *          `kernelType` none of the two; #kuvStatusBadChannels if `channels` is not 1 to 4; #kuvStatusNullPtr if `specSize` or
 *          `bufferSize` is null; #kuvStatusSizeOverflow if a size is above 0x7FFFFFFF, with `*bufferSize` set to 0 and `*specSize` left
 *          alone; else #kuvStatusOk. */
KUV_API KuvStatus kuviFilterBorderGetSize(KuviSize kernelSize, KuviSize roiSize, Kuv32s dataType, Kuv32s kernelType, Kuv32s channels,
                                          Kuv32s* specSize, Kuv32s* bufferSize);

/** Keeps a kernel for a filter, as it is: it is neither normalised nor examined.
 *
 *  The block does not refer to the caller's array. The kernel may be kept again on the same block, with any arguments. The array may
 *  stand at the place where the block keeps it, 128 bytes behind the record's begin; otherwise the two must not overlap.
 *
 *  For `8u`, `16u` and `16s` with 1, 3 or 4 channels the block also gets each coefficient four times side by side, of `16s` times 2^-16;
 *  this version has no function that reads them.
 *
 *  @param kernel the coefficients, row by row
 *  @param kernelSize width and height of the kernel, at least 1 by 1
 *  @param dataType type of the samples: #kuvDataType8u, #kuvDataType16u, #kuvDataType16s or #kuvDataType32f
 *  @param channels 1 to 4
 *  @param roundMode 0, 1 or 2, and 16 more or not: kept, and of no effect on single-precision samples
 *  @param spec block of at least the size that kuviFilterBorderGetSize() gives for this kernel's size with #kuvDataType32f as kernel
 *         type: a size for #kuvDataType16s may be too small; any address
 *  @return #kuvStatusNullPtr if `kernel` or `spec` is null; #kuvStatusBadSize if the width or height is below 1; #kuvStatusBadDataType if
 *          `dataType` is none of the four; #kuvStatusBadChannels if `channels` is not 1 to 4; #kuvStatusBadRoundMode if `roundMode`
 *          without its bit 16 is not 0, 1 or 2; #kuvStatusRoundFlagSet, a warning, if that bit is set; else #kuvStatusOk. */
KUV_API KuvStatus kuviFilterBorderInit_32f(const Kuv32f* kernel, KuviSize kernelSize, Kuv32s dataType, Kuv32s channels, Kuv32s roundMode,
                                           KuviBorderKernel* spec);

/** Filters an image: each pixel becomes the sum of its neighbours, weighted by the kernel K of kw by kh coefficients.
 *
 *      dst(x, y) = sum over j = 0 ... kh - 1 and i = 0 ... kw - 1 of K[j*kw + i] * E(x - l + i, y - t + j)
 *
 *  with l = (kw - 1) / 2 and t = (kh - 1) / 2 rounded down: a correlation, the kernel is not turned. Pixels that it covers reach l to the
 *  left, t upward, r = kw - 1 - l to the right and b = kh - 1 - t downward.
 *
 *  E is the source, continued. Its known pixels are those of the region and, on each side whose flag is set in `borderType`, the l, t, r or
 *  b columns or rows beyond it, which are read from memory. Nothing else is. Beyond the known pixels E follows the rule in `borderType`,
 *  in columns and in rows:
 *
 *  - #kuvBorderClamp: the nearest known pixel.
 *  - #kuvBorderReflect: 0, 1, ... n - 1, n - 2, ... 1, 0 and so on for n known columns or rows; a single one stands for all.
 *  - #kuvBorderFill: `*borderValue`.
 *
 *  So an image in tiles that are larger than the kernel reaches, each with the flags of its sides inside the image, gives what the whole
 *  image gives: the same bits, in s8 and p8 if all tiles are more than 8 wider than the kernel.
 *
 *  All coefficients take part, those of 0 too: a NaN or an infinity below one of them gives NaN. No sum has other terms. With u = 2^-24 and
 *  n coefficients, and apart from overflow and underflow, the results differ by variant:
 *
 *  - px: products and sums in double precision, in the order of the formula, rounded to single precision at the end. The error is at
 *    most u times the result plus `n * 2^-53` times the sum of the terms' absolute values.
 *  - w7, and s8 and p8 unless width > kw + 8: in single precision. In each row of the kernel the products of even and of odd columns are
 *    summed up apart, then together, then added to the sum of the rows above.
 *  - s8, p8 and g9: in single precision, for eight columns of the kernel at a time, row by row, and the rest of the columns at the end;
 *    each of these sums is added to those before it. In g9, a kernel of one row has one sum for as many columns as eights make
 *    up, and one for the rest; and a kernel of one column the same with rows.
 *  - h9: as g9, each product fused with the addition that it goes into.
 *  - In w7 to h9 the error is at most `n*u / (1 - n*u)` times the sum of the terms' absolute values.
 *
 *  Step class B for the destination; a source's step need only be positive, as rows may lie on each other. Source and destination must not
 *  overlap. Any number of threads may use a kernel at once, each with a buffer of its own.
 *
 *  @param src the first pixel of the region
 *  @param srcStep row step of `src` in bytes
 *  @param dst the result
 *  @param dstStep row step of `dst` in bytes
 *  @param roiSize size of the region in pixels, at least 1 by 1
 *  @param borderType #kuvBorderClamp, #kuvBorderReflect or #kuvBorderFill, plus any of the four flags; or the four flags alone, 240
 *  @param borderValue a value for #kuvBorderFill; else not read
 *  @param spec a kernel that kuviFilterBorderInit_32f() has kept, for whatever samples and channels
 *  @param buffer as many bytes as kuviFilterBorderGetSize() tells for the kernel, the region, #kuvDataType32f and one channel, at any
 *         address and with any content
 *  @return #kuvStatusNullPtr if `src`, `dst`, `spec` or `buffer` is null, or if `borderValue` is null and the rule is #kuvBorderFill;
 *          #kuvStatusBadSize if the width or height is below 1; #kuvStatusBadStep if `srcStep` is below 1 or a row of `dst` has more
 *          bytes than its step; #kuvStatusBadBorder if `borderType` is above 255, or neither 240 nor a rule with or without flags; else
 *          #kuvStatusOk. */
KUV_API KuvStatus kuviFilterBorder_32f_C1R(const Kuv32f* src, Kuv32s srcStep, Kuv32f* dst, Kuv32s dstStep, KuviSize roiSize,
                                           Kuv32s borderType, const Kuv32f* borderValue, const KuviBorderKernel* spec, Kuv8u* buffer);
/** @} */

/** @defgroup resize Resizing
 *
 *  A plan tells for each column and each row of a destination where in the source it lies. It is made once, for the whole images;
 *  any number of threads may then render tiles of the destination by it, each with a buffer of its own.
 *  @{ */

/** Tells the size of the block for a resize plan.
 *
 *  With A(x) the next multiple of 32 from x on, the size is `4 * (1 + n) * A(width) + 4 * (1 + n) * A(height) + 256` for the
 *  destination's width and height: a position and n coefficients for each column and row. #kuvResizeLinear has n = 1. The other
 *  selectors are those of filters that this version makes no plans for: 1 has n = 0, 6 has 4, 8 has 2 and 16 has 6. With
 *  antialiasing, filters 2, 6 and 16 are widened: in each direction n is the number of samples that the filter reaches without it (2, 4
 *  or 6) times the source's extent divided by the destination's, that quotient rounded up; so #kuvResizeLinear has n = 2 where the
 *  direction does not shrink.
 *
 *  `initSize` is 64 and for making plans of other kinds; kuviResizeLinearInit_16s() needs no such memory.
 *
 *  @param srcSize size of the source in pixels: width and height at least 2 for the selectors 2 and 8, 4 for 6, 6 for 16, else 1
 *  @param dstSize size of the destination in pixels, at least 1 by 1
 *  @param interpolation #kuvResizeLinear, or 1, 6, 8 or 16
 *  @param antialiasing 0, or any other value for sizes of plans with antialiasing. Selectors 1 and 8 know none and are sized without.
 *  @param specSize receives the size of the plan's block in bytes
 *  @param initSize receives the size of the working memory in bytes
 *  @return #kuvStatusNullPtr if `specSize` or `initSize` is null; #kuvStatusNoOperation if a width or height is 0, with nothing written;
 *          #kuvStatusBadSize if one is below 1; #kuvStatusBadInterpolation if `interpolation` is none of 0, 1, 2, 6, 8 and 16;
 *          #kuvStatusInternal if it is 0; #kuvStatusBadSize if the source is below the filter's least size; #kuvStatusSizeOverflow if the
 *          size is 0x7FFFFFFF or more; #kuvStatusAntialiasIgnored if `antialiasing` is not 0 with selector 1 or 8, with the sizes
 *          given; else #kuvStatusOk. */
KUV_API KuvStatus kuviResizeGetSize_16s(KuviSize srcSize, KuviSize dstSize, Kuv32s interpolation, Kuv32u antialiasing, Kuv32s* specSize,
                                        Kuv32s* initSize);

/** Makes a plan of linear interpolation.
 *
 *  Pixels' centres correspond: destination column i lies at `p = (i + 0.5) * (s / d) - 0.5` in the source, s and d being the two widths
 *  divided by their greatest common divisor; rows likewise. The plan keeps `floor(p)`, which is -1 for p below 0, and
 *  `p - floor(p)` rounded to single precision. All is computed in double precision, operation by operation, with the same result in
 *  every variant.
 *
 *  The block holds 32-bit words from its first address on that is a multiple of 64: the identity 0x4B617389, 13,
 *  #kuvResizeLinear, 1, 1, 0 and four words of 1; then for rows and again for columns the source's extent, the destination's, both divided
 *  by their divisor, the places of positions and of fractions in bytes from the first word, three words of 0, the number of destination
 *  positions before the first source sample, and of those at or behind the last one; then, without gaps, the positions of rows and of
 *  columns and the fractions of rows and of columns. The plan does not refer to anything else, but must not be copied or moved.
 *
 *  @param srcSize size of the source in pixels, at least 2 by 2
 *  @param dstSize size of the destination in pixels, at least 1 by 1
 *  @param spec block of at least the size that kuviResizeGetSize_16s() gives, at any address
 *  @return #kuvStatusNullPtr if `spec` is null; #kuvStatusNoOperation if a width or height is 0; #kuvStatusBadSize if one is below 1 or
 *          one of the source below 2; else #kuvStatusOk. */
KUV_API KuvStatus kuviResizeLinearInit_16s(KuviSize srcSize, KuviSize dstSize, Kuv8u* spec);

/** Tells the size of the buffer for rendering a tile of a destination.
 *
 *  With w and h the tile's width and height, not above those of the plan's destination, and A(x) the next multiple of 32 from x on, the
 *  size is `A(4*h) + A(4*w) + 2 * A(4 * numChannels * w) + 64`.
 *
 *  @param spec a plan
 *  @param dstSize size of the tile in pixels, or of the largest of several, at least 1 by 1
 *  @param numChannels 1, 3 or 4; kuviResizeLinear_16s_C3R() takes a buffer for 3
 *  @param bufferSize receives the size in bytes
 *  @return #kuvStatusNullPtr if `spec` or `bufferSize` is null; #kuvStatusNoOperation if the width or height is 0;
 *          #kuvStatusBadContext if `spec` holds no plan; #kuvStatusBadChannelCount if `numChannels` is none of the three;
 *          #kuvStatusBadSize if the width or height is below 1; #kuvStatusSizeOverflow if the size is 0x7FFFFFFF or more;
 *          #kuvStatusSizeWarning if the tile is wider or higher than the destination, with the size for what is in it; else
 *          #kuvStatusOk. */
KUV_API KuvStatus kuviResizeGetBufferSize_16s(const Kuv8u* spec, KuviSize dstSize, Kuv32u numChannels, Kuv32s* bufferSize);

/** Renders a tile of a resized image by linear interpolation.
 *
 *  With the plan's position x and fraction fx of a destination column, y and fy of a row, and S the source, a sample is
 *  `round(a + (b - a)*fy)`, where `a = S(x, y) + (S(x+1, y) - S(x, y))*fx` and b the same in row y + 1, limited to -32768 to 32767. Where a
 *  position lies before the first source sample, or at or behind the last one, in a direction whose flag is not set, that sample is taken
 *  for both: rows above and below repeat the source's first and last row, columns at the sides its first and last column. Where the flag
 *  is set, the formula holds there, too, and reads what lies beyond the image in memory.
 *
 *  px computes sums in double precision. a and b are rounded to single precision, but not in the rows that repeat one row of the source,
 *  which are interpolated once. The other variants compute in single precision throughout; w7, s8, p8 and g9 round each product, h9 fuses
 *  it with the sum, and in both ways a sample differs from that of px by 1 at most. The result is rounded in the processor's mode,
 *  which is to the nearest integer and halves to the even one unless the caller has changed it. A pixel does not depend on the tile that it
 *  is rendered in: only the flags of sides at which the image ends matter.
 *
 *  `src` is the source pixel that belongs to the tile: column `floor(dstOffset.x * s / d)` and row `floor(dstOffset.y * s / d)` of
 *  the source, with the extents s and d of each direction, exactly. What is read reaches from the lowest position of the tile's columns
 *  and rows to the highest one and 1 beyond, which may begin one before that pixel, limited to the source where a flag is
 *  not set. Nothing else is read, to the right of the last sample neither.
 *
 *  A tile that is larger than what the destination has from `dstOffset` on is cut off there, rendered, and reported.
 *
 *  Steps have to be even, and may be 0 or negative. What destination rows leave where they share memory is not stated. `src` and `dst`
 *  must not overlap.
 *
 *  @param src the source, as above; three interleaved samples a pixel
 *  @param srcStep row step of `src` in bytes
 *  @param dst the tile's first pixel; three interleaved samples a pixel
 *  @param dstStep row step of `dst` in bytes
 *  @param dstOffset the tile's first pixel in the whole destination
 *  @param dstSize size of the tile in pixels, at least 1 by 1
 *  @param border #kuvBorderClamp, alone or with flags of sides beyond which samples are in memory: #kuvBorderHaveTop,
 *         #kuvBorderHaveBottom, #kuvBorderHaveLeft, #kuvBorderHaveRight; or all four flags alone. Within the image, flags make no
 *         difference.
 *  @param borderValue not used; any pointer
 *  @param spec a plan
 *  @param buffer as many bytes as kuviResizeGetBufferSize_16s() tells for the tile and three channels, at any address; one for each
 *         call under way
 *  @return #kuvStatusBadBorder if `border` is none of those; #kuvStatusNullPtr if `src`, `dst`, `spec` or `buffer` is null;
 *          #kuvStatusNoOperation if the width or height is 0; #kuvStatusBadContext if `spec` holds no plan; #kuvStatusBadSize if the width
 *          or height is below 1; #kuvStatusBadStep if a step is odd; #kuvStatusOutOfRange if `dstOffset` is not in the destination;
 *          #kuvStatusInternal if the plan is one with antialiasing; #kuvStatusBadContext if it is not for linear interpolation;
 *          #kuvStatusSizeWarning if the tile was cut off; else #kuvStatusOk. */
KUV_API KuvStatus kuviResizeLinear_16s_C3R(const Kuv16s* src, Kuv32s srcStep, Kuv16s* dst, Kuv32s dstStep, KuviPoint dstOffset,
                                           KuviSize dstSize, Kuv32u border, const Kuv16s* borderValue, const Kuv8u* spec, Kuv8u* buffer);
/** @} */

/** @defgroup segment Segmentation
 *  @{ */

/** Tells the size of the buffer that kuviLabelMarkers_16u_C1IR() takes: `6 * width * height + 32` bytes.
 *
 *  A size beyond 32 bits wraps around; such an image cannot be labelled in one call.
 *
 *  @param roiSize size of the image in pixels, at least 1 by 1
 *  @param bufferSize gets the size in bytes
 *  @return #kuvStatusNullPtr if `bufferSize` is null; #kuvStatusBadSize if the width or height is below 1; else #kuvStatusOk. */
KUV_API KuvStatus kuviLabelMarkersGetBufferSize_16u_C1R(KuviSize roiSize, Kuv32s* bufferSize);

/** Gives every connected group of non-zero pixels a label of its own, in place.
 *
 *  Pixels that are not 0 are markers, whatever their values; pixels that are 0 stay 0. Markers belong to one group if they are
 *  neighbours in the sense of `norm`, or by way of others that are. Groups are numbered from 0 in the order in which a scan, row by
 *  row from the top and in a row from the left, meets their first pixels, and every pixel of group n becomes
 *  `minLabel + n % (maxLabel - minLabel + 1)`: with more groups than labels, labels are used again. All variants agree.
 *
 *  Step class B. The step has to be even.
 *
 *  Source: M. Rem's algorithm for disjoint sets, in E. W. Dijkstra, "A Discipline of Programming", Prentice-Hall (1976), chapter
 *  23, on runs of pixels.
 *
 *  @param srcDst the markers, which become labels
 *  @param srcDstStep row step of `srcDst` in bytes
 *  @param roiSize size of the image in pixels, at least 1 by 1
 *  @param minLabel the first label, at least 1
 *  @param maxLabel the last label, `minLabel` to 65534
 *  @param norm #kuvLabelNeighbours8 or #kuvLabelNeighbours4
 *  @param count gets the number of groups, which may be above that of labels
 *  @param buffer as many bytes as kuviLabelMarkersGetBufferSize_16u_C1R() tells, at any address and with any content
 *  @return #kuvStatusNullPtr if `srcDst`, `buffer` or `count` is null; #kuvStatusBadSize if the width or height is below 1;
 *          #kuvStatusBadStep if `srcDstStep` is below the row's bytes; #kuvStatusStepNotMultiple if it is odd; #kuvStatusBadArg if
 *          `minLabel` is below 1 or above `maxLabel`, `maxLabel` above 65534, or `norm` neither of the two; else #kuvStatusOk. */
KUV_API KuvStatus kuviLabelMarkers_16u_C1IR(Kuv16u* srcDst, Kuv32s srcDstStep, KuviSize roiSize, Kuv32s minLabel, Kuv32s maxLabel,
                                            Kuv32s norm, Kuv32s* count, Kuv8u* buffer);
/** @} */

/** @defgroup transform Transforms
 *  @{ */

/** What a Fourier transform is multiplied by: the `flag` of kuvsDFTGetSize_C_32f() and kuvsDFTInit_C_32f(). */
enum {
    kuvDftScaleForward = 1, /**< the forward transform by 1 / length */
    kuvDftScaleInverse = 2, /**< the inverse transform by 1 / length, the forward one by nothing */
    kuvDftScaleBoth = 4,    /**< both by 1 / sqrt(length) */
    kuvDftScaleNone = 8     /**< neither */
};

/** Tells the sizes of the blocks that a Fourier transform of `length` values takes, in bytes.
 *
 *  Each size includes what aligning the block costs: blocks may stand at any address. They hold what they hold. 0 stands for a block
 *  that is not used and may be null. Sizes depend on the variant of the library (see kuvSetCpuFeatures()): size, plan and runs
 *  have to come from one.
 *
 *  Any length is fast whose factors are small:
 *
 *  - up to 16, and powers of two up to 2^26 (px) or 2^27 (all other variants)
 *  - products of factors of which all but the largest are at most 75 (px) or 50; the largest may be as long as that, or, in all variants
 *    but px, 150 if the length is a multiple of 4
 *  - primes up to 73 (px) or 47, by the definition
 *  - others below 0x4000000 (px: up to 0x2000000), by a convolution with a chirp, in a transform of at least twice the length
 *
 *  An error, once the results have been found not to be null and the length to be above 0, leaves in the results what has been added
 *  up by then: with #kuvStatusBadFlag 640, 0 and 0. A size past 32 bits wraps: of the longest chirps, in all variants but px, `specSize` is
 *  negative, and they are out of reach. In px sizes are given for chirps above 0x2000000 too, without an error, but kuvsDFTInit_C_32f()
 *  makes no plan of them.
 *
 *  @param length number of complex values, at least 1
 *  @param flag #kuvDftScaleForward, #kuvDftScaleInverse, #kuvDftScaleBoth or #kuvDftScaleNone
 *  @param hint anything: not used
 *  @param specSize receives the size of the plan
 *  @param initSize receives the size of the buffer of kuvsDFTInit_C_32f()
 *  @param workSize receives the size of the buffer of kuvsDFTFwd_CToC_32f()
 *  @return #kuvStatusNullPtr if `specSize`, `initSize` or `workSize` is null; #kuvStatusBadSize if `length` is below 1; #kuvStatusBadFlag
 *          if `flag` is none of the four; #kuvStatusBadOrder if `length` is a larger power of two than above; #kuvStatusBadSize if it is
 *          another length above 0x7ffffff, or one of the last kind and not below 0x4000000; else #kuvStatusOk. */
KUV_API KuvStatus kuvsDFTGetSize_C_32f(Kuv32s length, Kuv32s flag, Kuv32s hint, Kuv32s* specSize, Kuv32s* initSize, Kuv32s* workSize);

/** Makes the plan of a Fourier transform of `length` values.
 *
 *  The plan lies within its block and refers to nothing else: `initBuffer` may be released. It cannot be moved. After an error the block
 *  holds part of a plan, which must not be run, though its identity may be in place.
 *
 *  The factors of the transform are rounded to single precision. So is what it is multiplied by: 1 / `length` is divided in double
 *  precision and rounded in px, and divided in single precision in all other variants; 1 / sqrt(`length`) is computed in double precision.
 *
 *  @param length number of complex values, at least 1
 *  @param flag #kuvDftScaleForward, #kuvDftScaleInverse, #kuvDftScaleBoth or #kuvDftScaleNone
 *  @param hint anything: not used
 *  @param spec block for the plan, of at least the size that kuvsDFTGetSize_C_32f() gives; any address
 *  @param initBuffer memory of at least the size that kuvsDFTGetSize_C_32f() gives; any address; may be null for lengths below 17 and
 *         powers of two up to 1024
 *  @return #kuvStatusNullPtr if `spec` is null; #kuvStatusBadSize if `length` is below 1; #kuvStatusBadFlag if `flag` is none of the four;
 *          #kuvStatusBadOrder if `length` is too large a power of two; #kuvStatusBadSize if it is another length above 0x7ffffff;
 *          #kuvStatusNullPtr if `initBuffer` is null where it is needed; #kuvStatusBadSize if `length` takes a chirp and is not below
 *          0x4000000; #kuvStatusBadOrder, in px, if it takes a chirp and is above 0x2000000; else #kuvStatusOk. */
KUV_API KuvStatus kuvsDFTInit_C_32f(Kuv32s length, Kuv32s flag, Kuv32s hint, Kuv8u* spec, Kuv8u* initBuffer);

/** Transforms complex values, real and imaginary parts in planes of their own:
 *  `dst[k] = scale * sum of src[n] * exp(-2 * pi * i * k * n / length) over all n`, for k and n from 0 to length - 1.
 *
 *  Exchanging real and imaginary parts both of `src` and of `dst` makes it the inverse transform.
 *
 *  Relative to the exact transform, the root mean square error is at most `(3 + 0.3 * log2(length)) * 2^-24`; with a prime factor f
 *  above 13, `0.4 * sqrt(f) * 2^-24` more; with a chirp, twice that of the longer transform. Variants differ in the low bits. Infinite
 *  values, NaN and values whose sums overflow make no result reliable.
 *
 *  A plane of `dst` may be that of the same part of `src`, one of them or both. Planes may stand at any address. Any number of threads
 *  may use a plan at once, each with a buffer of its own.
 *
 *  Sources: J. W. Cooley and J. W. Tukey, "An Algorithm for the Machine Calculation of Complex Fourier Series", Mathematics of Computation
 *  19 (1965); L. I. Bluestein, "A Linear Filtering Approach to the Computation of Discrete Fourier Transform", IEEE Transactions on Audio
 *  and Electroacoustics 18 (1970); C. M. Rader, "Discrete Fourier Transforms When the Number of Data Samples Is Prime", Proceedings of
 *  the IEEE 56 (1968).
 *
 *  @param srcRe real parts of the values
 *  @param srcIm imaginary parts of the values
 *  @param dstRe real parts of the transform
 *  @param dstIm imaginary parts of the transform
 *  @param spec a plan that kuvsDFTInit_C_32f() has made, at the address that it was given
 *  @param buffer memory of at least the size that kuvsDFTGetSize_C_32f() gives; any address; may be null if that is 0
 *  @return #kuvStatusNullPtr if `spec` is null; #kuvStatusBadContext if it is no plan; #kuvStatusNullPtr if `srcRe`, `srcIm`, `dstRe` or
 *          `dstIm` is null, or `buffer` where it is needed; else #kuvStatusOk. */
KUV_API KuvStatus kuvsDFTFwd_CToC_32f(const Kuv32f* srcRe, const Kuv32f* srcIm, Kuv32f* dstRe, Kuv32f* dstIm, const Kuv8u* spec,
                                      Kuv8u* buffer);

/** @name Cosine transforms of 8x8 blocks
 *  @{ */
/** The orthonormal two-dimensional cosine transform (DCT-II) of 64 samples that stand one after the other, row by row, and its inverse, in
 *  place:
 *
 *      forward: F(u, v) = c(u) c(v) / 4 * sum over x, y of f(x, y) cos((2x + 1) u pi / 16) cos((2y + 1) v pi / 16)
 *      inverse: f(x, y) = 1 / 4 * sum over u, v of c(u) c(v) F(u, v) cos((2x + 1) u pi / 16) cos((2y + 1) v pi / 16)
 *
 *  with c(0) = 1 / sqrt(2), else 1; rounded to integers. F(u, v) stands at `srcDst[8 * v + u]`, and F(0, 0) is the sum of the samples
 *  divided by 8.
 *
 *  The arithmetic is fixed-point. Forward, results are within 1 of the exact ones for samples of -256 to 255; the inverse meets
 *  the limits of IEEE Std 1180-1990 for the peak error (1), the overall mean square error (0.02) and the overall mean error (0.0015). w7 to
 *  h9 agree in all bits. They differ from px by 1 at most as long as intermediate values stay in the range: those have 16 bits and, in px,
 *  eight times the size of the samples, so that 8 samples in a row, or 8 coefficients in a column, may add up to +-4095. Beyond that w7 to
 *  h9 saturate and px wraps around, as it also does forward with results beyond +-1023 but for F(u, 0) and F(u, 4).
 *
 *  Source: N. Ahmed, T. Natarajan, K. R. Rao, "Discrete Cosine Transform", IEEE Transactions on Computers C-23 (1974) 90-93. The butterfly
 *  of px splits even and odd outputs as W.-H. Chen, C. H. Smith, S. C. Fralick, "A Fast Computational Algorithm for the Discrete Cosine
 *  Transform", IEEE Transactions on Communications COM-25 (1977) 1004-1009.
 *
 *  @param srcDst 64 samples, at any address
 *  @return #kuvStatusNullPtr if `srcDst` is null; else #kuvStatusOk. */
KUV_API KuvStatus kuviDCT8x8Fwd_16s_C1I(Kuv16s* srcDst);
KUV_API KuvStatus kuviDCT8x8Inv_16s_C1I(Kuv16s* srcDst);
/** @} */

/** Puts the coefficients of an 8x8 block from the zigzag scan of JPEG (ITU-T T.81, figure A.6) into rows.
 *
 *  `dst[i] = src[z(i)]`, where z is the position in the scan of the coefficient at row i / 8 and column i % 8: 0, 1, 5, 6, 14, 15, 27, 28
 *  in the first row.
 *
 *  @param src 64 coefficients in the order of the scan, at any address
 *  @param dst 64 coefficients row by row, at any address; must not overlap `src`
 *  @return #kuvStatusNullPtr if `src` or `dst` is null; else #kuvStatusOk. */
KUV_API KuvStatus kuviZigzagInv8x8_16s_C1(const Kuv16s* src, Kuv16s* dst);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
