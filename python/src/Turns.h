// How threads take turns at one scene: any number read it, or one changes it.
//
//     const ReadTurn turn(box->turns);    // waits for a change to end; then releases the GIL
//     writeVrn(box->scene, ...);          // at the end of the block, takes the GIL again
//
// Whoever does not release the GIL needs no turn, but has to await one after everything that can run Python code:
// beforeReading(), beforeChanging(). All functions are called with the GIL, which protects what is counted. Waiting
// ends with what a signal handler raises. Turns are fair: B. B. Brandenburg and J. H. Anderson, "Reader-writer
// synchronization for shared-memory multiprocessor real-time systems" (2009), call them phase-fair.
#pragma once

#include "python/src/Python.h"

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace vrn::python {

class Turns {
public:
    // Return once no other thread changes the scene, or uses it in any way. Raise RuntimeError if that other use is one
    // of this thread: a signal handler, or the `write()` of a stream that a scene is written to.
    void beforeReading() {
        if (isChanging_)
            awaitChange();
    }
    void beforeChanging() {
        if (isChanging_ || !readers_.empty())
            awaitAlone();
    }

    // Keeps an object that belongs to the scene until no thread changes it any more; then drops it. Whoever drops a
    // reference cannot await a turn: that can happen anywhere, in a signal handler during a read too.
    [[nodiscard]] bool isChanging() const noexcept { return isChanging_; }
    void dropLater(std::shared_ptr<void> object) { dropped_.push_back(std::move(object)); }

private:
    friend class ReadTurn;
    friend class ChangeTurn;

    void beforeReadTurn();
    void awaitChange();
    void awaitAlone();
    void awaitChangeTurn();
    template <class Condition> void awaitAsReader(Condition isBusy);
    template <class Condition> void awaitAsChanger(Condition isBusy);
    template <class Condition> void await(Condition isBusy);
    [[nodiscard]] bool isReader() const noexcept;
    void readerGoes() noexcept;
    void block();
    void end() noexcept;

    std::vector<std::thread::id> readers_;
    bool isChanging_ = false;
    std::thread::id changer_;

    // Whoever waits goes before those that come after the other kind: a thread that changes or reads the scene again
    // and again cannot keep the others waiting.
    int waitingReaders_ = 0;
    int waitingChangers_ = 0;
    bool isTurnOfChangers_ = true;
    std::vector<std::shared_ptr<void>> dropped_;
    std::mutex mutex_;
    std::condition_variable ended_;
    std::uint64_t endings_ = 0; // guarded by the mutex, because threads without the GIL wait for it
};

// A turn to read, without the GIL.
class ReadTurn {
public:
    explicit ReadTurn(Turns& turns);
    ~ReadTurn();
    ReadTurn(const ReadTurn&) = delete;
    ReadTurn& operator=(const ReadTurn&) = delete;

private:
    Turns& turns_;
    PyThreadState* state_;
};

// A turn to change the scene, without the GIL.
class ChangeTurn {
public:
    explicit ChangeTurn(Turns& turns);
    ~ChangeTurn();
    ChangeTurn(const ChangeTurn&) = delete;
    ChangeTurn& operator=(const ChangeTurn&) = delete;

private:
    Turns& turns_;
    PyThreadState* state_;
};

} // namespace vrn::python
