// Every kind of finding: its name, which users and reports refer to, and its text in printf format. docs/messages.md
// explains the cause and the remedy of each; a test compares the two lists.
#pragma once

namespace vrn::check {

#define VRN_CHECK_MESSAGES(MESSAGE)                                                                                    \
    MESSAGE(unknownType, "the type %s of node %s%s is not in the catalogue%s")                                         \
    MESSAGE(unknownInput, "%s is unknown to the type %s%s")                                                            \
    MESSAGE(wrongType, "%s has the type %s; expected %s")                                                              \
    MESSAGE(outOfRange, "%s is %s; expected %s")                                                                       \
    MESSAGE(notListed, "%s is \"%s\"; expected %s%s")                                                                  \
    MESSAGE(wrongNode, "%s leads to %s of type %s; expected %s")                                                       \
    MESSAGE(badIndex, "%s holds the index %s, but %s has %s")                                                          \
    MESSAGE(badCount, "%s has %s; expected %s")                                                                        \
    MESSAGE(missingFile, "the file \"%s\" of %s does not exist")                                                       \
    MESSAGE(cycle, "the hierarchy of nodes has a cycle: %s")                                                           \
    MESSAGE(unused, "nothing uses node %s")

namespace messages {
#define VRN_CHECK_MESSAGE(name, text) inline constexpr char name[] = text;
VRN_CHECK_MESSAGES(VRN_CHECK_MESSAGE)
#undef VRN_CHECK_MESSAGE
} // namespace messages

} // namespace vrn::check
