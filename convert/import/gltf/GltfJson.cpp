#include "convert/import/gltf/GltfJson.h"

#include "convert/shared/Errors.h"
#include "convert/shared/Floats.h"
#include "convert/shared/GltfNesting.h"
#include "scene/JsonWriter.h"

#include <algorithm>
#include <cmath>

namespace vrn::convert {

using vor::velmo_sdk::impl::JsonText;

namespace {

// Whether arrays and objects are nested more than `maxJsonDepth` levels deep. The text may be invalid.
bool isNestedTooDeeply(std::string_view text) {
    std::size_t depth = 0;
    bool isInString = false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '"')
            isInString = !isInString;
        else if (isInString)
            i += c == '\\' ? 1 : 0;
        else if ((c == '[' || c == '{') && ++depth > maxJsonDepth)
            return true;
        else if ((c == ']' || c == '}') && depth > 0)
            --depth;
    }
    return false;
}

std::string_view viewOf(const JsonValue& text) { return {text.GetString(), text.GetStringLength()}; }

// A step of a JSON pointer.
std::string stepTo(std::string_view name) {
    std::string step = "/";
    for (const char c : name)
        step += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
    return step;
}

// Visits the direct members and elements of a value with the steps to them, until a visit returns true.
template <class Visit> bool visitChildren(const JsonValue& value, Visit visit) {
    if (value.IsObject())
        for (const auto& member : value.GetObject())
            if (visit(viewOf(member.name), member.value))
                return true;
    if (value.IsArray())
        for (u64 i = 0; i < value.Size(); ++i)
            if (visit(std::to_string(i), value[i]))
                return true;
    return false;
}

// Whether `value` is `from` or inside; `pointer` then leads from `from` to it. Recurses at most
// `maxJsonDepth` levels.
bool findPointer(const JsonValue& from, const JsonValue* value, std::string& pointer) {
    if (&from == value)
        return true;
    return visitChildren(from, [&](std::string_view name, const JsonValue& child) {
        if (!findPointer(child, value, pointer))
            return false;
        pointer.insert(0, stepTo(name));
        return true;
    });
}

void writeJson(JsonText& json, const JsonValue& value, std::string_view omitted = "") {
    if (value.IsObject())
        json.object([&] {
            for (const auto& member : value.GetObject()) {
                if (!omitted.empty() && viewOf(member.name) == omitted)
                    continue;
                json.key(viewOf(member.name));
                writeJson(json, member.value);
            }
        });
    else if (value.IsArray())
        json.array([&] {
            for (const JsonValue& element : value.GetArray())
                writeJson(json, element);
        });
    else if (value.IsString())
        json.text(viewOf(value));
    else if (value.IsBool())
        json.boolean(value.GetBool());
    else if (value.IsUint64())
        json.number(value.GetUint64());
    else if (value.IsInt64())
        json.number(value.GetInt64());
    else if (value.IsNumber())
        json.real(value.GetDouble());
    else
        json.null();
}

} // namespace

const GltfValue& GltfValue::required() const {
    if (!value_)
        refuse("it is missing");
    return *this;
}

GltfValue GltfValue::operator[](const char* name) const {
    if (!value_)
        return *this;
    if (!value_->IsObject())
        refuse("it is not an object");
    const JsonValue* member = file_->memberOf(*value_, name);
    if (!member)
        return {*file_, nullptr, value_, name};
    file_->read_.insert(member);
    return {*file_, member, nullptr, nullptr};
}

GltfValue GltfValue::operator[](u64 index) const {
    if (index >= size())
        refuse("it has no element " + std::to_string(index));
    const JsonValue& element = (*value_)[index];
    file_->read_.insert(&element);
    return {*file_, &element, nullptr, nullptr};
}

u64 GltfValue::size() const {
    if (value_ && !value_->IsArray())
        refuse("it is not an array");
    return value_ ? value_->Size() : 0;
}

void GltfValue::forEach(const std::function<void(const GltfValue&, u64)>& visit) const {
    const u64 count = size();
    for (u64 i = 0; i < count; ++i)
        visit((*this)[i], i);
}

void GltfValue::forEachMember(const std::function<void(std::string_view, const GltfValue&)>& visit) const {
    if (!value_)
        return;
    if (!value_->IsObject())
        refuse("it is not an object");
    for (const auto& member : value_->GetObject())
        visit(viewOf(member.name), {*file_, &member.value, nullptr, nullptr});
}

std::string_view GltfValue::text(std::string_view fallback) const {
    if (value_ && !value_->IsString())
        refuse("it is not a string");
    if (!value_)
        return fallback;
    const std::string_view text = viewOf(*value_);
    const std::size_t end = text.find('\0');
    if (end != std::string_view::npos)
        file_->cutTexts_.push_back(value_);
    return text.substr(0, end);
}

