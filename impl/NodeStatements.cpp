#include "impl/Messages.h"
#include "impl/VrnParser.h"
#include "scene/syntax/Keyword.h"

namespace vor::velmo_sdk::impl {

using Type = Token::Type;

/// remove ::= 'remove' ID ';'
bool VrnParser::remove(RemoveInfo& info) { return keywordStatement(keyword("remove"), Type::Semicolon, info.name); }

/// define ::= 'define' ID ';'
bool VrnParser::define(DefineInfo& info) { return keywordStatement(keyword("define"), Type::Semicolon, info.name); }

/// with ::= 'with' ID ':'
bool VrnParser::with(WithInfo& info) { return keywordStatement(keyword("with"), Type::Colon, info.name); }

/// declare ::= ID ID ( ';' | ':' )   type and name; a colon makes the node the current one, to which '.' paths refer
bool VrnParser::declare(DeclareInfo& info) {
    const bool ends = ahead(2).type == Type::Semicolon || ahead(2).type == Type::Colon;
    if (current().type != Type::Id || ahead(1).type != Type::Id || !ends)
        return false;
    info.isWith = ahead(2).type == Type::Colon;
    info.type = consume();
    info.name = consume();
    consume();
    return true;
}

// Compares the token types first: they rule out most other statements without a comparison of text.
bool VrnParser::keywordStatement(u64 word, Type end, Token& name) {
    if (current().type != Type::Id || ahead(1).type != Type::Id || ahead(2).type != end)
        return false;
    if (keywordNumber(current().text) != word)
        return false;
    consume();
    name = consume();
    consume();
    return true;
}

void VrnParser::noteDeclared(const Node* node, TextPosition position) {
    if (sources)
        sources->set(node, position);
}

bool VrnParser::parseRemove() {
    RemoveInfo info;
    if (!remove(info))
        return false;
    const String name = info.name.text;
    if (Node* node = scene->findNode(name)) {
        definedNodes.forget(node);
        if (withNode == node)
            withNode = nullptr;
    }
    scene->removeNode(name);
    return true;
}

bool VrnParser::parseDefine() {
    DefineInfo info;
    if (!define(info))
        return false;
    const String name = info.name.text;
    Node* node = scene->findNode(name);
    if (!node) {
        node = scene->defineNode(name);
        noteDeclared(node, info.name.position());
    }
    definedNodes.add(node);
    return true;
}

// An existing node of that name is kept, regardless of its type.
bool VrnParser::parseDeclare() {
    DeclareInfo info;
    if (!declare(info))
        return false;
    const String name = info.name.text;
    Node* node = scene->findNode(name);
    const bool isNew = !node;
    if (isNew) {
        node = scene->createNode(info.type.text, name, "");
        noteDeclared(node, info.name.position());
    }
    if (wantsNotices())
        logTypeNotices(info, node, isNew);
    if (info.isWith)
        withNode = node;
    return true;
}

// `with` in place of a type refers to an existing node of any type.
void VrnParser::logTypeNotices(const DeclareInfo& info, Node* node, bool isNew) const {
    constexpr std::size_t maxQuoted = 60; // names can be as long as the text
    const String type = info.type.text;
    const String shortType = quoted(type, maxQuoted);
    const String name = quoted(info.name.text, maxQuoted);
    const bool isWithKeyword = keywordNumber(info.type.text) == keyword("with");
    if (isNew && isWithKeyword)
        logNotice(position(), messages::newNodeOfTypeWith, name.buf(), shortType.buf());
    else if (!isNew && !isWithKeyword && node->type() != type)
        logNotice(position(), messages::declaredAsOther, name.buf(), shortType.buf(),
                  quoted(node->type(), maxQuoted).buf());
}

// parseDeclare() also accepts `with name:` and is tried first, so this is reached only when called directly.
bool VrnParser::parseWith() {
    WithInfo info;
    if (!with(info))
        return false;
    withNode = scene->findNode(info.name.text);
    if (!withNode)
        withNode = definedNodes.lastOfType(info.name.text);
    return true;
}

} // namespace vor::velmo_sdk::impl
