#include "impl/Messages.h"
#include "impl/VrnParser.h"
#include "scene/syntax/HeaderComment.h"

namespace vor::velmo_sdk::impl {

/// comment ::= COMMENT   a comment that contains `version:` or `time:` sets the file version or time
bool VrnParser::parseComment() {
    Token comment;
    if (!match(comment, Token::Type::Comment))
        return false;
    const String text = comment.text;
    const HeaderComment header = readHeaderComment(text);
    switch (header.kind) {
    case HeaderComment::Kind::Version:
        scene->setFileVersion(header.version);
        break;
    case HeaderComment::Kind::BadVersion:
        logWarning(position(), messages::badVersion, text.buf());
        break;
    case HeaderComment::Kind::Time:
        scene->setFileTime(header.time);
        break;
    case HeaderComment::Kind::None:
        break;
    }
    scene->pushFileComment(text);
    return true;
}

} // namespace vor::velmo_sdk::impl
