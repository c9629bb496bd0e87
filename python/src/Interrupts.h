// Signals of Python while a read runs without the GIL.
#pragma once

#include "python/src/Python.h"

#include <chrono>
#include <exception>
#include <functional>

namespace vrn::python {

// Ends a read when a signal handler of Python raises, as the one of Ctrl-C does.
//
//     Interrupts interrupts([&] { file.requestStop(); });
//     file.onFetch(interrupts.watch());
//     ... // the read, without the GIL
//     interrupts.raisePending();
//
// Handlers run on the main thread only; on another one, nothing happens. Between signals, a block costs two loads and
// the time of the clock; other threads keep the GIL. Ctrl-C is seen with the next block, other signals within a fifth
// of a second.
class Interrupts {
public:
    explicit Interrupts(std::function<void()> stop);
    ~Interrupts();
    Interrupts(const Interrupts&) = delete;
    Interrupts& operator=(const Interrupts&) = delete;

    // To be called with each block that is fetched.
    [[nodiscard]] std::function<void(std::size_t)> watch();

    // Whether a handler raised, and the read was asked to end.
    [[nodiscard]] bool isPending() const noexcept { return raised_ != nullptr; }

    // Raises what the handler raised. With the GIL.
    void raisePending();

private:
    void runHandlers();

    std::function<void()> stop_;
    bool isMainThread_;
    bool watchesKeyboard_ = false;
    std::chrono::steady_clock::time_point lastRun_ = std::chrono::steady_clock::now();
    std::exception_ptr raised_;
};

} // namespace vrn::python
