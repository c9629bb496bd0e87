#include "impl/Messages.h"
#include "impl/VrnParser.h"

namespace vor::velmo_sdk::impl {

/// comment ::= COMMENT   one with `version:` or `time:` in it sets the file's version or time
bool VrnParser::parseComment() {
    Token comment;
    if (!match(comment, Token::Type::Comment))
        return false;
    // What stands behind the first colon of all is the value, even if the keyword comes later.
    const String value = comment.text.fromFirst(':').trim();
    if (comment.text.contains("version:")) {
        u64 version = 0;
        if (String::parse(value, version))
            scene->setFileVersion(version);
        else
            logWarning(position(), messages::badVersion, comment.text.buf());
    } else if (comment.text.contains("time:") && !value.isEmpty()) {
        scene->setFileTime(value);
    }
    scene->pushFileComment(comment.text);
    return true;
}

} // namespace vor::velmo_sdk::impl
