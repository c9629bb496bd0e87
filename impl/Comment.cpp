#include "impl/Messages.h"
#include "impl/VrnParser.h"

namespace vor::velmo_sdk::impl {

/// comment ::= COMMENT   one with `version:` or `time:` in it sets the file's version or time
bool VrnParser::parseComment() {
    Token comment;
    if (!match(comment, Token::Type::Comment))
        return false;
    const String text = comment.text;
    // What stands behind the first colon of all is the value, even if the keyword comes later.
    const String value = text.fromFirst(':').trim();
    if (text.contains("version:")) {
        u64 version = 0;
        if (String::parse(value, version))
            scene->setFileVersion(version);
        else
            logWarning(position(), messages::badVersion, text.buf());
    } else if (text.contains("time:") && !value.isEmpty()) {
        scene->setFileTime(value);
    }
    scene->pushFileComment(text);
    return true;
}

} // namespace vor::velmo_sdk::impl
