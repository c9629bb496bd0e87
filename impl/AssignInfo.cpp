#include "impl/AssignInfo.h"

#include "impl/Messages.h"

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
    input = nullptr;
}

String AssignInfo::valueString() const {
    const bool isBufferValue = bufferHeadToken.type >= Token::Type::Id;
    const String text = isBufferValue ? String(valueToken.text) + "[]" : String(valueToken.text);
    return quoted(text);
}

} // namespace vor::velmo_sdk::impl
