// What a VRN text cannot say, in words.
#pragma once

namespace vor::velmo_sdk::impl::losses {

inline constexpr char comment[] = "a comment that is no `#` and one line is left out";
inline constexpr char version[] = "the file version is in no comment; one is added";
inline constexpr char time[] = "the file time is in no comment; one is added";
inline constexpr char foreignTime[] = "the file time cannot stand in a comment";
inline constexpr char nodeName[] = "the node is left out: its name or its type is no identifier";
inline constexpr char inputName[] = "the input is left out: its name is no identifier";
inline constexpr char olderName[] = "the input is left out: its name is an older one of another input";
inline constexpr char linkedName[] = "the link is left out: what it leads to is, or has a name that no text can have";
inline constexpr char noKeyword[] = "the buffer is left out: there is no keyword for its element type";
inline constexpr char untypedBuffer[] = "the buffer is left out, or gets the type of others: it has no element type";
inline constexpr char untypedElement[] = "the element is empty or missing: in an array with a type it has none";
inline constexpr char elementType[] = "the element type of the array is that of its elements, if any";
inline constexpr char markedInput[] = "the value is left out: the input is marked as taking none";
inline constexpr char foreignNaN[] = "a NaN loses its sign or what else its bits say";

} // namespace vor::velmo_sdk::impl::losses
