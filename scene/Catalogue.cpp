#include "scene/Catalogue.h"

#include "scene/syntax/Identifier.h"

#include <algorithm>

namespace vor::velmo_sdk::impl {

AttrData InputType::initialValue() const {
    if (type == AttrType::Buffer)
        return AttrData::buffer(dataType);
    if (type == AttrType::Array)
        return AttrData::array(elementType);
    return defaultValue.type() == type ? defaultValue : AttrData::zero(type);
}

String NodeType::current(const Renames& renames, const String& name) {
    const auto found = renames.find(name.view());
    return found == renames.end() ? name : found->second;
}

std::optional<std::string> NodeType::inText(const Renames& renames, const String& name) {
    if (current(renames, name) == name)
        return std::string(name.view());
    const auto leadsToIt = [&](const auto& rename) { return rename.second == name && isIdentifier(rename.first); };
    const auto older = std::ranges::find_if(renames, leadsToIt);
    return older == renames.end() ? std::nullopt : std::optional(older->first);
}

void Catalogue::add(NodeType type) { types_.insert_or_assign(std::string(type.name().view()), std::move(type)); }

const NodeType* Catalogue::find(std::string_view name) const noexcept {
    const auto found = types_.find(name);
    return found == types_.end() ? nullptr : &found->second;
}

std::vector<std::string_view> Catalogue::typeNames() const {
    std::vector<std::string_view> names;
    for (const auto& [name, type] : types_)
        names.push_back(name);
    return names;
}

} // namespace vor::velmo_sdk::impl
