#include "scene/syntax/HeaderComment.h"

namespace vor {

HeaderComment readHeaderComment(const String& comment) {
    using Kind = HeaderComment::Kind;
    if (!comment.contains(":"))
        return {};
    const String value = comment.fromFirst(':').trim();
    if (comment.contains("version:")) {
        u64 version = 0;
        const bool isRead = String::parse(value, version);
        return {.kind = isRead ? Kind::Version : Kind::BadVersion, .version = version};
    }
    if (comment.contains("time:") && !value.isEmpty())
        return {.kind = Kind::Time, .time = value};
    return {};
}

} // namespace vor