bool GltfValue::boolean(bool fallback) const {
    if (value_ && !value_->IsBool())
        refuse("it is neither true nor false");
    return value_ ? value_->GetBool() : fallback;
}

double GltfValue::finite() const {
    if (!value_->IsNumber())
        refuse("it is not a number");
    const double number = value_->GetDouble();
    if (!fitsFloat(number))
        refuse("it exceeds the range of a float");
    return number;
}

double GltfValue::number(double fallback) const { return value_ ? finite() : fallback; }

u64 GltfValue::whole(u64 fallback, u64 limit) const {
    if (!value_)
        return fallback;
    const double number = finite(); // some writers write 3.0
    if (number != std::floor(number) || number < 0)
        refuse("it is not a whole number from 0");
    if (number >= static_cast<double>(limit))
        refuse("it is too large: it must be below " + std::to_string(limit));
    return static_cast<u64>(number);
}

u64 GltfValue::indexIn(const GltfValue& list) const {
    const u64 index = required().whole();
    if (index >= list.size())
        refuse(list.exists() ? "there is no " + list.pointer() + "/" + std::to_string(index)
                             : "there is no /" + std::string(list.name_) + " at all");
    return index;
}

void GltfValue::readNumbers(std::span<double> numbers) const {
    if (!value_)
        return;
    if (size() != numbers.size())
        refuse("it does not have " + std::to_string(numbers.size()) + " numbers");
    for (std::size_t i = 0; i < numbers.size(); ++i)
        numbers[i] = (*this)[i].finite();
}

std::string GltfValue::json(std::string_view omitted) const {
    ignore();
    JsonText json;
    writeJson(json, *value_, omitted);
    return std::string(json.view());
}

void GltfValue::ignore() const {
    if (!value_)
        return;
    file_->read_.insert(value_);
    visitChildren(*value_, [&](std::string_view, const JsonValue& child) {
        GltfValue(*file_, &child, nullptr, nullptr).ignore();
        return false;
    });
}

void GltfValue::ignore(std::initializer_list<const char*> members) const {
    for (const char* member : members)
        (*this)[member].ignore();
}

const std::string& GltfValue::file() const { return file_->path_; }

std::string GltfValue::pointer() const {
    return value_ ? file_->pointerTo(value_) : file_->pointerTo(parent_) + stepTo(name_);
}

void GltfValue::refuse(const std::string& reason) const {
    const std::string place = pointer();
    throw ContentError(file_->path_, (place.empty() ? "/" : place) + ": " + reason);
}

GltfJson::GltfJson(std::string path, std::string_view text) : path_(std::move(path)) {
    if (isNestedTooDeeply(text))
        throw ContentError(path_, "its JSON is nested more than 1000 levels deep");
    document_.Parse<rapidjson::kParseIterativeFlag | rapidjson::kParseFullPrecisionFlag>(text.data(), text.size());
    if (document_.HasParseError())
        throw ContentError(path_, "its JSON is invalid at byte " + std::to_string(document_.GetErrorOffset()));
    if (!document_.IsObject())
        throw ContentError(path_, "its JSON is not an object");
}

const JsonValue* GltfJson::memberOf(const JsonValue& object, std::string_view name) const {
    constexpr rapidjson::SizeType small = 32;
    if (object.MemberCount() <= small) {
        const auto members = object.GetObject();
        const auto found = std::find_if(members.begin(), members.end(),
                                        [&](const auto& member) { return viewOf(member.name) == name; });
        return found - members.end() == 0 ? nullptr : &found->value; // == is ambiguous for RapidJSON's iterators
    }
    auto& members = members_[&object];
    if (members.empty())
        for (const auto& member : object.GetObject())
            members.emplace(viewOf(member.name), &member.value); // the first of several, as above
    const auto found = members.find(name);
    return found == members.end() ? nullptr : found->second;
}

void GltfJson::forEachCutText(const std::function<void(const GltfValue&)>& visit) const {
    std::unordered_set<const JsonValue*> visited;
    for (const JsonValue* text : cutTexts_)
        if (visited.insert(text).second)
            visit({*this, text, nullptr, nullptr});
}

std::string GltfJson::pointerTo(const JsonValue* value) const {
    std::string pointer;
    (void)findPointer(document_, value, pointer);
    return pointer;
}

void GltfJson::forEachUnread(const std::function<void(std::string_view, const std::string&)>& visit) const {
    const std::function<void(const JsonValue&, const std::string&)> walk = [&](const JsonValue& value,
                                                                               const std::string& pointer) {
        visitChildren(value, [&](std::string_view name, const JsonValue& child) {
            const std::string place = pointer + stepTo(name);
            const bool isEmpty = child.IsArray() && child.Empty();
            if (isEmpty || name == "extensions" || read_.contains(&child))
                walk(child, place);
            else
                visit(name, place);
            return false;
        });
    };
    walk(document_, "");
}

} // namespace vrn::convert
