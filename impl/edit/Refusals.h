// Why edits are refused: the reasons in printf form, which docs/messages.md explains; a test compares the two.
#pragma once

#include "scene/core/String.h"

#include <cstddef>
#include <vector>

namespace vor::velmo_sdk::impl {

// Thrown while an edit is prepared.
struct Refused {
    String reason;
    std::vector<std::size_t> places{}; // offsets in the text before the edit
};

namespace refusals {

inline constexpr char unreadable[] = "the text cannot be edited before this error is corrected: %s";
inline constexpr char notAccepted[] = "the reader does not accept '%s': %s";
inline constexpr char notOneStatement[] = "'%s' is not one statement that sets an input of a named node";
inline constexpr char noNode[] = "there is no node '%s'";
inline constexpr char noInput[] = "there is no input '%s'";
inline constexpr char notName[] = "'%s' is not a name: use letters, digits and _, and do not begin with a digit";
inline constexpr char nameInUse[] = "the name '%s' is in use";
inline constexpr char keywordType[] = "'%s' begins another statement and cannot be a type";
inline constexpr char stillInUse[] = "'%s' is in use";
inline constexpr char notLastElement[] = "'%s' is not the last element of its array: others would get its index";
inline constexpr char notInText[] =
    "no statement creates '%s'; it comes from a definition, the catalogue or a later index";
inline constexpr char changesMore[] = "the edit would also change '%s'";
inline constexpr char changesValue[] = "'%s' would not become what is asked for, because of other statements";
inline constexpr char newDiagnostic[] = "the edit would lead to a new diagnostic: %s";

} // namespace refusals

} // namespace vor::velmo_sdk::impl
