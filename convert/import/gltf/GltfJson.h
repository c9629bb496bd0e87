// The JSON of a glTF file, whose content is not trusted.
//
//     GltfJson json(path, text);
//     const GltfValue accessor = json.root()["accessors"][3];
//     const u64 count = accessor["count"].required().whole();
//
// A member that does not exist is an absent value: it yields fallbacks, and so do its own members. A value of another
// type than the requested one is refused: a ContentError names its place as a JSON pointer (RFC 6901). The requested
// members are remembered, so that forEachUnread() lists in the end what nobody has read.
#pragma once

#include "scene/RapidJson.h"

#include "convert/shared/SceneNames.h"

#include <array>
#include <functional>
#include <rapidjson/document.h>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace vrn::convert {

class GltfJson;

using JsonPool = rapidjson::MemoryPoolAllocator<vor::velmo_sdk::impl::JsonAllocator>;
using JsonDocument = rapidjson::GenericDocument<rapidjson::UTF8<>, JsonPool, vor::velmo_sdk::impl::JsonAllocator>;
using JsonValue = JsonDocument::ValueType;

class GltfValue {
public:
    [[nodiscard]] bool exists() const noexcept { return value_ != nullptr; }

    // Refuses an absent value.
    const GltfValue& required() const;

    // The member of an object or the element of an array.
    [[nodiscard]] GltfValue operator[](const char* name) const;
    [[nodiscard]] GltfValue operator[](u64 index) const;
    [[nodiscard]] GltfValue extension(const char* name) const { return (*this)["extensions"][name]; }

    // The number of elements of an array, and calls with each element and its index, or with each member and its name;
    // members do not count as read by that.
    [[nodiscard]] u64 size() const;
    void forEach(const std::function<void(const GltfValue&, u64)>& visit) const;
    void forEachMember(const std::function<void(std::string_view, const GltfValue&)>& visit) const;

    // Values, or the fallback if this value is absent. Texts end before a character U+0000. Numbers are finite as
    // floats; whole() is in [0, limit), and an index is one of `list`, an array.
    [[nodiscard]] std::string_view text(std::string_view fallback = "") const;
    [[nodiscard]] bool boolean(bool fallback) const;
    [[nodiscard]] double number(double fallback) const;
    [[nodiscard]] u64 whole(u64 fallback = 0, u64 limit = u64(1) << 53) const;
    [[nodiscard]] u64 indexIn(const GltfValue& list) const;
    template <std::size_t N> [[nodiscard]] std::array<double, N> numbers(std::array<double, N> fallback) const {
        readNumbers(fallback);
        return fallback;
    }

    [[nodiscard]] bool isObject() const noexcept { return value_ && value_->IsObject(); }
    [[nodiscard]] bool isArray() const noexcept { return value_ && value_->IsArray(); }
    [[nodiscard]] bool isText() const noexcept { return value_ && value_->IsString(); }
    [[nodiscard]] bool isNumber() const noexcept { return value_ && value_->IsNumber(); }
    [[nodiscard]] bool isBoolean() const noexcept { return value_ && value_->IsBool(); }

    // Compact JSON of the whole value, all of which counts as read. Of an object, without the member `omitted`.
    [[nodiscard]] std::string json(std::string_view omitted = "") const;

    // Counts a value and its members as read: what they say is known or needless.
    void ignore() const;
    void ignore(std::initializer_list<const char*> members) const;

    // The path of the glTF file, and the place in it.
    [[nodiscard]] const std::string& file() const;
    [[nodiscard]] std::string pointer() const;
    [[noreturn]] void refuse(const std::string& reason) const;

private:
    friend class GltfJson;
    GltfValue(const GltfJson& file, const JsonValue* value, const JsonValue* parent, const char* name)
        : file_(&file), value_(value), parent_(parent), name_(name) {}

    void readNumbers(std::span<double> numbers) const;
    [[nodiscard]] double finite() const;

    const GltfJson* file_;
    const JsonValue* value_;  // null: absent
    const JsonValue* parent_; // of an absent value: the object without the member `name_`
    const char* name_;
};

class GltfJson {
public:
    // Throws ContentError if the text is not JSON, is nested more than 1000 levels deep or is not an object.
    GltfJson(std::string path, std::string_view text);

    [[nodiscard]] GltfValue root() const { return {*this, &document_, nullptr, nullptr}; }
    [[nodiscard]] const std::string& path() const noexcept { return path_; }

    // Calls `visit` with each text that was read and goes on after a character U+0000, with which texts of scenes end.
    void forEachCutText(const std::function<void(const GltfValue&)>& visit) const;

    // Calls `visit` with the name and the pointer of each member that was not read. Members of unread members are not
    // listed.
    void forEachUnread(const std::function<void(std::string_view, const std::string&)>& visit) const;

private:
    friend class GltfValue;
    [[nodiscard]] std::string pointerTo(const JsonValue* value) const;

    // The member of an object; null if there is none. Amortized constant time: the first query of a large object takes
    // time linear in its members.
    [[nodiscard]] const JsonValue* memberOf(const JsonValue& object, std::string_view name) const;

    std::string path_;
    JsonDocument document_;
    mutable std::unordered_set<const JsonValue*> read_;
    mutable std::vector<const JsonValue*> cutTexts_; // some of them several times
    // The members of large objects, for those that were queried.
    mutable std::unordered_map<const JsonValue*, std::unordered_map<std::string_view, const JsonValue*>> members_;
};

} // namespace vrn::convert
