// Work on many things at once that is finished one after the other.
//
//     runInOrder(names.size(), threads, [&](std::size_t i, const Turn&) {
//         return [text = describe(names[i])] { print(text); };
//     });
//
// describe() runs on several threads at once, print() on one at a time and in the order of the names, whatever the
// number of threads. Few results wait: nobody works far ahead of what is finished.
#pragma once

#include <cstddef>
#include <functional>

namespace vrn::cli {

class Turn;
class OrderedWork;

// What is left to be done in order; may be empty.
using Finish = std::function<void()>;
using Work = std::function<Finish(std::size_t index, const Turn& turn)>;

// Runs `work` for all indices below `count` on as many threads, the caller's among them, as `threads` says or, if that
// is 0, as there are processors; on fewer if the system has no more. What work or finish throw ends it all and is
// thrown to the caller.
void runInOrder(std::size_t count, std::size_t threads, const Work& work);

// The turn of one of them, for work that cannot be done ahead of others.
class Turn {
public:
    // Returns when all before this one are finished.
    void await() const;

private:
    friend class OrderedWork;
    Turn(OrderedWork& work, std::size_t index) : work_(work), index_(index) {}
    OrderedWork& work_;
    std::size_t index_;
};

} // namespace vrn::cli
