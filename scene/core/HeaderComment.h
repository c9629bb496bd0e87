// What a comment says of its file, if it does.
#pragma once

#include "scene/core/String.h"

namespace vor {

struct HeaderComment {
    enum class Kind { None, Version, BadVersion, Time };

    Kind kind = Kind::None;
    u64 version = 0;
    String time{};
};

// Of a comment with `version:` in it, or else with `time:`; case counts. What stands behind the first colon of all is
// the value, even if the keyword comes later. A time without a value says nothing.
[[nodiscard]] HeaderComment readHeaderComment(const String& comment);

} // namespace vor
