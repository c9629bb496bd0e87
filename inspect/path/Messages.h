// What can be wrong with a path, in printf form. docs/messages.md explains each of them; a test compares the two.
#pragma once

namespace vrn::inspect::messages {

inline constexpr char malformedPath[] = "at byte %llu: %s";
inline constexpr char expectedStep[] = "expected . or [";
inline constexpr char expectedName[] = "expected a name";
inline constexpr char expectedIndex[] = "expected an index, a slice such as 2:5, or *";
inline constexpr char expectedBracket[] = "expected ]";
inline constexpr char invalidIndex[] = "invalid index";
inline constexpr char pathWithoutNode[] = "not found: the scene has no such node%s";
inline constexpr char pathWithoutEnd[] = "not found below %s%s";

} // namespace vrn::inspect::messages
