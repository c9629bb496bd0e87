// Links from inputs to nodes and outputs. Each target has a list of its links, so that either end can be destroyed
// first.
#pragma once

namespace vor::velmo_sdk::impl {

// The link of one input, an entry in the intrusive list of its target while it has one.
template <class Target> class Link {
public:
    Link() = default;
    Link(const Link&) = delete;
    Link& operator=(const Link&) = delete;
    ~Link() { leave(); }

    [[nodiscard]] Target* target() const noexcept { return target_; }
    [[nodiscard]] Link* next() const noexcept { return next_; }

    // `first` is the list of the target.
    void enter(Target& target, Link*& first) noexcept {
        leave();
        target_ = &target;
        next_ = first;
        if (next_)
            next_->holder_ = &next_;
        first = this;
        holder_ = &first;
    }

    void leave() noexcept {
        if (!target_)
            return;
        *holder_ = next_;
        if (next_)
            next_->holder_ = holder_;
        target_ = nullptr;
        next_ = nullptr;
    }

private:
    Target* target_ = nullptr;
    Link** holder_ = nullptr; // the pointer to this link: the head of the list or a `next_`
    Link* next_ = nullptr;
};

} // namespace vor::velmo_sdk::impl
