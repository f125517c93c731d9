// A second thread.
#pragma once

#include <functional>
#include <semaphore>
#include <thread>

namespace kuvbench {

// Waits for work, as the threads of a caller's pool do, so that no thread is started while the clock runs.
class Helper {
public:
    Helper();
    ~Helper();
    Helper(const Helper&) = delete;
    Helper& operator=(const Helper&) = delete;

    void start(std::function<void()> work);
    void wait();

private:
    std::function<void()> work_;  // none: end
    std::binary_semaphore ready_{0}, done_{0};
    std::thread thread_;
};

}  // namespace kuvbench
