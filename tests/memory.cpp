// Aligned blocks and images: sizes, alignment, the word before a block, and every way to fail.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "core/dispatch.hpp"
#include "support/calls.hpp"

namespace {

using kuvtest::heapWatch;

constexpr Kuv32s largestLength = 0x7FFFFFB7;

struct Heap {
    int allocations;
    std::size_t bytes;  // of the last one
};

// What a call asks of the heap; with `fail`, the heap has no room.
template <class Call>
Heap heapOf(Call&& call, bool fail = false) {
    heapWatch = {};
    heapWatch.active = true;
    heapWatch.fail = fail;
    call();
    heapWatch.active = false;
    heapWatch.fail = false;
    return {heapWatch.allocations, heapWatch.lastBytes};
}

std::uintptr_t addressOf(const void* pointer) { return reinterpret_cast<std::uintptr_t>(pointer); }

struct ImageAllocator {
    const char* name;
    void* (*allocate)(Kuv32s width, Kuv32s height, Kuv32s* step);
    int pixelBytes;
};

#define ALLOCATOR(suffix, pixelBytes) \
    {"kuviMalloc_" #suffix,           \
     [](Kuv32s width, Kuv32s height, Kuv32s* step) -> void* { return kuviMalloc_##suffix(width, height, step); }, pixelBytes}

constexpr ImageAllocator imageAllocators[] = {
    ALLOCATOR(8u_C1, 1),  ALLOCATOR(8u_C3, 3),   ALLOCATOR(8u_AC4, 4), ALLOCATOR(16u_C1, 2),
    ALLOCATOR(16u_C3, 6), ALLOCATOR(16u_C4, 8),  ALLOCATOR(16u_AC4, 8), ALLOCATOR(16s_C1, 2),
    ALLOCATOR(16s_C3, 6), ALLOCATOR(32s_C1, 4),  ALLOCATOR(32f_C1, 4), ALLOCATOR(32f_C3, 12),
};

TEST(Memory, BlocksAreAlignedAndWritableToTheirEnds) {
    for (int length = 1; length < 300; ++length) {
        auto* const block = static_cast<unsigned char*>(kuvMalloc(length));
        ASSERT_NE(block, nullptr);
        EXPECT_EQ(addressOf(block) % 64, 0u);
        std::memset(block, 0xA5, static_cast<std::size_t>(length));
        kuvFree(block);
    }
}

TEST(Memory, WordBeforeABlockIsWhatTheHeapGave) {
    std::vector<void*> blocks;
    for (int i = 0; i < 500; ++i) {
        void* const block = kuvMalloc(1 + i * 7 % 200);
        void* raw;
        std::memcpy(&raw, static_cast<char*>(block) - sizeof(void*), sizeof raw);
        const std::uintptr_t gap = addressOf(block) - addressOf(raw);
        EXPECT_GE(gap, 8u);
        EXPECT_LE(gap, 71u);
        EXPECT_EQ(addressOf(block), (addressOf(raw) + 71) & ~std::uintptr_t{63}) << "the first such place";
        blocks.push_back(block);
    }
    for (void* each : blocks) kuvFree(each);
}

TEST(Memory, BlockCosts72Bytes) {
    if (!kuvtest::heapIsWatched) GTEST_SKIP() << "the sanitizer has the heap";
    for (const Kuv32s length : {1, 2, 63, 64, 65, 1000, 1 << 20}) {
        void* block = nullptr;
        const Heap heap = heapOf([&] { block = kuvMalloc(length); });
        EXPECT_EQ(heap.allocations, 1);
        EXPECT_EQ(heap.bytes, static_cast<std::size_t>(length) + 72);
        const Heap release = heapOf([&] { kuvFree(block); });
        EXPECT_EQ(release.allocations, 0);
        EXPECT_EQ(heapWatch.releases, 1);
    }
}

TEST(Memory, LengthsOutOfRangeGiveNullWithoutAskingTheHeap) {
    for (const Kuv32s length : {0, -1, -64, -72, INT32_MIN, largestLength + 1, INT32_MAX - 1, INT32_MAX}) {
        const Heap heap = heapOf([&] { EXPECT_EQ(kuvMalloc(length), nullptr) << length; });
        EXPECT_EQ(heap.allocations, 0) << length;
    }
}

TEST(Memory, LargestLengthAsksTheHeap) {
    if (!kuvtest::heapIsWatched) GTEST_SKIP() << "the sanitizer has the heap";
    const Heap heap = heapOf([&] { EXPECT_EQ(kuvMalloc(largestLength), nullptr); }, true);
    EXPECT_EQ(heap.allocations, 1);
    EXPECT_EQ(heap.bytes, 0x7FFFFFFFu);
}

TEST(Memory, NoRoomIsNull) {
    if (!kuvtest::heapIsWatched) GTEST_SKIP() << "the sanitizer has the heap";
    heapOf([&] {
        EXPECT_EQ(kuvMalloc(10), nullptr);
        EXPECT_EQ(kuvsMalloc_8u(10), nullptr);
        EXPECT_EQ(kuvsMalloc_32f(10), nullptr);
    }, true);
    for (const ImageAllocator& each : imageAllocators) {
        Kuv32s step = -1;
        const Heap heap = heapOf([&] { EXPECT_EQ(each.allocate(10, 10, &step), nullptr) << each.name; }, true);
        EXPECT_EQ(heap.allocations, 1);
        EXPECT_EQ(step, (10 * each.pixelBytes + 63) / 64 * 64) << each.name;
    }
}

TEST(Memory, NullIsIgnored) {
    for (const auto release : {kuvFree, kuviFree, kuvsFree}) {
        heapOf([&] { release(nullptr); });
        EXPECT_EQ(heapWatch.releases, 0);
    }
}

TEST(Memory, AnyBlockGoesBackByAnyRelease) {
    for (const auto release : {kuvFree, kuviFree, kuvsFree}) {
        const auto allocateAndRelease = [&] {
            release(kuvMalloc(100));
            release(kuvsMalloc_8u(100));
            release(kuvsMalloc_32f(100));
            for (const ImageAllocator& each : imageAllocators) {
                Kuv32s step;
                release(each.allocate(10, 10, &step));
            }
        };
        // A sanitizer, which has the heap then, finds what is not released by itself.
        if (!kuvtest::heapIsWatched) {
            allocateAndRelease();
            continue;
        }
        EXPECT_EQ(heapOf(allocateAndRelease).allocations, 3 + static_cast<int>(std::size(imageAllocators)));
        EXPECT_EQ(heapWatch.releases, heapWatch.allocations);
    }
}

TEST(Memory, AlignPtrRoundsUp) {
    for (std::uintptr_t address : {std::uintptr_t{0}, std::uintptr_t{1}, std::uintptr_t{63}, std::uintptr_t{64}, std::uintptr_t{65},
                                   std::uintptr_t{0x7FFFFFFFFFFF}, ~std::uintptr_t{0}}) {
        for (int power = 0; power < 31; ++power) {
            const std::uintptr_t alignment = std::uintptr_t{1} << power;
            const std::uintptr_t wanted = (address + alignment - 1) / alignment * alignment;
            if (address + alignment - 1 < address) continue;  // past the last address
            EXPECT_EQ(addressOf(kuvAlignPtr(reinterpret_cast<void*>(address), 1 << power)), wanted) << address << " to " << alignment;
        }
    }
}

TEST(Memory, AlignPtrChecksNothing) {
    const auto align = [](std::uintptr_t address, Kuv32s to) { return addressOf(kuvAlignPtr(reinterpret_cast<void*>(address), to)); };
    for (const std::uintptr_t address : {std::uintptr_t{0}, std::uintptr_t{1}, std::uintptr_t{0x123456789A}, ~std::uintptr_t{0}}) {
        EXPECT_EQ(align(address, 1), address);
        EXPECT_EQ(align(address, 0), 0u);
        for (const Kuv32s to : {3, 6, 7, 100, -1, -2, -64, -65, INT32_MIN, INT32_MAX}) {
            const std::uintptr_t mask = static_cast<std::uintptr_t>(Kuv64s{to}) - 1;  // negative ones extended by their sign
            EXPECT_EQ(align(address, to), address + ((0 - (address & mask)) & mask)) << address << " to " << to;
        }
    }
    EXPECT_EQ(align(~std::uintptr_t{0}, 64), 0u) << "the last address wraps";
}

TEST(Memory, Signals) {
    for (const Kuv32s length : {0, -1, INT32_MIN}) {
        EXPECT_EQ(kuvsMalloc_8u(length), nullptr);
        EXPECT_EQ(kuvsMalloc_32f(length), nullptr);
    }
    for (const Kuv32s length : {largestLength + 1, INT32_MAX}) EXPECT_EQ(kuvsMalloc_8u(length), nullptr);
    // Four bytes a sample: above 0x7FFFFFFF bytes, within the block's 72, and where 32 bits would wrap to a small number.
    for (const Kuv32s length : {0x1FFFFFEE, 0x1FFFFFFF, 0x20000000, 0x40000000, 0x40000001, INT32_MAX}) {
        const Heap heap = heapOf([&] { EXPECT_EQ(kuvsMalloc_32f(length), nullptr) << length; });
        EXPECT_EQ(heap.allocations, 0) << length;
    }
    for (const Kuv32s length : {1, 2, 15, 16, 17, 1000}) {
        Kuv8u* const bytes = kuvsMalloc_8u(length);
        Kuv32f* const reals = kuvsMalloc_32f(length);
        EXPECT_EQ(addressOf(bytes) % 64, 0u);
        EXPECT_EQ(addressOf(reals) % 64, 0u);
        std::memset(bytes, 1, static_cast<std::size_t>(length));
        std::memset(reals, 1, static_cast<std::size_t>(length) * 4);
        kuvsFree(bytes);
        kuvsFree(reals);
    }
    if (!kuvtest::heapIsWatched) return;
    EXPECT_EQ(heapOf([] { kuvsMalloc_8u(1000); }, true).bytes, 1072u);
    EXPECT_EQ(heapOf([] { kuvsMalloc_32f(1000); }, true).bytes, 4072u);
    EXPECT_EQ(heapOf([] { kuvsMalloc_32f(0x1FFFFFED); }, true).bytes, 0x7FFFFFB4u + 72);
}

TEST(Memory, Images) {
    for (const ImageAllocator& each : imageAllocators) {
        for (const Kuv32s width : {1, 2, 5, 16, 21, 22, 63, 64, 65, 100, 1000}) {
            for (const Kuv32s height : {1, 3, 50}) {
                SCOPED_TRACE(testing::Message() << each.name << " " << width << " x " << height);
                Kuv32s step = -1;
                void* image = nullptr;
                const Heap heap = heapOf([&] { image = each.allocate(width, height, &step); });
                ASSERT_NE(image, nullptr);
                EXPECT_EQ(addressOf(image) % 64, 0u);
                EXPECT_EQ(step, (width * each.pixelBytes + 63) / 64 * 64);
                if (kuvtest::heapIsWatched) {
                    EXPECT_EQ(heap.bytes, static_cast<std::size_t>(step * height) + 72);
                }
                std::memset(image, 0x5A, static_cast<std::size_t>(step * height));
                kuviFree(image);
            }
        }
    }
}

TEST(Memory, KnownSteps) {
    Kuv32s step = -1;
    kuviFree(kuviMalloc_8u_C1(1, 1, &step));
    EXPECT_EQ(step, 64);
    kuviFree(kuviMalloc_8u_C3(65, 1, &step));
    EXPECT_EQ(step, 256);
    EXPECT_EQ(kuviMalloc_16u_C1(100000, 100000, &step), nullptr);
    EXPECT_EQ(step, 200000);
    EXPECT_EQ(kuviMalloc_32f_C1(0, 10, &step), nullptr);
    EXPECT_EQ(step, 0);
    EXPECT_EQ(kuviMalloc_32f_C1(10, 10, nullptr), nullptr);
}

TEST(Memory, ImageWithoutAStepIsNullInAnyCase) {
    for (const ImageAllocator& each : imageAllocators) {
        for (const Kuv32s width : {10, 0, INT32_MAX}) {
            const Heap heap = heapOf([&] { EXPECT_EQ(each.allocate(width, 10, nullptr), nullptr) << each.name; });
            EXPECT_EQ(heap.allocations, 0);
        }
    }
}

TEST(Memory, BadImageSizesGiveStep0) {
    for (const ImageAllocator& each : imageAllocators) {
        constexpr KuviSize sizes[] = {{0, 10}, {10, 0}, {-1, 10}, {10, -1}, {0, 0}, {-5, -5}, {INT32_MIN, 1}, {1, INT32_MIN},
                                      {INT32_MAX, 0}, {0, INT32_MAX}};
        for (const KuviSize size : sizes) {
            Kuv32s step = 4711;
            const Heap heap = heapOf([&] { EXPECT_EQ(each.allocate(size.width, size.height, &step), nullptr) << each.name; });
            EXPECT_EQ(step, 0) << each.name << " " << size.width << " x " << size.height;
            EXPECT_EQ(heap.allocations, 0);
        }
    }
}

// A row of more than 0x7FFFFFFF bytes is refused with step 0. A row just below rounds up to 0x80000000: the step's low 32 bits are
// that, and the image is refused all the same.
TEST(Memory, RowsAtTheLimit) {
    for (const ImageAllocator& each : imageAllocators) {
        const Kuv32s widest = INT32_MAX / each.pixelBytes;
        SCOPED_TRACE(each.name);
        if (each.pixelBytes > 1) {
            for (const Kuv32s width : {widest + 1, INT32_MAX}) {
                Kuv32s step = 4711;
                EXPECT_EQ(each.allocate(width, 1, &step), nullptr);
                EXPECT_EQ(step, 0) << width;
            }
        }
        Kuv32s step = 4711;
        EXPECT_EQ(each.allocate(widest, 1, &step), nullptr);
        EXPECT_EQ(static_cast<Kuv32u>(step), 0x80000000u);
    }
}

// The one failure after which the step comes back nonzero.
TEST(Memory, ImagesTooLargeKeepTheirStep) {
    for (const ImageAllocator& each : imageAllocators) {
        SCOPED_TRACE(each.name);
        const Kuv32s width = 100000;
        const Kuv32s wanted = (width * each.pixelBytes + 63) / 64 * 64;
        const Kuv32s tallest = INT32_MAX / wanted;
        for (const Kuv32s height : {tallest + 1, 0x10000, INT32_MAX}) {
            if (height <= tallest) continue;
            Kuv32s step = 4711;
            const Heap heap = heapOf([&] { EXPECT_EQ(each.allocate(width, height, &step), nullptr); });
            EXPECT_EQ(step, wanted) << height;
            EXPECT_EQ(heap.allocations, 0) << height;
        }
        if (!kuvtest::heapIsWatched) continue;
        Kuv32s step = 4711;
        const Heap heap = heapOf([&] { EXPECT_EQ(each.allocate(width, tallest, &step), nullptr); }, true);
        EXPECT_EQ(step, wanted);
        EXPECT_EQ(heap.allocations, 1) << "the largest that is asked for";
    }
    // The product would wrap in 32 bits to something small, or in signed 64 bits to nothing sensible if it were formed there.
    Kuv32s step = 4711;
    EXPECT_EQ(kuviMalloc_8u_C1(0x10000, 0x10000, &step), nullptr);
    EXPECT_EQ(step, 0x10000);
    EXPECT_EQ(kuviMalloc_8u_C1(0x7FFFFFC0, INT32_MAX, &step), nullptr);
    EXPECT_EQ(step, 0x7FFFFFC0);
}

// Within 0x7FFFFFFF bytes, but not with the block's own 72: kuvMalloc's refusal, with the step as computed.
TEST(Memory, ImageThatLeavesNoRoomForTheBlock) {
    Kuv32s step = 4711;
    const Heap heap = heapOf([&] { EXPECT_EQ(kuviMalloc_8u_C1(0x7FFFFFC0, 1, &step), nullptr); });
    EXPECT_EQ(step, 0x7FFFFFC0);
    EXPECT_EQ(heap.allocations, 0);
}

}  // namespace
