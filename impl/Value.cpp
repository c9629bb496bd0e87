#include "impl/Messages.h"
#include "impl/VrnParser.h"

namespace vor::velmo_sdk::impl {

/// value ::= '=' ( scalar | buffer | reference ) ';'   the first that matches
bool VrnParser::value(AssignInfo& info) {
    if (!accept(Token::Type::Equals))
        return false;
    if (scalar(info))
        info.isScalar = true;
    else if (buffer(info))
        info.isBuffer = true;
    else if (!reference(info))
        tokenError(expectedValue, current());
    if (!accept(Token::Type::Semicolon))
        tokenError(";", current());
    return true;
}

} // namespace vor::velmo_sdk::impl
