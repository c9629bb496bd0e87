#include "python/src/Buffers.h"

#include "impl/BufferType.h"
#include "inspect/value/ValueText.h"
#include "python/src/Values.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

namespace vrn::python {

using inspect::dataTypeText;
using vor::velmo_sdk::impl::bufferType;

namespace {

using View = nb::ndarray<nb::ro, nb::c_contig, nb::device::cpu>;

// The types of components that buffers have.
struct NumberRow {
    DataType type;
    const char* name; // of the numpy type
    nb::dlpack::dtype dtype;
};
constexpr std::array<NumberRow, 11> numberRows = {{
    {DataType::Bool, "bool", nb::dtype<bool>()},
    {DataType::Char, "int8", nb::dtype<vor::i8>()},
    {DataType::Byte, "uint8", nb::dtype<vor::u8>()},
    {DataType::Int16, "int16", nb::dtype<vor::i16>()},
    {DataType::Int32, "int32", nb::dtype<vor::i32>()},
    {DataType::Int64, "int64", nb::dtype<vor::i64>()},
    {DataType::UInt16, "uint16", nb::dtype<vor::u16>()},
    {DataType::UInt32, "uint32", nb::dtype<vor::u32>()},
    {DataType::UInt64, "uint64", nb::dtype<vor::u64>()},
    {DataType::Float, "float32", nb::dtype<float>()},
    {DataType::Double, "float64", nb::dtype<double>()},
}};

// The row of the components of an element type; null for types without numbers.
const NumberRow* numberRow(DataType type) {
    const DataType component = elementLayout(type).componentType;
    const auto* row = std::ranges::find(numberRows, component, &NumberRow::type);
    return row == numberRows.end() ? nullptr : row;
}

const NumberRow& numbersOf(const Input& input) {
    if (input.type() != AttrType::Buffer)
        raise(PyExc_TypeError, labelOf(input) + " is a " + attrTypeName(input.type()) + ", not a Buffer");
    const NumberRow* row = numberRow(input.dataType());
    if (!row)
        raise(PyExc_TypeError, labelOf(input) + " is a buffer without an element type");
    return *row;
}

// Owns a share of the memory of a buffer.
nb::capsule ownerOf(AttrData share) {
    auto* kept = new AttrData(std::move(share));
    return nb::capsule(kept, [](void* memory) noexcept { delete static_cast<AttrData*>(memory); });
}

// Whether numpy is installed. The import runs without the guard of a C++ static, for which other threads
// would wait with the GIL.
bool hasNumpy() {
    static int known = -1; // guarded by the GIL
    if (known < 0) {
        try {
            (void)nb::module_::import_("numpy");
            known = 1;
        } catch (nb::python_error& error) {
            if (!error.matches(PyExc_ImportError))
                throw;
            known = 0;
        }
    }
    return known == 1;
}

// What an array is made of. Keeps nothing of the input, which can be removed while Python code runs.
class ArrayParts {
public:
    explicit ArrayParts(const Input& input)
        : numbers_(numbersOf(input)), shape_(elementShape(input.dataType())), share_(input.value().share()) {
        shape_.insert(shape_.begin(), share_.count());
    }

    // Leaves the memory to the input.
    void copy() { (void)share_.bytes(); }

