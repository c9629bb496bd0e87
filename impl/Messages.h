// Every text that the reader reports, in printf form, with its severity. docs/messages.md says of each
// what causes it and what to do; a test holds the two together. Where a number may be larger than an
// `int` its conversion says so; what is printed is the same.
#pragma once

#include "scene/core/Log.h"

namespace vor::velmo_sdk::impl {

#define VRN_MESSAGES(MESSAGE)                                                                                          \
    /* What the scanner finds. */                                                                                      \
    MESSAGE(endOfInput, Error, "EOF")                                                                                  \
    MESSAGE(unexpectedEof, Error, "UNEXPECTED EOF while parsing %s")                                                   \
    MESSAGE(invalidToken, Error, "INVALID TOKEN (%d,%d): '%c'")                                                        \
    MESSAGE(invalidListToken, Error, "INVALID %s LIST TOKEN (%d,%d): '%c'")                                            \
    /* What stands around a text that follows. */                                                                      \
    MESSAGE(decoratedError, Error, "%s (%d,%d): %s.")                                                                  \
    MESSAGE(typeError, Error, "TYPE ERROR (%d,%d): %s.")                                                               \
    MESSAGE(typeWarning, Warning, "TYPE WARNING (%d,%d): %s.")                                                         \
    MESSAGE(enumWarning, Warning, "ENUM WARNING (%d,%d): %s.")                                                         \
    /* Statements. */                                                                                                  \
    MESSAGE(badToken, Error, "BAD TOKEN (%d,%d): expected '%s', found '%s'.")                                          \
    MESSAGE(unrecognizedToken, Error, "unrecognized token '%s'.")                                                      \
    MESSAGE(noScene, Error, "no scene to read into")                                                                   \
    MESSAGE(badVersion, Warning, "Failed to parse VRN version comment: %s")                                            \
    /* Targets. */                                                                                                     \
    MESSAGE(withNodeNotSet, Error, "'with' node not set (input: %s)")                                                  \
    MESSAGE(nodeNotFound, Error, "node '%s' not found ")                                                               \
    MESSAGE(inputNotFound, Error, "input '%s' not found.")                                                             \
    MESSAGE(invalidArrayIndex, Error, "invalid input array index: %s")                                                 \
    /* Values and types. */                                                                                            \
    MESSAGE(cannotAssign, Error, "cannot assign %s%s to %s @ %s")                                                      \
    MESSAGE(wrongType, Error, "expected %s @ %s but found %s")                                                         \
    MESSAGE(narrowing, Warning, "narrowing %s to %s @ %s")                                                             \
    MESSAGE(badEnumValue, Warning, "setting non-existent enum value '%s' @ %s")                                        \
    /* Buffers. */                                                                                                     \
    MESSAGE(invalidElementCount, Error, "invalid buffer element count: %s")                                            \
    MESSAGE(tooManyElements, Error, "Cannot add %s @ index %llu of %s[%llu].")                                         \
    MESSAGE(tooFewElements, Warning, "Too few elements (%llu) for %s[%llu] buffer, remainder set to zero.")            \
    MESSAGE(unreadableBuffer, Error, "Failed to read '%s' buffer.")                                                    \
    /* Links. */                                                                                                       \
    MESSAGE(invalidOutput, Warning, "Invalid output: %s.")                                                             \
    MESSAGE(cannotConnectNode, Warning, "Cannot connect nonexistent node %s to %s.")                                   \
    MESSAGE(cannotConnectOutput, Warning, "Cannot connect nonexistent output %s to %s.")                               \
    MESSAGE(cannotAssignNode, Warning, "Cannot assign nonexistent node %s to %s.")                                     \
    /* What is taken without a word. */                                                                                \
    MESSAGE(endsInsideToken, Notice, "the text ends too early: %s")                                                    \
    MESSAGE(endedByByte, Notice, "a byte 0xFF ends the text; nothing behind it is read")                               \
    MESSAGE(foreignBytes, Notice, "bytes outside ASCII between tokens are taken for blanks: %llu in all")              \
    MESSAGE(linkReplaced, Notice, "an earlier link of %s is replaced")                                                 \
    MESSAGE(declaredAsOther, Notice, "node %s is declared as a %s but stays a %s")                                     \
    MESSAGE(newNodeOfTypeWith, Notice, "there is no node %s to go on with; a new one of type %s is made")

namespace messages {
#define VRN_MESSAGE(name, severity, text) inline constexpr char name[] = text;
VRN_MESSAGES(VRN_MESSAGE)
#undef VRN_MESSAGE
} // namespace messages

// The beginning of a text that may be long, as a message quotes it.
[[nodiscard]] inline String quoted(const String& text, std::size_t most = 20) {
    return text.len() <= most ? text : text.substring(0, most) + "...";
}

// What fills the first blank of messages::decoratedError.
inline constexpr char parseErrorKind[] = "PARSE ERROR";
inline constexpr char bufferErrorKind[] = "BUFFER ERROR";

// What says of a payload why it cannot be inflated: the messages of scene/core/Decompress.h.
inline constexpr char unreadablePayload[] = "%s";

// What fills the first blank of messages::badToken.
inline constexpr char expectedLinkSource[] = "(null|path)";
inline constexpr char expectedValue[] = "(scalar|buffer|reference)";

} // namespace vor::velmo_sdk::impl
