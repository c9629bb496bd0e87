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
        : count_(count), mostAhead_(4 * threads), work_(work) {}

    // Works until nothing is left.
    void take() noexcept {
        std::unique_lock lock(mutex_);
        try {
            while (waitForWork(lock)) {
                const std::size_t index = next_++;
                lock.unlock();
                Finish finish = work_(index, Turn(*this, index));
                lock.lock();
                results_.emplace(index, std::move(finish));
                finishWhoseTurnItIs();
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
        changed_.wait(lock, [&] { return failure_ || next_ == count_ || next_ < turn_ + mostAhead_; });
        return !failure_ && next_ != count_;
    }

    // With the lock held, so that one thread at a time does it.
    void finishWhoseTurnItIs() {
        while (!failure_ && !results_.empty() && results_.begin()->first == turn_) {
            const Finish finish = std::move(results_.extract(results_.begin()).mapped());
            if (finish)
                finish();
            ++turn_;
        }
    }

    std::size_t count_;
    std::size_t mostAhead_;
    const Work& work_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::size_t next_ = 0; // to be worked on
    std::size_t turn_ = 0; // to be finished
    std::map<std::size_t, Finish> results_;
    std::exception_ptr failure_;
};

void Turn::await() const { work_.await(index_); }

void runInOrder(std::size_t count, std::size_t threads, const Work& work) {
    const std::size_t wanted = threads != 0 ? threads : std::max(std::thread::hardware_concurrency(), 1U);
    const std::size_t useful = std::clamp(count, std::size_t(1), wanted);
    OrderedWork shared(count, useful, work);
    {
        std::vector<std::jthread> others;
        others.reserve(useful);
        try {
            while (others.size() + 1 < useful)
                others.emplace_back([&] { shared.take(); });
        } catch (const std::system_error&) {
            // The system has no more; those that there are do it all.
        }
        shared.take();
    }
    shared.rethrow();
}

} // namespace vrn::cli
