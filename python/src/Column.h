// A column: the values that a path matches, as one array of a common type.
//
//     const Column column = columnOf(scene, parsePath("*.fov"));    // without the GIL
//     return numpyArray(std::make_shared<const Column>(std::move(column)));
//
// Numbers become bool, int64, uint64 or float64, whichever holds all of them; vectors and matrices rows of float64.
// Strings, names of nodes that are referred to and labels of outputs become text. What has no value is NaN among
// numbers and missing among texts.
#pragma once

#include "inspect/path/ScenePath.h"
#include "python/src/Queries.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace vrn::python {

using Text = std::optional<std::string>;

struct Column {
    // Truth values are bytes, which numpy can share.
    std::variant<std::vector<vor::u8>, std::vector<vor::i64>, std::vector<vor::u64>, std::vector<double>,
                 std::vector<Text>>
        values;
    std::vector<std::size_t> rowShape{}; // of one value; empty for single numbers and texts
    std::vector<std::size_t> missing{};  // the rows without a value, in order

    [[nodiscard]] std::size_t length() const; // in rows
};

// Values that have no common type, such as a string and a number, or vectors of different sizes.
class ColumnError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Linear in the matches, and reads the scene once. Throws ColumnError.
[[nodiscard]] Column columnOf(const Scene& scene, const inspect::ScenePath& path);

} // namespace vrn::python
