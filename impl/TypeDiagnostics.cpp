// Diagnostics for values that do not fit their input.
#include "impl/Messages.h"
#include "impl/VrnParser.h"

namespace vor::velmo_sdk::impl {

void VrnParser::typeError(const String& valueType, IInput* input, bool isArray) {
    const String text = String::format(messages::cannotAssign, valueType.buf(), isArray ? "[]" : "",
                                       input->typeName().buf(), input->label().buf());
    throw ReadError(String::format(messages::typeError, prevToken.line, prevToken.column, text.buf()), position(),
                    messages::typeError);
}

void VrnParser::narrowTypeWarning(const String& valueType, IInput* input) {
    const String text =
        String::format(messages::narrowing, valueType.buf(), input->typeName().buf(), input->label().buf());
    logWarning(position(), messages::typeWarning, prevToken.line, prevToken.column, text.buf());
}

// Named a warning because the parse continues; logged as an error because the value is wrong.
void VrnParser::wrongTypeWarning(const String& found, IInput* input) {
    const String text = String::format(messages::wrongType, input->typeName().buf(), input->label().buf(), found.buf());
    logError(position(), messages::typeError, prevToken.line, prevToken.column, text.buf());
}

void VrnParser::badEnumValueWarning(const String& value, IInput* input) {
    const String text = String::format(messages::badEnumValue, value.buf(), input->label().buf());
    logWarning(position(), messages::enumWarning, prevToken.line, prevToken.column, text.buf());
}

} // namespace vor::velmo_sdk::impl
