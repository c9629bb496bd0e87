// The errors that end a parse, which the driver logs, and the names of messages.
#include "impl/Messages.h"
#include "impl/VrnParser.h"

#include <algorithm>
#include <iterator>

namespace vor::velmo_sdk::impl {

void VrnParser::parseError(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    try {
        internalError(parseErrorKind, format, arguments);
    } catch (...) {
        va_end(arguments);
        throw;
    }
}

void VrnParser::bufferError(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    try {
        internalError(bufferErrorKind, format, arguments);
    } catch (...) {
        va_end(arguments);
        throw;
    }
}

void VrnParser::internalError(const String& kind, const char* format, va_list arguments) {
    const String text = String::formatv(format, arguments);
    throw ReadError(String::format(messages::decoratedError, kind.buf(), prevToken.line, prevToken.column, text.buf()),
                    position(), format);
}

void VrnParser::tokenError(const String& expected, const Token& found) {
    throw ReadError(
        String::format(messages::badToken, found.line, found.column, expected.buf(), String(found.text).buf()),
        found.position(), messages::badToken);
}

void VrnParser::tokenError(const Token& found) {
    throw ReadError(found.text, found.position(), messages::invalidToken);
}

const char* messageName(const char* format) noexcept {
    struct Named {
        const char* format;
        const char* name;
    };
#define VRN_MESSAGE(name, severity, text) {messages::name, #name},
    static constexpr Named all[] = {{unreadablePayload, "unreadablePayload"}, VRN_MESSAGES(VRN_MESSAGE)};
#undef VRN_MESSAGE
    const Named* const found = std::ranges::find(all, format, &Named::format);
    return found == std::end(all) ? nullptr : found->name;
}

} // namespace vor::velmo_sdk::impl
