// The parts of the texts of findings.
#pragma once

#include "scene/AttrData.h"
#include "scene/Input.h"

#include <string>
#include <type_traits>
#include <vector>

namespace vrn::check {

// A name, a path or a string of the scene; shortened, because a file can repeat a very long one in many findings.
[[nodiscard]] std::string shortened(std::string_view text);

// The path of an input.
[[nodiscard]] std::string pathText(const vor::velmo_sdk::impl::Input& input);

[[nodiscard]] std::string numberText(double number);
[[nodiscard]] std::string numberText(float number);
template <class Integer>
requires std::is_integral_v<Integer>
[[nodiscard]] std::string numberText(Integer number) { return std::to_string(number); }

// "1 element", "2 elements".
[[nodiscard]] std::string elementsText(vor::u64 count);

// "a", "a or b", "a, b or c"; shortened after a few.
[[nodiscard]] std::string eitherText(const std::vector<std::string>& choices);

} // namespace vrn::check
