#include "python/src/ArrowColumn.h"

#include "scene/core/TextEncoding.h"

#include <cstdint>
#include <memory>
#include <utility>

namespace vrn::python {

namespace {

// The structures of Arrow's C data interface. Their layout is an ABI.
struct ArrowSchema {
    const char* format;
    const char* name;
    const char* metadata;
    std::int64_t flags;
    std::int64_t childCount;
    ArrowSchema** children;
    ArrowSchema* dictionary;
    void (*release)(ArrowSchema*);
    void* parts;
};
struct ArrowArray {
    std::int64_t length;
    std::int64_t nullCount;
    std::int64_t offset;
    std::int64_t bufferCount;
    std::int64_t childCount;
    const void** buffers;
    ArrowArray** children;
    ArrowArray* dictionary;
    void (*release)(ArrowArray*);
    void* parts;
};
constexpr std::int64_t isNullable = 2; // in the flags of a schema

// What belongs to one of these structures. A reader may move the child out of it and keep only that.
struct SchemaParts {
    std::string format;
    ArrowSchema child{};
    ArrowSchema* children[1] = {&child};
};
struct ArrayParts {
    std::shared_ptr<const Column> column{};
    std::vector<vor::u8> present{}; // a bit for each value
    std::vector<vor::u8> bits{};    // truth values
    std::vector<std::int64_t> offsets{};
    std::string characters{};
    const void* buffers[3] = {};
    ArrowArray child{};
    ArrowArray* children[1] = {&child};
};

template <class Structure, class Parts> void release(Structure* structure) {
    auto* parts = static_cast<Parts*>(structure->parts);
    if (parts->child.release)
        parts->child.release(&parts->child);
    delete parts;
    structure->release = nullptr;
}

const char* formatOfValues(const Column& column) {
    constexpr const char* formats[] = {"b", "l", "L", "g", "U"}; // in the order of the variant
    return formats[column.values.index()];
}

// The schema below so many levels of lists.
void describe(ArrowSchema& schema, const Column& column, std::size_t level) {
    auto parts = std::make_unique<SchemaParts>();
    const bool isList = level < column.rowShape.size();
    parts->format = isList ? "+w:" + std::to_string(column.rowShape[level]) : formatOfValues(column);
    schema = {.format = parts->format.c_str(),
              .name = level == 0 ? "" : "item",
              .metadata = nullptr,
              .flags = level == 0 ? isNullable : 0,
              .childCount = isList ? 1 : 0,
              .children = isList ? parts->children : nullptr,
              .dictionary = nullptr,
              .release = &release<ArrowSchema, SchemaParts>,
              .parts = parts.get()};
    SchemaParts& kept = *parts.release();
    if (isList)
        describe(kept.child, column, level + 1);
}

void setBit(std::vector<vor::u8>& bits, std::size_t at) { bits[at / 8] |= static_cast<vor::u8>(1 << at % 8); }

std::vector<vor::u8> packed(const std::vector<vor::u8>& truths) {
    std::vector<vor::u8> bits(truths.size() / 8 + 1);
    for (std::size_t i = 0; i < truths.size(); ++i)
        if (truths[i])
            setBit(bits, i);
    return bits;
}

std::vector<vor::u8> presenceOf(const Column& column) {
    std::vector<vor::u8> bits(column.length() / 8 + 1, 0xff);
    for (const std::size_t row : column.missing)
        bits[row / 8] &= static_cast<vor::u8>(~(1 << row % 8));
    return bits;
}

void appendUtf8(std::string& to, std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = vor::utf8Length(text);
        to += length ? text.substr(0, length) : "\xef\xbf\xbd";
        text.remove_prefix(length ? length : 1);
    }
}

void placeTexts(ArrayParts& parts, const std::vector<Text>& texts) {
    parts.offsets = {0};
    for (const Text& text : texts) {
        if (text)
            appendUtf8(parts.characters, *text);
        parts.offsets.push_back(static_cast<std::int64_t>(parts.characters.size()));
    }
    parts.buffers[1] = parts.offsets.data();
    parts.buffers[2] = parts.characters.data();
}

void placeValues(ArrayParts& parts) {
    if (const auto* truths = std::get_if<std::vector<vor::u8>>(&parts.column->values)) {
        parts.bits = packed(*truths);
        parts.buffers[1] = parts.bits.data();
    } else if (const auto* texts = std::get_if<std::vector<Text>>(&parts.column->values)) {
        placeTexts(parts, *texts);
    } else {
        parts.buffers[1] =
            std::visit([](const auto& numbers) -> const void* { return numbers.data(); }, parts.column->values);
    }
}

// The array below so many levels of lists: `length` values or lists.
void fill(ArrowArray& array, const std::shared_ptr<const Column>& column, std::size_t length, std::size_t level) {
    auto owned = std::make_unique<ArrayParts>();
    owned->column = column;
    const bool isList = level < column->rowShape.size();
    const std::size_t missing = level == 0 ? column->missing.size() : 0;
    array = {.length = static_cast<std::int64_t>(length),
             .nullCount = static_cast<std::int64_t>(missing),
             .offset = 0,
             .bufferCount = isList                                                      ? 1
                            : std::holds_alternative<std::vector<Text>>(column->values) ? 3
                                                                                        : 2,
             .childCount = isList ? 1 : 0,
             .buffers = owned->buffers,
             .children = isList ? owned->children : nullptr,
             .dictionary = nullptr,
             .release = &release<ArrowArray, ArrayParts>,
             .parts = owned.get()};
    ArrayParts& parts = *owned.release();
    if (missing != 0) {
        parts.present = presenceOf(*column);
        parts.buffers[0] = parts.present.data();
    }
    if (isList)
        fill(parts.child, column, length * column->rowShape[level], level + 1);
    else
        placeValues(parts);
}

// Releases a structure that no reader has taken.
template <class Structure> struct Releasing {
    void operator()(Structure* structure) const {
        if (structure->release)
            structure->release(structure);
        delete structure;
    }
};
template <class Structure> using Owned = std::unique_ptr<Structure, Releasing<Structure>>;

template <class Structure> nb::object capsule(Owned<Structure> structure, const char* name) {
    PyObject* made = PyCapsule_New(structure.get(), name, [](PyObject* object) {
        Releasing<Structure>()(static_cast<Structure*>(PyCapsule_GetPointer(object, PyCapsule_GetName(object))));
    });
    if (!made)
        throw nb::python_error();
    (void)structure.release();
    return nb::steal(made);
}

} // namespace

nb::tuple arrowCapsules(std::shared_ptr<const Column> column) {
    Owned<ArrowSchema> schema(new ArrowSchema{});
    describe(*schema, *column, 0);
    Owned<ArrowArray> array(new ArrowArray{});
    fill(*array, column, column->length(), 0);
    return nb::make_tuple(capsule(std::move(schema), "arrow_schema"), capsule(std::move(array), "arrow_array"));
}

} // namespace vrn::python
