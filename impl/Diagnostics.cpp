// How the reader raises errors. Each ends the parse; the driver logs it.
#include "impl/Messages.h"
#include "impl/VrnParser.h"

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
                    position());
}

void VrnParser::tokenError(const String& expected, const Token& found) {
    throw ReadError(
        String::format(messages::badToken, found.line, found.column, expected.buf(), String(found.text).buf()),
        found.position());
}

void VrnParser::tokenError(const Token& found) { throw ReadError(found.text, found.position()); }

} // namespace vor::velmo_sdk::impl
