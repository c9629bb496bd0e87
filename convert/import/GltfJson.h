// Access to untrusted glTF JSON: every function checks types and bounds.
#pragma once

#include "scene/RapidJson.h"

#include "convert/shared/SceneNames.h"

#include <optional>
#include <rapidjson/document.h>
#include <string>
#include <string_view>

namespace vrn::convert {

using GltfAllocator = rapidjson::MemoryPoolAllocator<vor::velmo_sdk::impl::JsonAllocator>;
using GltfDocument = rapidjson::GenericDocument<rapidjson::UTF8<>, GltfAllocator, vor::velmo_sdk::impl::JsonAllocator>;
using GltfValue = GltfDocument::ValueType;

// The member of that name; null if there is none or if `object` is null or not an object.
template <class Value> [[nodiscard]] Value* memberOf(Value* object, const char* name) {
    if (!object || !object->IsObject())
        return nullptr;
    const auto member = object->FindMember(name);
    const bool exists = member - object->MemberEnd() != 0; // operator!= of RapidJSON's iterators is ambiguous in C++20
    return exists ? &member->value : nullptr;
}

[[nodiscard]] inline std::optional<u64> numberIn(const GltfValue& object, const char* name) {
    const GltfValue* member = memberOf(&object, name);
    return member && member->IsUint64() ? std::optional<u64>(member->GetUint64()) : std::nullopt;
}

[[nodiscard]] inline std::string_view textIn(const GltfValue& object, const char* name) {
    const GltfValue* member = memberOf(&object, name);
    return member && member->IsString() ? std::string_view(member->GetString(), member->GetStringLength()) : "";
}

// The object at `index` of the array `name`, or null.
template <class Value> [[nodiscard]] Value* itemOf(Value& object, const char* name, std::optional<u64> index) {
    Value* list = memberOf(&object, name);
    if (!list || !list->IsArray() || !index || *index >= list->Size())
        return nullptr;
    Value& item = (*list)[static_cast<rapidjson::SizeType>(*index)];
    return item.IsObject() ? &item : nullptr;
}

} // namespace vrn::convert
