// Reads the links of nodes, and sets inputs of new nodes and members of their objects.
#pragma once

#include "convert/shared/SceneNames.h"

#include <span>
#include <string_view>

namespace vrn::convert {

// The node that an input is connected to or refers to; null if there is none or no input.
[[nodiscard]] inline const Node* linkedNode(const Input* input) { return input ? input->linkedNode() : nullptr; }

void set(Node& node, const char* name, AttrData value);
void setMember(Input& object, const char* name, AttrData value);
void setText(Node& node, const char* name, std::string_view text);
void setNumbers(Node& node, const char* name, AttrType type, std::span<const double> numbers);
void setReference(Node& node, const char* name, Node& target);
void connect(Node& node, const char* name, Node& source, const char* output); // ignored without such an output

// The same for a path, whose parts before the last are objects: `alpha.mode`.
void setAt(Node& node, std::string_view path, AttrData value);
void connectAt(Node& node, std::string_view path, Node& source, const char* output);

// Appends an object to the array at a path. Null if the array is as long as the limits of the scene allow.
[[nodiscard]] Input* appendObject(Node& node, std::string_view path);

// A value of `type` with its components set; `numbers` may be longer.
[[nodiscard]] AttrData valueOf(AttrType type, std::span<const double> numbers);

} // namespace vrn::convert
