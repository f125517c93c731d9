#include "progress.hpp"

#include <unistd.h>

#include <cstdio>

namespace develop {

Progress::~Progress() {
    if (lineOpen_) std::fputs("\r\033[K", stderr);
}

void Progress::advance(std::int64_t amount) {
    const std::lock_guard lock(mutex_);
    done_ += amount;
    const double elapsed = watch_.milliseconds();
    if (elapsed < nextReport_ || done_ >= total_) return;
    // A terminal's line is rewritten; a log file gets a line now and then.
    lineOpen_ = isatty(STDERR_FILENO);
    nextReport_ = elapsed + (lineOpen_ ? 100 : 5000);
    std::fprintf(stderr, lineOpen_ ? "\r%-10s %3d %%\033[K" : "%-10s %3d %%\n", stage_.c_str(), int(done_ * 100 / total_));
    std::fflush(stderr);
}

}  // namespace develop
