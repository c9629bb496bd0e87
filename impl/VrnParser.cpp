#include "impl/VrnParser.h"

#include "impl/Messages.h"
#include "impl/lexer/FileLexer.h"
#include "impl/lexer/StringLexer.h"

#include <new>
#include <utility>

namespace vor::velmo_sdk::impl {

bool VrnParser::parse(IScene* target, const String& text) {
    StringLexer source(text);
    return parse(target, &source);
}

bool VrnParser::parse(IScene* target, const File& file) {
    try {
        FileLexer source(file);
        return parse(target, &source);
    } catch (const FileLexer::Stopped& stopped) {
        const TextPosition at = stopped.position;
        logError(at, messages::stopped, at.line, at.column);
        return false;
    }
}

bool VrnParser::parse(IScene* target, Lexer* source) {
    scene = static_cast<Scene*>(target);
    lexer = source;
    // A host's scene may read from the file that is being parsed, which ends the lexer's window.
    readsPlainStatements = readsPlainStatements && (!lexer->isShared() || hasInputOrNew<Node>);
    const NameMapScope names(scene);
    primeWithNotices();
    const bool isRead = readStatements();
    reportTruncation(isRead);
    return isRead;
}

// Not part of readStatements(), which logs errors: those among the first tokens are thrown to the caller.
void VrnParser::primeWithNotices() {
    try {
        prime();
    } catch (const ReadError&) {
        reportTruncation(false);
        throw;
    }
}

bool VrnParser::readStatements() {
    try {
        parseStatements();
        resolveConnections();
        resolveReferences();
    } catch (const ReadError& error) {
        writeLog({LogSeverity::Error, error.what(), error.position(), error.format()});
        return false;
    } catch (const std::runtime_error& error) {
        logError(position(), "%s", error.what());
        return false;
    }
    return true;
}

// Notices about silently accepted input. After an error, an unterminated token needs no notice.
void VrnParser::reportTruncation(bool isRead) const {
    if (isRead && current().text != messages::endOfInput)
        logNotice(current().position(), messages::endsInsideToken, String(current().text).buf());
    if (lexer->isEndedByByte())
        logNotice(lexer->nextPosition(), messages::endedByByte);
    if (lexer->foreignBytes() != 0)
        logNotice(lexer->firstForeignByte(), messages::foreignBytes,
                  static_cast<unsigned long long>(lexer->foreignBytes()));
}

// Fills the look-ahead with placeholders and consumes them.
void VrnParser::prime() {
    for (i32 i = 0; i < lookahead; ++i)
        tokens.push(Token());
    for (i32 i = 0; i < lookahead; ++i)
        consume();
}

/// text ::= statement*
void VrnParser::parseStatements() {
    while (current().type > Token::Type::Invalid) {
        lexer->startStatement();
        if (!scene)
            parseError(messages::noScene);
        if (mayBePlain())
            parsePlainStatements();
        if (!parseStatement())
            parseError(messages::unrecognizedToken, String(current().text).buf());
    }
}

/// statement ::= comment | remove | define | declare | with | assign   the first that matches
bool VrnParser::parseStatement() {
    // Statements about nodes begin with two identifiers; others do not.
    if (current().type == Token::Type::Id && ahead(1).type == Token::Type::Id)
        return parseRemove() || parseDefine() || parseDeclare() || parseWith();
    return parseComment() || parseAssign();
}

const Token& VrnParser::consume() {
    Token& slot = tokens[static_cast<std::size_t>(cursor)];
    prevToken = slot;
    // Constructed in place: a copy through a temporary would stall on store forwarding.
    new (&slot) Token(nextToken());
    if (slot.type == Token::Type::Invalid)
        tokenError(std::exchange(slot, prevToken));
    cursor = cursor + 1 < lookahead ? cursor + 1 : 0;
    return prevToken;
}

bool VrnParser::match(Token& out, Token::Type type) {
    if (current().type != type)
        return false;
    out = consume();
    return true;
}

} // namespace vor::velmo_sdk::impl
