#include "python/src/Column.h"

#include "python/src/ArrowColumn.h"
#include "python/src/Buffers.h"
#include "python/src/PlainValues.h"

#include <algorithm>
#include <limits>
#include <memory>

namespace vrn::python {

using inspect::PathMatch;
using vor::i64;
using vor::u64;
using vor::u8;
using vor::velmo_sdk::ValueKind;

namespace {

// One value: missing, a number, some numbers or a text.
using Cell = std::variant<std::monostate, bool, i64, u64, double, std::span<const double>, std::string>;

Cell linkOf(const Input& input) {
    if (const Node* node = input.nodeValue())
        return std::string(node->key().view());
    if (const Output* output = input.connection())
        return std::string(output->label().view());
    return {};
}

Cell cellOf(const Input& input) {
    const AttrData& value = input.value();
    switch (valueKind(input.type())) {
    case ValueKind::Bool:
        return value.asBool();
    case ValueKind::Int:
        return value.asInt();
    case ValueKind::UInt:
        return value.asUInt();
    case ValueKind::Real:
        return value.asReal();
    case ValueKind::Components:
        return value.components();
    case ValueKind::String:
        return std::string(value.asString());
    case ValueKind::Null:
    case ValueKind::Node:
        return linkOf(input);
    case ValueKind::Buffer:
    case ValueKind::Array:
    case ValueKind::Object:
        break;
    }
    throw ColumnError(std::string(input.label().view()) + " is a " + attrTypeName(input.type()) +
                      ", not a single value: use query()");
}

template <class To, class From> To exactly(From number) {
    if constexpr (std::is_same_v<To, double> && std::is_integral_v<From> && sizeof(From) == sizeof(double))
        if (!isExactReal(number))
            throw ColumnError("an integer beyond 2**53 among real numbers would be rounded: use query()");
    return static_cast<To>(number);
}

// Adds cells one by one and widens the column where it has to.
class ColumnBuilder {
public:
    void add(const PathMatch& match) {
        switch (match.kind) {
        case PathMatch::Kind::NodeName:
        case PathMatch::Kind::Node:
            return add(Cell(std::string(match.node->key().view())));
        case PathMatch::Kind::NodeType:
            return add(Cell(std::string(match.node->type().view())));
        case PathMatch::Kind::Input:
            if (kind_ == Kind::Real && match.input->type() == AttrType::Real) // most of most columns
                return addReal(match.input->value().asReal());
            return add(cellOf(*match.input));
        case PathMatch::Kind::Count:
            return add(Cell(static_cast<i64>(match.count)));
        case PathMatch::Kind::Slice:
        case PathMatch::Kind::BufferElement:
            break;
        }
        throw ColumnError("elements of " + std::string(match.input->label().view()) + " are no column: use query()");
    }

    [[nodiscard]] Column finish() {
        if (!kind_) // nothing but missing values
            column_.values = std::vector<double>(rows_, std::numeric_limits<double>::quiet_NaN());
        return std::move(column_);
    }

private:
    enum class Kind { Bool, Int, UInt, Real, Rows, Text };

    void add(const Cell& cell) {
        if (std::holds_alternative<std::monostate>(cell))
            addMissing();
        else
            addValue(cell);
        ++rows_;
    }

    void addReal(double real) {
        std::get<std::vector<double>>(column_.values).push_back(real);
        ++rows_;
    }

    void addValue(const Cell& cell) {
        const Kind kind = kindOf(cell);
        if (!kind_)
            begin(kind, cell);
        else if (*kind_ != kind)
            widen(kind);
        std::visit([&](auto& values) { append(values, cell); }, column_.values);
    }

    static Kind kindOf(const Cell& cell) { return static_cast<Kind>(cell.index() - 1); }

    void begin(Kind kind, const Cell& cell) {
        kind_ = rows_ != 0 && kind < Kind::Real ? Kind::Real : kind;
        if (const auto* row = std::get_if<std::span<const double>>(&cell)) {
            width_ = row->size();
            column_.rowShape = shapeOfComponents(width_);
        }
        switch (*kind_) {
        case Kind::Bool:
            column_.values = std::vector<u8>();
            break;
        case Kind::Int:
            column_.values = std::vector<i64>();
            break;
        case Kind::UInt:
            column_.values = std::vector<u64>();
            break;
        case Kind::Real:
        case Kind::Rows:
            column_.values = std::vector<double>(rows_ * width_, std::numeric_limits<double>::quiet_NaN());
            break;
        case Kind::Text:
            column_.values = std::vector<Text>(rows_);
            break;
        }
    }

    // Numbers of different types become reals, truth values and integers integers.
    void widen(Kind kind) {
        if (*kind_ >= Kind::Rows || kind >= Kind::Rows)
            throw ColumnError("the values have no common type: there are " + std::string(nameOf(*kind_)) + " and " +
                              nameOf(kind));
        const Kind wider = *kind_ == Kind::Bool ? kind : kind == Kind::Bool ? *kind_ : Kind::Real;
        if (wider == *kind_)
            return;
        if (wider == Kind::Int)
            widenTo<i64>();
        else if (wider == Kind::UInt)
            widenTo<u64>();
        else
            widenTo<double>();
        kind_ = wider;
    }

