// The layout of a resize plan: a header at the first multiple of 64 in the caller's block, and the tables of both axes behind it.
#pragma once

#include "kuvcv.h"

namespace kuv {
namespace {

struct ResizeAxis {
    Kuv32s srcLength;
    Kuv32s dstLength;
    Kuv32s srcReduced;
    Kuv32s dstReduced;
    Kuv32u positions;  // this and the next two: bytes from the header
    Kuv32u fractions;
    Kuv32u packed;
    Kuv32u reserved[2];
    Kuv32s leadCount;
    Kuv32s tailCount;
};

// Programs read these words; those that nothing here reads are kept for them.
struct ResizeHeader {
    Kuv32u magic;
    Kuv32s dataKind;
    Kuv32s interpolation;
    Kuv32s halfTaps;
    Kuv32u rowBuffers;
    Kuv32u antialiasing;
    Kuv32u reserved[4];
    ResizeAxis vertical;
    ResizeAxis horizontal;
};
static_assert(sizeof(ResizeAxis) == 44 && sizeof(ResizeHeader) == 128);

constexpr Kuv32u resizeMagic = 0x4B617389;
constexpr Kuv32s resizeDataKind = 13;

}  // namespace
}  // namespace kuv
