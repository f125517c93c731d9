// The stages of the work, and how long each takes.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "progress.hpp"

namespace develop {

struct Stage {
    std::string name;
    double milliseconds;
};

class Stages {
  public:
    template <class Work>
    void run(const char* name, Work&& work) {
        const Stopwatch watch;
        work();
        done_.push_back({name, watch.milliseconds()});
    }

    const std::vector<Stage>& done() const { return done_; }

  private:
    std::vector<Stage> done_;
};

// Does the work several times in each variant that the processor has, and prints a table of each stage's median time. Leaves
// the best variant selected.
void printTimes(double megapixels, const std::function<void(Stages&)>& work);

}  // namespace develop
