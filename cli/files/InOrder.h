// Parallel work whose results are finished in order.
//
//     runInOrder(names.size(), threads, [&](std::size_t i, const Turn&) {
//         return [text = describe(names[i])] { print(text); };
//     });
//
// describe() runs on several threads, print() on one at a time and in the order of the names, for any number of
// threads. The number of results that wait is bounded: no thread works far ahead of the last finished index.
#pragma once

#include <cstddef>
#include <functional>

namespace vrn::cli {

class Turn;
class OrderedWork;

// The part of the work that is done in order; may be empty.
using Finish = std::function<void()>;
using Work = std::function<Finish(std::size_t index, const Turn& turn)>;

// Runs `work` for all indices below `count` on up to `threads` threads including the caller's, or one a processor if
// that is 0; on fewer if the system refuses to create more. An exception of `work` or of a Finish stops all threads and
// is rethrown to the caller.
void runInOrder(std::size_t count, std::size_t threads, const Work& work);

// The turn of an index, for work that must not run ahead of others.
class Turn {
public:
    // Returns once all earlier indices are finished.
    void await() const;

private:
    friend class OrderedWork;
    Turn(OrderedWork& work, std::size_t index) : work_(work), index_(index) {}
    OrderedWork& work_;
    std::size_t index_;
};

} // namespace vrn::cli
