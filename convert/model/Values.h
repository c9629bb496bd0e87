// A read-only array that either views a buffer of the scene or owns a modified copy.
//
//     Values<float> points(buffer.elements<float>());    // a view
//     points = Values<float>(std::move(rounded));        // owned
//
// A view is valid as long as the buffer. Movable, not copyable.
#pragma once

#include <span>
#include <utility>
#include <vector>

namespace vrn::convert {

template <class T> class Values {
public:
    Values() = default;
    explicit Values(std::span<const T> view) : view_(view) {}
    explicit Values(std::vector<T> owned) : owned_(std::move(owned)), view_(owned_) {}
    Values(const Values&) = delete;
    Values& operator=(const Values&) = delete;
    Values(Values&& other) noexcept : owned_(std::exchange(other.owned_, {})), view_(std::exchange(other.view_, {})) {}
    Values& operator=(Values&& other) noexcept {
        owned_ = std::exchange(other.owned_, {});
        view_ = std::exchange(other.view_, {});
        return *this;
    }
    ~Values() = default;

    [[nodiscard]] std::span<const T> span() const noexcept { return view_; }
    [[nodiscard]] std::size_t size() const noexcept { return view_.size(); }
    [[nodiscard]] bool empty() const noexcept { return view_.empty(); }
    [[nodiscard]] const T& operator[](std::size_t i) const noexcept { return view_[i]; }
    [[nodiscard]] auto begin() const noexcept { return view_.begin(); }
    [[nodiscard]] auto end() const noexcept { return view_.end(); }

private:
    std::vector<T> owned_;
    std::span<const T> view_;
};

} // namespace vrn::convert
