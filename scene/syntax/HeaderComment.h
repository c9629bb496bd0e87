// Extracts metadata from the comments of a file.
//
//     readHeaderComment("# version: 3")     // Kind::Version, version 3
#pragma once

#include "scene/core/String.h"

namespace vor {

struct HeaderComment {
    enum class Kind { None, Version, BadVersion, Time };

    Kind kind = Kind::None;
    u64 version = 0;
    String time{};
};

// Recognises comments that contain `version:` or, if not, `time:`, case-sensitively. The value is the text after the
// first colon of the comment, even if the keyword comes later. A time without a value is ignored.
[[nodiscard]] HeaderComment readHeaderComment(const String& comment);

} // namespace vor
