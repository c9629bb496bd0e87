// Every message of the reader, in printf format, with its severity. docs/messages.md explains the cause and the remedy
// of each; a test compares the two lists. Numbers that may exceed an `int` have a wider conversion (`%llu`).
#pragma once

#include "scene/core/Log.h"

namespace vor::velmo_sdk::impl {

#define VRN_MESSAGES(MESSAGE)                                                                                          \
    /* Lexical errors. */                                                                                              \
    MESSAGE(endOfInput, Error, "EOF")                                                                                  \
    MESSAGE(unexpectedEof, Error, "UNEXPECTED EOF while parsing %s")                                                   \
    MESSAGE(invalidToken, Error, "INVALID TOKEN (%d,%d): '%c'")                                                        \
    MESSAGE(invalidListToken, Error, "INVALID %s LIST TOKEN (%d,%d): '%c'")                                            \
    /* Requests of the caller. */                                                                                      \
    MESSAGE(stopped, Error, "STOPPED (%d,%d): the reading was stopped on request")                                     \
    /* Prefixes with the kind and position of another message. */                                                      \
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
    /* Input that is accepted silently unless notices are wanted. */                                                   \
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

// Shortens a text for a message: to its first `maxLength` characters and `...` if it is longer.
[[nodiscard]] inline String quoted(const String& text, std::size_t maxLength = 20) {
    return text.len() <= maxLength ? text : text.substring(0, maxLength) + "...";
}

// First arguments of messages::decoratedError.
inline constexpr char parseErrorKind[] = "PARSE ERROR";
inline constexpr char bufferErrorKind[] = "BUFFER ERROR";

// The format of errors in payloads, whose texts are in scene/core/Decompress.h.
inline constexpr char unreadablePayload[] = "%s";

// The `expected` arguments of messages::badToken for alternatives.
inline constexpr char expectedLinkSource[] = "(null|path)";
inline constexpr char expectedValue[] = "(scalar|buffer|reference)";

} // namespace vor::velmo_sdk::impl
