#include "support/images.hpp"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <sstream>

namespace kuvtest {
namespace {

const std::size_t pageBytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));

// The first byte of all rows, and the first one after them, from row 0.
std::ptrdiff_t lowest(const Geometry& g) { return std::min<std::ptrdiff_t>(0, (g.rows - 1) * g.step); }
std::ptrdiff_t highest(const Geometry& g) { return std::max<std::ptrdiff_t>(0, (g.rows - 1) * g.step) + g.rowBytes; }

thread_local std::vector<const Image*> live;

}  // namespace

std::ostream& operator<<(std::ostream& stream, const Geometry& g) {
    return stream << g.rows << " rows of " << g.rowBytes << " bytes, step " << g.step << ", guard at "
                  << (g.guard == Guard::end ? "end" : "begin") << ", gap " << g.gap;
}

std::string gotAndWanted(const void* got, const void* wanted, int elementBytes) {
    std::uint64_t gotBits = 0, wantedBits = 0;
    std::memcpy(&gotBits, got, static_cast<std::size_t>(elementBytes));
    std::memcpy(&wantedBits, wanted, static_cast<std::size_t>(elementBytes));
    std::ostringstream text;
    text << "got " << gotBits << " (0x" << std::hex << gotBits << "), wanted " << std::dec << wantedBits << " (0x" << std::hex << wantedBits
         << ")";
    return text.str();
}

Image::Image(std::string name, const Geometry& geometry, std::uint64_t seed) : name_(std::move(name)), geometry_(geometry) {
    const std::size_t span = geometry.rows > 0 ? static_cast<std::size_t>(highest(geometry) - lowest(geometry)) : 0;
    size_ = (span + static_cast<std::size_t>(geometry.gap) + pageBytes - 1) / pageBytes * pageBytes;
    size_ = std::max(size_, pageBytes);
    void* const mapping = mmap(nullptr, size_ + 2 * pageBytes, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapping == MAP_FAILED) throw std::bad_alloc();
    mapping_ = static_cast<unsigned char*>(mapping);
    memory_ = mapping_ + pageBytes;
    if (mprotect(memory_, size_, PROT_READ | PROT_WRITE) != 0) throw std::bad_alloc();

    const std::ptrdiff_t start = geometry.guard == Guard::begin
                                     ? geometry.gap
                                     : static_cast<std::ptrdiff_t>(size_ - span) - geometry.gap;
    firstRow_ = start - (geometry.rows > 0 ? lowest(geometry) : 0);

    Random random(seed);
    for (std::size_t i = 0; i < size_; i += sizeof(std::uint64_t)) store(memory_ + i, 0, std::uint64_t{random()});
    live.push_back(this);
}

Image::~Image() {
    live.erase(std::find(live.begin(), live.end(), this));
    munmap(mapping_, size_ + 2 * pageBytes);
}

Image::Place Image::placeOf(std::ptrdiff_t offset) const {
    for (int r = 0; r < geometry_.rows; ++r) {
        const std::ptrdiff_t inRow = offset - firstRow_ - r * geometry_.step;
        if (inRow >= 0 && inRow < geometry_.rowBytes) return {r, inRow / geometry_.elementBytes};
    }
    return {-1, 0};
}

std::string Image::position(std::ptrdiff_t offset) const {
    std::ostringstream text;
    text << name_ << " (" << geometry_ << "), ";
    const Place place = placeOf(offset);
    const std::ptrdiff_t fromFirst = offset - firstRow_;
    if (place.row >= 0) {
        text << "row " << place.row << " element " << place.element;
    } else if (fromFirst < lowest(geometry_)) {
        text << lowest(geometry_) - fromFirst << " bytes before the image";
    } else if (fromFirst >= highest(geometry_)) {
        text << fromFirst - highest(geometry_) + 1 << " bytes past the image";
    } else {
        text << "in the padding, byte " << fromFirst << " from row 0";
    }
    return text.str();
}

std::string Image::describe(std::ptrdiff_t offset, const Bytes& wanted) const {
    const Place place = placeOf(offset);
    const int bytes = place.row < 0 ? 1 : geometry_.elementBytes;
    if (place.row >= 0) offset = firstRow_ + place.row * geometry_.step + place.element * bytes;
    return position(offset) + ": " + gotAndWanted(memory_ + offset, wanted.data() + offset, bytes);
}

std::string Image::difference(const Bytes& wanted) const {
    if (std::memcmp(memory_, wanted.data(), size_) == 0) return {};
    const auto at = std::mismatch(wanted.begin(), wanted.end(), memory_).first - wanted.begin();
    return describe(at, wanted);
}

std::string Image::strayWrite(const Bytes& before) const {
    Bytes wanted = before;
    for (int r = 0; r < geometry_.rows; ++r) std::memcpy(row(wanted, r), row(r), static_cast<std::size_t>(geometry_.rowBytes));
    const std::string found = difference(wanted);
    return found.empty() ? found : "stray write, " + found;
}

std::string Image::whereIs(const void* address) {
    const auto* const at = static_cast<const unsigned char*>(address);
    for (const Image* each : live) {
        if (at >= each->mapping_ && at < each->mapping_ + each->size_ + 2 * pageBytes) return each->position(at - each->memory_);
    }
    return "in no image";
}

}  // namespace kuvtest
