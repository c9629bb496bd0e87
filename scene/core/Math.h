// Vectors, points, quaternions, colours and matrices as plain arrays of components, without arithmetic. Matrices are
// row-major.
//
//     math::VecT<3> up{{0, 1, 0}};      // three doubles; VecT<3, float> for floats
//     up[1], up.data(), decltype(up)::size
#pragma once

#include <cstddef>

namespace vor::math {

template <std::size_t Count, class T> struct Components {
    using Component = T;
    static constexpr std::size_t size = Count;

    T components[Count] = {};

    [[nodiscard]] constexpr T* data() noexcept { return components; }
    [[nodiscard]] constexpr const T* data() const noexcept { return components; }
    [[nodiscard]] constexpr T& operator[](std::size_t i) noexcept { return components[i]; }
    [[nodiscard]] constexpr const T& operator[](std::size_t i) const noexcept { return components[i]; }
    friend constexpr bool operator==(const Components&, const Components&) = default;
};

template <std::size_t N, class T = double> struct VecT : Components<N, T> {};
template <std::size_t N, class T = double> struct PosT : Components<N, T> {};
template <class T = double> struct QuatT : Components<4, T> {};
template <class T = double> struct RgbaT : Components<4, T> {};
template <std::size_t N, class T = double> struct MatT : Components<N * N, T> {};

} // namespace vor::math
