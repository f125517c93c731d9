// Images that stand between unmapped pages, so that a read or a write outside of them is noticed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "support/random.hpp"

namespace kuvtest {

// Samples may stand at any address.
template <class T>
T load(const void* address, std::ptrdiff_t index = 0) {
    T value;
    std::memcpy(&value, static_cast<const char*>(address) + index * static_cast<std::ptrdiff_t>(sizeof(T)), sizeof(T));
    return value;
}
template <class T>
void store(void* address, std::ptrdiff_t index, T value) {
    std::memcpy(static_cast<char*>(address) + index * static_cast<std::ptrdiff_t>(sizeof(T)), &value, sizeof(T));
}

// The side of the image on which the unmapped page begins.
enum class Guard { end, begin };

// "got 255 (0xff), wanted 0 (0x0)", of an element of up to 8 bytes.
std::string gotAndWanted(const void* got, const void* wanted, int elementBytes);

struct Geometry {
    int rowBytes = 0;
    int rows = 0;
    std::ptrdiff_t step = 0;  // any: odd, zero, negative, smaller than a row
    Guard guard = Guard::end;
    int gap = 0;           // bytes between image and guard; 0: the image touches it
    int elementBytes = 1;  // for messages
};

std::ostream& operator<<(std::ostream& stream, const Geometry& geometry);

using Bytes = std::vector<unsigned char>;

// All mapped bytes, rows and what lies around them, start with a random pattern.
class Image {
public:
    Image(std::string name, const Geometry& geometry, std::uint64_t seed);
    ~Image();
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;

    const std::string& name() const { return name_; }
    const Geometry& geometry() const { return geometry_; }
    std::int32_t step() const { return static_cast<std::int32_t>(geometry_.step); }

    template <class T = unsigned char>
    T* row(int index = 0) const {
        return reinterpret_cast<T*>(memory_ + firstRow_ + index * geometry_.step);
    }

    // A copy of everything between the guards, and a row's place in such a copy.
    Bytes bytes() const { return Bytes(memory_, memory_ + size_); }
    unsigned char* row(Bytes& copy, int index) const { return copy.data() + firstRow_ + index * geometry_.step; }
    const unsigned char* row(const Bytes& copy, int index) const { return copy.data() + firstRow_ + index * geometry_.step; }

    // These describe the first byte that is not as wanted, or give an empty string.
    std::string difference(const Bytes& wanted) const;  // anywhere
    std::string strayWrite(const Bytes& before) const;  // outside of the rows

    // The same for an address that lies in or next to one of this thread's images.
    static std::string whereIs(const void* address);

private:
    struct Place {
        int row;  // -1: in no row
        std::ptrdiff_t element;
    };
    Place placeOf(std::ptrdiff_t offset) const;
    std::string describe(std::ptrdiff_t offset, const Bytes& wanted) const;
    std::string position(std::ptrdiff_t offset) const;

    std::string name_;
    Geometry geometry_;
    unsigned char* mapping_ = nullptr;  // with both unmapped ends
    unsigned char* memory_ = nullptr;   // between them
    std::size_t size_ = 0;
    std::ptrdiff_t firstRow_ = 0;
};

}  // namespace kuvtest
