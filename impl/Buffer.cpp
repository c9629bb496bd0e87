#include "impl/BufferType.h"
#include "impl/Component.h"
#include "impl/Messages.h"
#include "impl/VrnParser.h"

#include <cstring>
#include <new>

namespace vor::velmo_sdk::impl {

using Type = Token::Type;

/// buffer ::= bufferType BRACKETS BRACES   element type, count, and numbers or a compressed payload
/// bufferType ::= 'char' | 'byte' | ( 'int' | 'uint' ) ( '16' | '32' | '64' ) | 'float' | 'double'
///              | ( 'vec2' | 'vec3' | 'vec4' ) ( 'f' | 'd' | 'i' | 'u' )
///              | ( 'pos2' | 'pos3' | 'mat3' | 'mat4' ) ( 'f' | 'd' | 'i' )
///              | ( 'quat' | 'hsv' | 'hsl' ) ( 'f' | 'd' )
///              | ( 'rgb' | 'rgba' ) ( 'f' | 'd' | '8' ) | 'argb8' | 'colorref'
bool VrnParser::buffer(AssignInfo& info) {
    if (current().type != Type::Id || ahead(1).type != Type::Brackets || ahead(2).type != Type::Braces)
        return false;
    const DataType* type = bufferType(current().text);
    if (!type)
        return false;
    info.valueToken = consume();
    info.bufferHeadToken = consume();
    info.bufferBodyToken = consume();
    std::unique_ptr<BufferReader> reader = std::move(bufferInScan);
    if (!reader)
        parseError(messages::invalidElementCount, String(info.bufferHeadToken.text).buf());
    info.data = reader->takeData(); // cppcheck-suppress nullPointerRedundantCheck
    report(*reader, info);          // cppcheck-suppress nullPointerRedundantCheck
    return true;
}

// The token behind the look-ahead, while the one before it is being consumed.
Token VrnParser::nextToken() {
    const bool mayBeBuffer =
        prevToken.type == Type::Equals && ahead(1).type == Type::Id && ahead(2).type == Type::Brackets;
    return mayBeBuffer && scene ? bufferList() : lexer->nextToken();
}

// The same where it may be a buffer's list, which is then read on the way.
Token VrnParser::bufferList() {
    const DataType* type = bufferType(ahead(1).text);
    std::unique_ptr<BufferReader> reader = type ? openBuffer(*type, ahead(2).text) : nullptr;
    const Token next = lexer->nextToken(reader.get());
    if (reader && next.type == Type::Braces) {
        reader->finish();
        bufferInScan = std::move(reader);
    }
    return next;
} // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): it does not see that the reader is moved

// Null if the count is none, or asks for more than there may be.
std::unique_ptr<BufferReader> VrnParser::openBuffer(DataType type, const String& head) const {
    unsigned long long count = 0;
    if (!String::parse(head.trimChars("[]"), count, String::Radix::Auto) ||
        count > scene->limits().maxBufferBytes / elementLayout(type).elementSize())
        return nullptr;
    try {
        return std::make_unique<BufferReader>(type, count);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void VrnParser::report(const BufferReader& reader, const AssignInfo& info) {
    if (!reader.payloadError().isEmpty())
        parseError(unreadablePayload, reader.payloadError().buf());
    if (reader.isPayload())
        return;
    const String keywordText = info.valueToken.text;
    const char* keyword = keywordText.buf();
    const ElementLayout layout = elementLayout(info.data.dataType());
    const auto count = static_cast<unsigned long long>(info.data.count());
    const NumberFiller* numbers = reader.numbers();
    const u64 filled = numbers ? numbers->filledBytes() : 0;
    if (numbers && numbers->excess())
        bufferError(messages::tooManyElements, numbers->excess()->buf(),
                    static_cast<unsigned long long>(filled / layout.componentSize), keyword, count);
    if (filled < info.data.bytes().size())
        logWarning(info.valueToken.position(), messages::tooFewElements,
                   static_cast<unsigned long long>(filled / layout.elementSize()), keyword, count);
    if (numbers && !numbers->isRead())
        parseError(messages::unreadableBuffer, keyword);
}

// Stores one number, unaligned, in the machine's own form.
bool VrnParser::parseElem(std::string_view text, DataType type, u8* out) {
    return withComponent(type, [&](auto number) {
        if (!String::parse(text, number))
            return false;
        std::memcpy(out, &number, sizeof number);
        return true;
    });
}

} // namespace vor::velmo_sdk::impl