    template <class To> void widenTo() {
        column_.values = std::visit(
            [](const auto& values) {
                std::vector<To> wider;
                wider.reserve(values.capacity());
                if constexpr (!std::is_same_v<std::decay_t<decltype(values)>, std::vector<Text>>)
                    for (const auto value : values)
                        wider.push_back(exactly<To>(value));
                return wider;
            },
            column_.values);
    }

    void addMissing() {
        column_.missing.push_back(rows_);
        if (!kind_)
            return;
        if (*kind_ < Kind::Real) {
            widenTo<double>();
            kind_ = Kind::Real;
        }
        if (auto* reals = std::get_if<std::vector<double>>(&column_.values))
            reals->insert(reals->end(), width_, std::numeric_limits<double>::quiet_NaN());
        else
            std::get<std::vector<Text>>(column_.values).emplace_back();
    }

    template <class T> void append(std::vector<T>& values, const Cell& cell) {
        if constexpr (std::is_same_v<T, Text>) {
            values.emplace_back(std::get<std::string>(cell));
        } else if (const auto* row = std::get_if<std::span<const double>>(&cell)) {
            if (row->size() != width_)
                throw ColumnError("the values have " + std::to_string(width_) + " and " + std::to_string(row->size()) +
                                  " numbers");
            for (const double number : *row)
                values.push_back(static_cast<T>(number));
        } else {
            std::visit(
                [&](const auto& number) {
                    if constexpr (std::is_arithmetic_v<std::decay_t<decltype(number)>>)
                        values.push_back(exactly<T>(number));
                },
                cell);
        }
    }

    static const char* nameOf(Kind kind) {
        return kind == Kind::Text ? "texts" : kind == Kind::Rows ? "vectors" : "numbers";
    }

    Column column_;
    std::optional<Kind> kind_;
    std::size_t rows_ = 0;
    std::size_t width_ = 1; // numbers of a value
};

template <class T>
nb::object arrayOfNumbers(const std::shared_ptr<const Column>& column, const std::vector<T>& values,
                          nb::dlpack::dtype dtype) {
    using Kept = std::shared_ptr<const Column>;
    const nb::capsule owner(new Kept(column), [](void* kept) noexcept { delete static_cast<Kept*>(kept); });
    std::vector<std::size_t> shape = column->rowShape;
    shape.insert(shape.begin(), column->length());
    static T nothing{};
    const T* data = values.empty() ? &nothing : values.data();
    return nb::ndarray<nb::numpy, nb::ro>(data, shape.size(), shape.data(), owner, nullptr, dtype,
                                          nb::device::cpu::value, 0, 'C')
        .cast();
}

nb::object arrayOfTexts(const std::vector<Text>& texts) {
    nb::list items;
    for (const Text& text : texts)
        items.append(text ? nb::object(str(*text)) : nb::none());
    nb::object array = imported("numpy", "array")(items, nb::arg("dtype") = imported("builtins", "object"));
    array.attr("setflags")(nb::arg("write") = false);
    return array;
}

// A function of one column, and so an attribute of the array: arrays that are computed of it have none. The array is
// read-only, so that Arrow gets what it shows.
nb::object numpyArray(const std::shared_ptr<const Column>& column) {
    const auto arrayOf = [&](const auto& values) {
        using T = typename std::decay_t<decltype(values)>::value_type;
        if constexpr (std::is_same_v<T, Text>)
            return arrayOfTexts(values);
        else // truth values are bytes
            return arrayOfNumbers(column, values, std::is_same_v<T, u8> ? nb::dtype<bool>() : nb::dtype<T>());
    };
    nb::object array = std::visit(arrayOf, column->values);
    array = array.attr("view")(imported("vrn._arrays", "Column"));
    array.attr("__arrow_c_array__") = nb::cpp_function([column](nb::handle) { return arrowCapsules(column); },
                                                       nb::arg("requested_schema").none() = nb::none());
    return array;
}

nb::object column(const Box& box, nb::handle path) {
    needNumpy();
    Column made;
    const inspect::ScenePath parsed = pathFrom(path);
    try {
        const ReadTurn turn(box->turns);
        made = columnOf(box->scene, parsed);
    } catch (const ColumnError& error) {
        raise(PyExc_TypeError, "the column '" + parsed.text + "': " + error.what());
    }
    return numpyArray(std::make_shared<const Column>(std::move(made)));
}

} // namespace

std::size_t Column::length() const {
    std::size_t width = 1;
    for (const std::size_t extent : rowShape)
        width *= extent;
    return std::visit([](const auto& all) { return all.size(); }, values) / width;
}

Column columnOf(const Scene& scene, const inspect::ScenePath& path) {
    ColumnBuilder builder;
    (void)forEachMatch(scene, path, [&](const PathMatch& match) { builder.add(match); });
    return builder.finish();
}

void defineColumns(SceneClass& scene) {
    scene.def(
        "column", &column, nb::arg("path"), nb::sig("def column(self, path: str, /) -> Column"),
        "The values of all inputs that a path matches, as one array, in order.\n\n"
        "Numbers give an array of bool, int64, uint64 or float64; vectors and matrices one of shape (n, k) or "
        "(n, k, k);\n"
        "strings, names of nodes and labels of outputs one of str. What has no value is NaN or None. The array is\n"
        "read-only. pyarrow and nanoarrow take it as it is, with null for what has no value. Raises TypeError if the\n"
        "values have no common type.");
}

} // namespace vrn::python
