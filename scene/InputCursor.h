// A position among inputs and everything below them.
//
//     for (InputCursor cursor(node.inputs()); !cursor.isDone();) {
//         if (cursor.isAtEnd()) {                  // of the children of cursor.parent()
//             cursor.leave();
//             close(*cursor);
//             cursor.next();
//         } else {
//             open(*cursor);
//             cursor.enter();
//         }
//     }
//
// A file can nest inputs to any depth, so code that walks them must not recurse. A cursor needs no stack either: the
// way back is the parents of the inputs. It refers to the scene, which must not change in the meantime. Every step is
// O(1).
#pragma once

#include "scene/Input.h"

namespace vor::velmo_sdk::impl {

class InputCursor {
public:
    // At the first of the inputs of a node, of the children of an input, or of a part of them.
    explicit InputCursor(std::span<const Input* const> siblings) noexcept : top_(siblings), siblings_(siblings) {}

    // Whether the cursor is after the last of its siblings; isDone() if these are the ones it started with.
    [[nodiscard]] bool isAtEnd() const noexcept { return at_ == siblings_.size(); }
    [[nodiscard]] bool isDone() const noexcept { return depth_ == 0 && isAtEnd(); }

    // The current input; not at the end.
    [[nodiscard]] const Input& operator*() const noexcept { return *siblings_[at_]; }
    [[nodiscard]] const Input* operator->() const noexcept { return siblings_[at_]; }
    [[nodiscard]] bool isLast() const noexcept { return at_ + 1 == siblings_.size(); }

    // How many times the cursor has entered children and not left them, and their parent if it has.
    [[nodiscard]] std::size_t depth() const noexcept { return depth_; }
    [[nodiscard]] const Input* parent() const noexcept { return parent_; }

    void next() noexcept { ++at_; }

    // Moves to the first child of the current input, or to the end if it has none.
    void enter() noexcept {
        if (depth_ == 0)
            topAt_ = at_;
        parent_ = siblings_[at_];
        siblings_ = parent_->children();
        at_ = 0;
        ++depth_;
    }

    // Moves back to the parent, from any of its children.
    void leave() noexcept {
        const Input* left = parent_;
        --depth_;
        parent_ = depth_ == 0 ? nullptr : left->parent();
        siblings_ = depth_ == 0 ? top_ : parent_->children();
        at_ = depth_ == 0 ? topAt_ : left->index();
    }

private:
    std::span<const Input* const> top_;
    std::span<const Input* const> siblings_;
    const Input* parent_ = nullptr;
    std::size_t at_ = 0;
    std::size_t topAt_ = 0; // the position among `top_`, which may be a part of all siblings
    std::size_t depth_ = 0;
};

} // namespace vor::velmo_sdk::impl
