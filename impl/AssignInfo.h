// AssignInfo: one assignment while it is being read.
#pragma once

#include "impl/lexer/Token.h"
#include "scene/AttrData.h"

namespace vor::velmo_sdk::impl {

struct AssignInfo {
    ds::Vector<Token> path;   // the target, dots included
    ds::Vector<Token> source; // a connection's right-hand side: a path, or the single null
    Token valueToken;         // the token of a scalar, or the keyword of a scalar or buffer
    Token bufferHeadToken;    // the count of a buffer in its brackets
    Token bufferBodyToken;    // the numbers of a buffer in their braces
    Token scalarTailToken;    // the components of a keyword scalar in their parentheses
    Token refToken;           // the node name of a reference, or the null
    bool isScalar = false;
    bool isBuffer = false;
    bool isConnection = false;
    bool isReference = false;
    AttrData data; // the value; Null for links

    // Makes it as new, but for the memory of its paths.
    void clear();

    // The value as messages quote it: at most its first 20 characters.
    [[nodiscard]] String valueString() const;
};

} // namespace vor::velmo_sdk::impl