    template <class Array> [[nodiscard]] nb::object array() && {
        static constinit std::byte nothing[sizeof(double)] = {};
        const std::byte* bytes = std::as_const(share_).bytes().data();
        void* data = const_cast<std::byte*>(bytes ? bytes : nothing); // Array says whether it may be written
        return Array(data, shape_.size(), shape_.data(), ownerOf(std::move(share_)), nullptr, numbers_.dtype,
                     nb::device::cpu::value, 0, 'C')
            .cast();
    }

private:
    const NumberRow& numbers_;
    std::vector<std::size_t> shape_;
    AttrData share_;
};

ArrayParts partsOf(const Box& box, const Input& input) {
    ArrayParts parts(input);
    if (box->edited.contains(&input))
        parts.copy();
    return parts;
}

nb::object readOnlyArray(ArrayParts parts) { return std::move(parts).array<nb::ndarray<nb::ro, nb::array_api>>(); }

// An array of the type and shape that the buffer needs.
View fitting(nb::handle values, DataType type) {
    const NumberRow* row = numberRow(type);
    if (!row)
        raise(PyExc_TypeError, "a buffer of " + dataTypeText(type) + " has no numbers");
    const std::vector<std::size_t> shape = elementShape(type);
    View view;
    if (!isArray(values) || !nb::try_cast(values, view) || view.dtype() != row->dtype ||
        view.ndim() != shape.size() + 1 ||
        !std::ranges::equal(shape, std::span(view.shape_ptr() + 1, shape.size()), {}, {},
                            [](auto n) { return static_cast<std::size_t>(n); })) {
        needNumpy();
        nb::list extents;
        for (const std::size_t n : shape)
            extents.append(n);
        const nb::object made =
            imported("vrn._arrays", "for_buffer")(values, row->name, nb::tuple(extents), dataTypeText(type));
        view = nb::cast<View>(made);
    }
    return view;
}

// The element type that an array has by itself.
DataType typeOf(nb::handle values) {
    needNumpy();
    return *bufferType(textOf(imported("vrn._arrays", "keyword_of")(values)));
}

} // namespace

nb::object arrayOf(const Box& box, const Input& input) {
    ArrayParts parts = partsOf(box, input);
    if (hasNumpy())
        return std::move(parts).array<nb::ndarray<nb::ro, nb::numpy>>();
    return nb::steal(PyMemoryView_FromObject(readOnlyArray(std::move(parts)).ptr()));
}

nb::object bufferOf(const Box& box, const Input& input) { return readOnlyArray(partsOf(box, input)); }

nb::object writableArrayOf(Input& input) {
    (void)numbersOf(input);
    (void)input.bytes(); // its own, if there are views
    return ArrayParts(input).array<nb::ndarray<nb::numpy>>();
}

nb::object bytesOf(AttrData buffer) {
    const std::span<const std::byte> bytes = std::as_const(buffer).bytes();
    const std::size_t size = bytes.size();
    return nb::ndarray<nb::ro, nb::array_api>(bytes.data(), 1, &size, ownerOf(std::move(buffer)), nullptr,
                                              nb::dtype<vor::u8>(), nb::device::cpu::value, 0, 'C')
        .cast();
}

void needNumpy() {
    if (!hasNumpy())
        raise(PyExc_ImportError, "arrays need numpy: pip install vrn[numpy]");
}

std::optional<std::size_t> dimensionsOf(nb::handle value) {
    if (nb::isinstance<InputReference>(value) || PyBytes_Check(value.ptr()) || !nb::ndarray_check(value))
        return std::nullopt;
    nb::ndarray<nb::ro> array;
    return nb::try_cast(value, array) ? std::optional(array.ndim()) : std::nullopt;
}

bool isArray(nb::handle value) { return dimensionsOf(value).has_value(); }

AttrData bufferFrom(nb::handle values, DataType type) {
    if (type == DataType::Null)
        type = typeOf(values);
    const View view = fitting(values, type);
    AttrData buffer = AttrData::buffer(type, view.shape(0));
    if (view.nbytes() != 0)
        std::memcpy(buffer.bytes().data(), view.data(), view.nbytes());
    return buffer;
}

AttrData adoptedBuffer(const Adopted& adopted, DataType type) {
    if (type == DataType::Null)
        type = typeOf(adopted.array);
    View view = fitting(adopted.array, type);
    View given;
    const bool isSame = nb::try_cast(adopted.array, given) && given.data() == view.data();
    const std::size_t alignment = elementLayout(type).componentSize;
    if (!isSame || reinterpret_cast<std::uintptr_t>(given.data()) % alignment != 0)
        raise(PyExc_TypeError, "an array of another type, order or alignment cannot be adopted as " +
                                   dataTypeText(type) + " without a copy");
    adopted.array.attr("setflags")(nb::arg("write") = false);
    return AttrData::adopt(type, given.shape(0), given.data(), keeperOf(std::move(view)));
}

std::vector<std::size_t> shapeOfComponents(std::size_t count) {
    if (count <= 1)
        return {};
    if (count == 9)
        return {3, 3};
    if (count == 16)
        return {4, 4};
    return {count};
}

std::vector<std::size_t> elementShape(DataType type) { return shapeOfComponents(elementLayout(type).components); }

const char* numberName(DataType type) {
    const NumberRow* row = numberRow(type);
    return row ? row->name : nullptr;
}

} // namespace vrn::python
