#include "python/src/Interrupts.h"

#include <atomic>
#include <csignal>
#include <exception>
#include <unistd.h>
#include <utility>

namespace vrn::python {

namespace {

// Python's own handler only sets a flag that needs the GIL to be read. This one comes before it and sets another.
std::atomic<bool> isInterrupted = false;
struct sigaction pythonAction;

void noteInterrupt(int signal, siginfo_t* info, void* context) {
    isInterrupted = true;
    if ((pythonAction.sa_flags & SA_SIGINFO) != 0)
        pythonAction.sa_sigaction(signal, info, context);
    else
        pythonAction.sa_handler(signal);
}

bool isNoting(const struct sigaction& action) {
    return (action.sa_flags & SA_SIGINFO) != 0 && action.sa_sigaction == noteInterrupt;
}

bool hasHandler(const struct sigaction& action) {
    return (action.sa_flags & SA_SIGINFO) != 0 || (action.sa_handler != SIG_DFL && action.sa_handler != SIG_IGN);
}

struct sigaction currentAction() {
    struct sigaction action = {};
    (void)sigaction(SIGINT, nullptr, &action);
    return action;
}

} // namespace

Interrupts::Interrupts(std::function<void()> stop) : stop_(std::move(stop)), isMainThread_(gettid() == getpid()) {
    const struct sigaction current = currentAction();
    if (!isMainThread_ || !hasHandler(current) || isNoting(current))
        return;
    pythonAction = current;
    isInterrupted = false;
    struct sigaction noting = current;
    noting.sa_flags |= SA_SIGINFO;
    noting.sa_sigaction = noteInterrupt;
    watchesKeyboard_ = sigaction(SIGINT, &noting, nullptr) == 0;
}

Interrupts::~Interrupts() {
    if (watchesKeyboard_ && isNoting(currentAction())) // a handler can have installed another one
        (void)sigaction(SIGINT, &pythonAction, nullptr);
}

std::function<void(std::size_t)> Interrupts::watch() {
    return [this](std::size_t) {
        using namespace std::chrono_literals;
        if (isMainThread_ && (isInterrupted.exchange(false) || std::chrono::steady_clock::now() - lastRun_ > 200ms))
            runHandlers();
    };
}

void Interrupts::runHandlers() {
    const nb::gil_scoped_acquire held;
    lastRun_ = std::chrono::steady_clock::now();
    if (raised_ || PyErr_CheckSignals() == 0)
        return;
    raised_ = std::make_exception_ptr(nb::python_error());
    stop_();
}

void Interrupts::raisePending() {
    if (raised_)
        std::rethrow_exception(std::exchange(raised_, nullptr));
}

} // namespace vrn::python
