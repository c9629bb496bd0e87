#include "cli/files/InOrder.h"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

namespace vrn::cli {

// The state that the threads share.
class OrderedWork {
public:
    OrderedWork(std::size_t count, std::size_t threads, const Work& work)
        : count_(count), maxAhead_(4 * threads), work_(work) {}

    // Works until nothing is left.
    void run() noexcept {
        std::unique_lock lock(mutex_);
        try {
            while (waitForWork(lock)) {
                const std::size_t index = next_++;
                lock.unlock();
                Finish finish = work_(index, Turn(*this, index));
                lock.lock();
                results_.emplace(index, std::move(finish));
                finishReady();
                changed_.notify_all();
            }
        } catch (...) {
            if (!lock)
                lock.lock();
            if (!failure_)
                failure_ = std::current_exception();
            changed_.notify_all();
        }
    }

    void await(std::size_t index) {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [&] { return failure_ || turn_ == index; });
        if (failure_)
            std::rethrow_exception(failure_);
    }

    void rethrow() const {
        if (failure_)
            std::rethrow_exception(failure_);
    }

private:
    bool waitForWork(std::unique_lock<std::mutex>& lock) {
        changed_.wait(lock, [&] { return failure_ || next_ == count_ || next_ < turn_ + maxAhead_; });
        return !failure_ && next_ != count_;
    }

    // Called with the lock held, so that one thread at a time finishes results.
    void finishReady() {
        while (!failure_ && !results_.empty() && results_.begin()->first == turn_) {
            const Finish finish = std::move(results_.extract(results_.begin()).mapped());
            if (finish)
                finish();
            ++turn_;
        }
    }

    std::size_t count_;
    std::size_t maxAhead_;
    const Work& work_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t next_ = 0; // the next index to work on
    std::size_t turn_ = 0; // the next index to finish
    std::map<std::size_t, Finish> results_;
    std::exception_ptr failure_;
};

void Turn::await() const { work_.await(index_); }

void runInOrder(std::size_t count, std::size_t threads, const Work& work) {
    const std::size_t requested = threads != 0 ? threads : std::max(std::thread::hardware_concurrency(), 1U);
    const std::size_t useful = std::clamp(count, std::size_t(1), requested);
    OrderedWork shared(count, useful, work);
    {
        std::vector<std::jthread> others;
        others.reserve(useful);
        try {
            while (others.size() + 1 < useful)
                others.emplace_back([&] { shared.run(); });
        } catch (const std::system_error&) {
            // Continue with the threads that were created.
        }
        shared.run();
    }
    shared.rethrow();
}

} // namespace vrn::cli
