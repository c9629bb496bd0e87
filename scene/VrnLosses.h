// The descriptions in VrnLoss: what a VRN file cannot express.
#pragma once

namespace vor::velmo_sdk::impl::losses {

inline constexpr char comment[] =
    "the comment is left out: it does not begin with `#`, or contains a line end or a byte 0xFF";
inline constexpr char version[] = "no comment states the file version; one is added";
inline constexpr char time[] = "no comment states the file time; one is added";
inline constexpr char unwritableTime[] = "the file time is left out: no comment can state it";
inline constexpr char nodeName[] = "the node is left out: its name or type is not an identifier";
inline constexpr char inputName[] = "the input is left out: its name is not an identifier";
inline constexpr char olderName[] = "the input is left out: its name is an older name of another input";
inline constexpr char linkedName[] = "the link is left out: its target is left out or cannot be named";
inline constexpr char noKeyword[] = "the buffer is left out: its element type has no keyword";
inline constexpr char untypedBuffer[] =
    "the buffer has no element type: only its index and connection, if any, are written";
inline constexpr char untypedElement[] =
    "the element takes the element type of its array: only its index and connection are kept";
inline constexpr char elementType[] =
    "the element type of the array is left out: a reader derives it from the elements";
inline constexpr char markedInput[] = "the value is left out: the input is locked or link-only";
inline constexpr char nanBits[] = "a NaN loses its sign or payload";

} // namespace vor::velmo_sdk::impl::losses
