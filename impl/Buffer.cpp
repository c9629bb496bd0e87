#include "impl/BufferText.h"
#include "impl/BufferType.h"
#include "impl/Messages.h"
#include "impl/VrnParser.h"

#include <new>
#include <optional>

namespace vor::velmo_sdk::impl {

using Type = Token::Type;

/// buffer ::= bufferType BRACKETS BRACES   the brackets contain the count, the braces the numbers or a payload
/// count ::= '[' integer ']'   the number of elements, whose size is that of the DataType named by the keyword
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
    report(bufferInScan ? takeScannedBuffer(info) : readBufferText(*type, info), info);
    return true;
}

// Takes the elements that were read while their list was scanned.
ElementsRead VrnParser::takeScannedBuffer(AssignInfo& info) {
    info.data = std::move(bufferInScan->data);
    ElementsRead elements = std::move(bufferInScan->elements);
    bufferInScan.reset();
    return elements;
}

// Reads the elements of a list that was scanned as a token, because the tokens before it did not look like the
// assignment of a buffer.
ElementsRead VrnParser::readBufferText(DataType type, AssignInfo& info) {
    std::optional<AttrData> buffer = zeroBuffer(type, info.bufferHeadToken.text);
    if (!buffer)
        parseError(messages::invalidElementCount, String(info.bufferHeadToken.text).buf());
    info.data = *std::move(buffer); // NOLINT(bugprone-unchecked-optional-access): parseError() throws
    return readElements(info.bufferBodyToken.text, info.data);
}

// The token after the look-ahead, scanned while the current token is consumed.
Token VrnParser::nextToken() {
    const bool mayBeBuffer =
        prevToken.type == Type::Equals && ahead(1).type == Type::Id && ahead(2).type == Type::Brackets;
    return mayBeBuffer && scene ? bufferList() : lexer->nextToken();
}

// The same for a token that may be the list of a buffer. Its elements are parsed into their block while they are
// scanned, because a list of many megabytes would otherwise be stored as text first.
Token VrnParser::bufferList() {
    const DataType* type = bufferType(ahead(1).text);
    std::optional<AttrData> buffer = type ? zeroBuffer(*type, ahead(2).text) : std::nullopt;
    if (!buffer)
        return lexer->nextToken();
    BufferReader reader(*std::move(buffer));
    const Token next = lexer->nextToken(&reader);
    if (next.type == Type::Braces)
        bufferInScan = reader.finish();
    return next;
}

// A zero-filled buffer with the number of elements in the brackets; nullopt if that is not a number, or exceeds the
// scene's limit or the available memory.
std::optional<AttrData> VrnParser::zeroBuffer(DataType type, std::string_view brackets) const {
    unsigned long long count = 0;
    if (!String::parse(String(brackets).trimChars("[]"), count, String::Radix::Auto) ||
        count > scene->limits().maxBufferBytes / elementLayout(type).elementSize())
        return std::nullopt;
    try {
        return AttrData::buffer(type, count);
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    }
}

void VrnParser::report(const ElementsRead& elements, const AssignInfo& info) {
    if (!elements.payloadError.isEmpty())
        parseError(unreadablePayload, elements.payloadError.buf());
    if (elements.isPayload)
        return;
    const String keywordText = info.valueToken.text;
    const char* keyword = keywordText.buf();
    const ElementLayout layout = elementLayout(info.data.dataType());
    const auto count = static_cast<unsigned long long>(info.data.count());
    if (elements.excess)
        bufferError(messages::tooManyElements, elements.excess->buf(),
                    static_cast<unsigned long long>(elements.filledBytes / layout.componentSize), keyword, count);
    if (elements.filledBytes < info.data.bytes().size())
        logWarning(info.valueToken.position(), messages::tooFewElements,
                   static_cast<unsigned long long>(elements.filledBytes / layout.elementSize()), keyword, count);
    if (!elements.areReadable)
        parseError(messages::unreadableBuffer, keyword);
}

bool VrnParser::parseElem(std::string_view text, DataType type, u8* out) { return parseElement(text, type, out); }

} // namespace vor::velmo_sdk::impl
