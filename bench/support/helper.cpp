#include "support/helper.hpp"

#include <utility>

namespace kuvbench {

Helper::Helper()
    : thread_([this] {
          while (ready_.acquire(), work_) {
              work_();
              done_.release();
          }
      }) {}

Helper::~Helper() {
    start(nullptr);
    thread_.join();
}

void Helper::start(std::function<void()> work) {
    work_ = std::move(work);
    ready_.release();
}

void Helper::wait() { done_.acquire(); }

}  // namespace kuvbench
