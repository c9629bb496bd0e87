// Links from inputs to nodes and outputs. Each target has a list of its links, so that either end can be destroyed
// first.
#pragma once

namespace vor::velmo_sdk::impl {

class Input;

// The link of one input, an entry in the intrusive list of its target while it has one.
class Link {
public:
    explicit Link(Input* input) noexcept : input_(input) {}
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;
    ~Link() { leave(); }

    [[nodiscard]] Input* input() const noexcept { return input_; }
    [[nodiscard]] Link* next() const noexcept { return next_; }

    void enter(Link*& first) noexcept {
        leave();
        next_ = first;
        if (next_)
            next_->holder_ = &next_;
        first = this;
        holder_ = &first;
    }

    void leave() noexcept {
        if (!holder_)
            return;
        *holder_ = next_;
        if (next_)
            next_->holder_ = holder_;
        holder_ = nullptr;
        next_ = nullptr;
    }

private:
    Input* input_;
    Link** holder_ = nullptr; // the pointer to this link: the head of the list or a `next_`
    Link* next_ = nullptr;
};

} // namespace vor::velmo_sdk::impl
