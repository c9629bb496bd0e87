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

/// declare ::= ID ID ( ';' | ':' )   type and name; the colon makes the node the one of '.' paths
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

// The types are looked at first: they tell most other statements apart without a look at the text.
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
    if (!node)
        node = scene->defineNode(name);
    definedNodes.add(node);
    return true;
}

// A node of that name is taken as it is, whatever its type.
bool VrnParser::parseDeclare() {
    DeclareInfo info;
    if (!declare(info))
        return false;
    const String name = info.name.text;
    Node* node = scene->findNode(name);
    const bool isNew = !node;
    if (isNew)
        node = scene->createNode(info.type.text, name, "");
    if (wantsNotices())
        noticeTheType(info, node, isNew);
    if (info.isWith)
        withNode = node;
    return true;
}

// `with` in place of a type means a node that is there, whatever its type.
void VrnParser::noticeTheType(const DeclareInfo& info, Node* node, bool isNew) const {
    constexpr std::size_t most = 60; // of names that may be as long as the text
    const String type = info.type.text;
    const String shortType = quoted(type, most);
    const String name = quoted(info.name.text, most);
    const bool isWithKeyword = keywordNumber(info.type.text) == keyword("with");
    if (isNew && isWithKeyword)
        logNotice(position(), messages::newNodeOfTypeWith, name.buf(), shortType.buf());
    else if (!isNew && !isWithKeyword && node->type() != type)
        logNotice(position(), messages::declaredAsOther, name.buf(), shortType.buf(), quoted(node->type(), most).buf());
}

// `with name:` is also a declaration, and those are tried first; so this runs only for a text that no
// declaration takes.
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
