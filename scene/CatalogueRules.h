// The members of a catalogue that only say what to expect of a scene.
#pragma once

#include "scene/Catalogue.h"
#include "scene/PositionedJson.h"

namespace vor::velmo_sdk::impl {

// Reads a member of an input of a known type; returns false if it is another member.
[[nodiscard]] bool readRule(const JsonValue& member, InputType& input);

// Checks the rules of an input that depend on each other. `value` is the whole input.
void expectConsistentRules(const JsonValue& value, const InputType& input);

// Checks that all paths of `type` lead to inputs that it declares. `inputs` is the member "inputs" that it was read
// from.
void expectPathsToLead(const JsonValue& inputs, const NodeType& type);

} // namespace vor::velmo_sdk::impl
