// The size and the line size of the largest cache, asked once per process.
#include "core/cache.hpp"

#include "core/features.hpp"

namespace kuv {

Kuv32s cacheBytes = -1;
Kuv32s cacheQueryStatus = cacheNeverQueried;
Kuv32s cacheLineBytes = -1;

namespace {

struct Descriptor {
    unsigned char code;
    Kuv32s bytes;
};

// Cache descriptors of leaf 2, largest cache first.
constexpr Descriptor descriptors[] = {
    {0xEC, 25165824}, {0xEB, 18874368}, {0x4D, 16777216}, {0xEA, 12582912}, {0x4C, 12582912}, {0xE4, 8388608},
    {0xDE, 8388608},  {0x4B, 8388608},  {0x47, 8388608},  {0x4E, 6291456},  {0x4A, 6291456},  {0xE3, 4194304},
    {0xDD, 4194304},  {0xD8, 4194304},  {0x49, 4194304},  {0x29, 4194304},  {0x46, 4194304},  {0x48, 3145728},
    {0xE2, 2097152},  {0xDC, 2097152},  {0xD7, 2097152},  {0xD2, 2097152},  {0x25, 2097152},  {0x7D, 2097152},
    {0x85, 2097152},  {0x45, 2097152},  {0xD6, 1048576},  {0xD1, 1048576},  {0x23, 1048576},  {0x87, 1048576},
    {0x7C, 1048576},  {0x78, 1048576},  {0x84, 1048576},  {0x44, 1048576},  {0xD0, 524288},   {0x22, 524288},
    {0x7B, 524288},   {0x80, 524288},   {0x86, 524288},   {0x3E, 524288},   {0x7F, 524288},   {0x83, 524288},
    {0x43, 524288},   {0x3D, 393216},   {0x21, 262144},   {0x7A, 262144},   {0x82, 262144},   {0x3C, 262144},
    {0x3F, 262144},   {0x42, 262144},   {0x3A, 196608},   {0x79, 131072},   {0x39, 131072},   {0x3B, 131072},
    {0x41, 131072},
};

struct Cache {
    Kuv32s bytes;
    Kuv32s line;
};

Cache largestOfLeaf4(const Processor& processor) {
    Cache largest = {0, 0};
    for (Kuv32u subleaf = 0; subleaf < 32; ++subleaf) {
        const CpuidWords words = processor.cpuid(4, subleaf);
        const Kuv32u kind = words.eax & 0x1F;
        constexpr Kuv32u none = 0, instruction = 2;
        if (kind == none) break;
        if (kind == instruction) continue;
        const Kuv32u line = (words.ebx & 0xFFF) + 1;
        const Kuv32u bytes = ((words.ebx >> 22) + 1) * ((words.ebx >> 12 & 0x3FF) + 1) * line * (words.ecx + 1);
        if (static_cast<Kuv32s>(bytes) > largest.bytes) largest = {static_cast<Kuv32s>(bytes), static_cast<Kuv32s>(line)};
    }
    return largest;
}

Cache largestOfLeaf2(const Processor& processor) {
    const CpuidWords words = processor.cpuid(2, 0);
    if ((words.eax & 0xFF) != 1) return {0, 0};
    bool present[256] = {};
    const Kuv32u registers[] = {words.eax & 0xFFFFFF00, words.ebx, words.ecx, words.edx};
    for (const Kuv32u each : registers) {
        if (each & 0x80000000) continue;  // holds no descriptors
        for (int shift = 0; shift < 32; shift += 8) present[each >> shift & 0xFF] = true;
    }
    for (const Descriptor& each : descriptors) {
        if (present[each.code]) return {each.bytes, 0};
    }
    return {0, 0};
}

KuvStatus queryOnce(const Processor& processor, Kuv32s* size) {
    const Kuv32u maximumLeaf = processor.hasCpuid() ? processor.cpuid(0, 0).eax : 0;
    if (maximumLeaf < 2 || !vendorIsTested(processor)) {
        storeShared(cacheQueryStatus, Kuv32s{kuvStatusNoCpuid});
        *size = loadShared(cacheBytes);
        storeShared(cacheLineBytes, Kuv32s{0});
        return kuvStatusNoCpuid;
    }
    const Cache cache = maximumLeaf >= 4 ? largestOfLeaf4(processor) : largestOfLeaf2(processor);
    const KuvStatus status = cache.bytes != 0 ? kuvStatusOk : kuvStatusNoCacheInfo;
    // Status and line first: a size that is not negative tells other threads that all three stand.
    storeShared(cacheQueryStatus, Kuv32s{status});
    storeShared(cacheLineBytes, cache.line);
    storeShared(cacheBytes, cache.bytes);
    *size = cache.bytes;
    return status;
}

}  // namespace

KuvStatus queryCacheBytes(const Processor& processor, Kuv32s* size) {
    if (size == nullptr) return kuvStatusNullPtr;
    const Kuv32s known = loadShared(cacheBytes);
    if (known >= 0) {
        *size = known;
        return loadShared(cacheQueryStatus);
    }
    const KuvStatus status = loadShared(cacheQueryStatus);
    if (status == cacheNeverQueried) return queryOnce(processor, size);
    *size = known;
    if (status != kuvStatusOk) storeShared(cacheLineBytes, Kuv32s{0});
    return status;
}

void queryCacheLine(const Processor& processor, Kuv32s* line) {
    if (loadShared(cacheLineBytes) < 0 && loadShared(cacheBytes) < 0) {
        Kuv32s size;
        const KuvStatus status = queryCacheBytes(processor, &size);
        *line = status == kuvStatusOk ? loadShared(cacheLineBytes) : 0;
        return;
    }
    *line = loadShared(cacheLineBytes);
}

KuvStatus queryCacheBytes(Kuv32s* size) { return queryCacheBytes(hardware, size); }
void queryCacheLine(Kuv32s* line) { queryCacheLine(hardware, line); }

}  // namespace kuv
