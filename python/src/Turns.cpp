#include "python/src/Turns.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace vrn::python {

bool Turns::isReader() const noexcept {
    return std::ranges::find(readers_, std::this_thread::get_id()) != readers_.end();
}

namespace {

// Calls a function at the end of a block, also if that raises.
template <class Function> class AtEnd {
public:
    explicit AtEnd(Function function) : function_(std::move(function)) {}
    ~AtEnd() { function_(); }
    AtEnd(const AtEnd&) = delete;
    AtEnd& operator=(const AtEnd&) = delete;

private:
    Function function_;
};

} // namespace

template <class Condition> void Turns::await(Condition isBusy) {
    while (isBusy()) {
        if (isChanging_ && changer_ == std::this_thread::get_id())
            raise(PyExc_RuntimeError, "the scene is used while this thread reads a text into it");
        block();
    }
}

template <class Condition> void Turns::awaitAsReader(Condition isBusy) {
    ++waitingReaders_;
    const AtEnd end([this] { readerGoes(); });
    await(isBusy);
}

template <class Condition> void Turns::awaitAsChanger(Condition isBusy) {
    if (isReader())
        raise(PyExc_RuntimeError, "the scene is changed while this thread writes or reads it");
    ++waitingChangers_;
    const AtEnd end([this] { --waitingChangers_; });
    await(isBusy);
}

// After the last of those that waited for a change, changers go first again.
void Turns::readerGoes() noexcept {
    if (--waitingReaders_ != 0)
        return;
    isTurnOfChangers_ = true;
    end();
}

// A thread that reads already does not wait for those that wait for it.
void Turns::beforeReadTurn() {
    const auto isBusy = [this] { return isChanging_ || (waitingChangers_ != 0 && isTurnOfChangers_ && !isReader()); };
    if (isBusy())
        awaitAsReader(isBusy);
}

void Turns::awaitChange() {
    awaitAsReader([this] { return isChanging_; });
}

void Turns::awaitAlone() {
    awaitAsChanger([this] { return isChanging_ || !readers_.empty(); });
}

void Turns::awaitChangeTurn() {
    awaitAsChanger([this] { return isChanging_ || !readers_.empty() || (waitingReaders_ != 0 && !isTurnOfChangers_); });
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
    turns_.awaitChangeTurn();
    turns_.isChanging_ = true;
    turns_.changer_ = std::this_thread::get_id();
    state_ = PyEval_SaveThread();
}

ChangeTurn::~ChangeTurn() {
    PyEval_RestoreThread(state_);
    turns_.isChanging_ = false;
    turns_.isTurnOfChangers_ = turns_.waitingReaders_ == 0;
    std::exchange(turns_.dropped_, {}).clear();
    turns_.end();
}

} // namespace vrn::python
