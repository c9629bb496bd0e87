// AssignInfo: the state of an assignment while it is parsed.
#pragma once

#include "impl/lexer/Token.h"
#include "scene/AttrData.h"
#include "scene/Interfaces.h"

namespace vor::velmo_sdk::impl {

struct AssignInfo {
    ds::Vector<Token> path;   // the target, dots included
    ds::Vector<Token> source; // a connection's right-hand side: a path, or a single `null`
    Token valueToken;         // the token of a scalar, or the keyword of a scalar or buffer
    Token bufferHeadToken;    // the element count of a buffer in brackets
    Token bufferBodyToken;    // the elements of a buffer in braces
    Token scalarTailToken;    // the components of a keyword scalar in parentheses
    Token refToken;           // the node name of a reference, or `null`
    bool isScalar = false;
    bool isBuffer = false;
    bool isConnection = false;
    bool isReference = false;
    AttrData data; // the value; Null for links
    interfaces::IInput* input = nullptr; // the target, once it is known

    // Resets all members, but keeps the memory of the paths for reuse.
    void clear();

    // The value as quoted in messages: at most its first 20 characters.
    [[nodiscard]] String valueString() const;
};

} // namespace vor::velmo_sdk::impl
