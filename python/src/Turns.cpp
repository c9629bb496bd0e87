#include "python/src/Turns.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace vrn::python {

bool Turns::isReader() const noexcept {
    return std::ranges::find(readers_, std::this_thread::get_id()) != readers_.end();
}

template <class Condition> void Turns::await(Condition isBusy) {
    while (isBusy()) {
        if (isChanging_ && changer_ == std::this_thread::get_id())
            raise(PyExc_RuntimeError, "the scene is used while this thread reads a text into it");
        block();
    }
}

// A thread that reads already does not wait for those that wait for it.
void Turns::beforeReadTurn() {
    await([this] { return isChanging_ || (waitingChangers_ != 0 && !isReader()); });
}

void Turns::awaitChange() {
    await([this] { return isChanging_; });
}

void Turns::awaitAlone() {
    if (isReader())
        raise(PyExc_RuntimeError, "the scene is changed while this thread writes or reads it");
    struct Waiting {
        explicit Waiting(int& number) : count(number) { ++count; }
        ~Waiting() { --count; }
        int& count;
    } const waiting(waitingChangers_);
    await([this] { return isChanging_ || !readers_.empty(); });
}

// Waits for the end of any turn, or for a fifth of a second, after which signals are looked at.
void Turns::block() {
    {
        std::unique_lock lock(mutex_);
        const std::uint64_t seen = endings_;
        const nb::gil_scoped_release released;
        (void)ended_.wait_for(lock, std::chrono::milliseconds(200), [&] { return endings_ != seen; });
        lock.unlock(); // before the GIL is taken: end() takes the mutex with the GIL
    }
    if (PyErr_CheckSignals() != 0)
        throw nb::python_error();
}

void Turns::end() noexcept {
    const std::lock_guard lock(mutex_);
    ++endings_;
    ended_.notify_all();
}

ReadTurn::ReadTurn(Turns& turns) : turns_(turns) {
    turns_.beforeReadTurn();
    turns_.readers_.push_back(std::this_thread::get_id());
    state_ = PyEval_SaveThread();
}

ReadTurn::~ReadTurn() {
    PyEval_RestoreThread(state_);
    turns_.readers_.erase(std::ranges::find(turns_.readers_, std::this_thread::get_id()));
    turns_.end();
}

ChangeTurn::ChangeTurn(Turns& turns) : turns_(turns) {
    turns_.beforeChanging();
    turns_.isChanging_ = true;
    turns_.changer_ = std::this_thread::get_id();
    state_ = PyEval_SaveThread();
}

ChangeTurn::~ChangeTurn() {
    PyEval_RestoreThread(state_);
    turns_.isChanging_ = false;
    std::exchange(turns_.dropped_, {}).clear();
    turns_.end();
}

} // namespace vrn::python
