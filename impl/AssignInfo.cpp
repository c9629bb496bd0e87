#include "impl/AssignInfo.h"

namespace vor::velmo_sdk::impl {

void AssignInfo::clear() {
    path.clear();
    source.clear();
    for (Token* token : {&valueToken, &bufferHeadToken, &bufferBodyToken, &scalarTailToken, &refToken})
        if (token->type != Token::Type::Eof)
            *token = Token();
    isScalar = isBuffer = isConnection = isReference = false;
    if (data.type() != AttrType::Null)
        data = AttrData();
}

String AssignInfo::valueString() const {
    constexpr std::size_t quotedLength = 20;
    const bool isBufferValue = bufferHeadToken.type >= Token::Type::Id;
    const String text = isBufferValue ? String(valueToken.text) + "[]" : String(valueToken.text);
    return text.len() <= quotedLength ? text : text.substring(0, quotedLength) + "...";
}

} // namespace vor::velmo_sdk::impl
