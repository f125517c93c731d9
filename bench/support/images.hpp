// Images with content like that of photographs: what a demosaicing or a labelling costs depends on it.
#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>

#include "kuvcv.h"

namespace kuvbench {

// Rows begin on 64-byte boundaries, or `offset` samples past them.
template <class T>
class Image {
public:
    explicit Image(KuviSize size, int channels = 1, int offset = 0)
        : step_((std::size_t(size.width) * channels + offset) * sizeof(T)), offset_(offset) {
        step_ = (step_ + 63) / 64 * 64;
        memory_.reset(static_cast<char*>(std::aligned_alloc(64, step_ * size.height)));
        if (!memory_) throw std::bad_alloc();
    }

    T* row(int index = 0) { return reinterpret_cast<T*>(memory_.get() + step_ * index) + offset_; }
    Kuv32s step() const { return static_cast<Kuv32s>(step_); }

private:
    struct Free {
        void operator()(char* memory) const { std::free(memory); }
    };
    std::size_t step_;
    std::unique_ptr<char, Free> memory_;
    int offset_;
};

// Evenly spread values; around 0, sums that are formed again and again stay finite.
template <class T>
void fillWithValues(Image<T>& image, KuviSize size, unsigned seed, float lowest = -100, float highest = 100);

// What a sensor sees of a scene with gradients, edges, fine stripes and a little noise, through the colour filters R G over G B.
// The same scene in either depth.
template <class T>
void fillWithMosaic(Image<T>& image, KuviSize size);

// 255 on 0: of pixels half, at random; blobs some dozens of pixels wide; thin straight and curved lines. The same in either depth.
enum class Markers { noise, blobs, lines };
template <class T>
void fillWithMarkers(Image<T>& image, KuviSize size, Markers kind);

}  // namespace kuvbench
