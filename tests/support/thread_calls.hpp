// A call of every dispatched export, for threads to make at once: on sources and records that all of them share, into memory of their
// own.
#pragma once

#include <cstddef>
#include <vector>

#include "kuvcv.h"

namespace kuvtest {

// Memory that fits wherever a pointer is wanted.
struct Place {
    unsigned char* at = nullptr;

    template <class T>
    operator T*() const {
        return reinterpret_cast<T*>(at);
    }
    Place operator+(int bytes) const { return {at + bytes}; }
};

inline constexpr int imageBytes = 16384;

// What all threads read: samples, and records made by the variant in force at that time. From the end of the constructor on it is
// write-protected, so that nothing but a set-up call can write to a record.
class SharedData {
public:
    SharedData();
    ~SharedData();
    SharedData(const SharedData&) = delete;
    SharedData& operator=(const SharedData&) = delete;

    Place bytes, reals;  // samples of any type, half of the bytes being 0; finite numbers. imageBytes each
    Place map8, map8x3, map8x4, map16, map16x3, map16x4;             // tone maps
    Place bins8, bins8x3, bins8x4, bins16, bins16x4, bins16s, bins32f;  // histogram plans
    Place kernel, resize;                                            // of a filter, of a resizing
    Place shortTransform, factors, powerOfTwo, prime, chirp;         // transforms
    const Kuv8u* planes[4];

private:
    Place take(int bytes);
    void toneMaps();
    void binPlans();
    void transforms();

    unsigned char* memory_;
    int taken_ = 0;
};

// What a thread has for itself.
class OwnData {
public:
    OwnData();

    void start(const SharedData& shared);  // as before any call
    std::vector<unsigned char> results() const;

    Place bytes, reals;  // destinations and results; at first they are as the shared ones
    Place buffer;        // working memory of any call
    Kuv32u* counts[4];   // in bytes
    Kuv32f* levels[4];   // in reals

private:
    std::vector<unsigned char> memory_;
};

struct ThreadCall {
    const char* name;
    KuvStatus (*run)(const SharedData&, OwnData&);
    bool inOneVariant;  // takes a plan that only the variant that made it can run
};

extern const std::vector<ThreadCall> threadCalls;

}  // namespace kuvtest
