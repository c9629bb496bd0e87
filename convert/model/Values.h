// Numbers that stand in a buffer of the scene, or in a list of their own when they had to be changed.
//
//     Values<float> points(buffer.elements<float>());    // nothing is copied
//     points = Values<float>(std::move(rounded));        // a list takes their place
//
// A view is valid as long as the buffer; a list moves with its owner. Not to be copied.
#pragma once

#include <span>
#include <utility>
#include <vector>

namespace vrn::convert {

template <class T> class Values {
public:
    Values() = default;
    explicit Values(std::span<const T> view) : view_(view) {}
    explicit Values(std::vector<T> list) : list_(std::move(list)), view_(list_) {}
    Values(const Values&) = delete;
    Values& operator=(const Values&) = delete;
    Values(Values&& other) noexcept : list_(std::exchange(other.list_, {})), view_(std::exchange(other.view_, {})) {}
    Values& operator=(Values&& other) noexcept {
        list_ = std::exchange(other.list_, {});
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
    std::vector<T> list_;
    std::span<const T> view_;
};

} // namespace vrn::convert
