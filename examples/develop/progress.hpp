// What the program tells about its stages: how far one is, and how long it took.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <utility>

namespace develop {

class Stopwatch {
  public:
    double milliseconds() const {
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start_).count();
    }

  private:
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// Shows on stderr how far a stage is, once the stage has lasted a second. Any thread may report.
class Progress {
  public:
    Progress(std::string stage, std::int64_t total) : stage_(std::move(stage)), total_(total) {}
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void advance(std::int64_t amount);

  private:
    std::mutex mutex_;
    std::string stage_;
    std::int64_t total_;
    std::int64_t done_ = 0;
    Stopwatch watch_;
    double nextReport_ = 1000;
    bool lineOpen_ = false;
};

}  // namespace develop
