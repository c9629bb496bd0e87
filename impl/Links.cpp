#include "impl/Messages.h"
#include "impl/VrnParser.h"

namespace vor::velmo_sdk::impl {

using Type = Token::Type;

/// connect ::= '|' '=' ( NULL | path ) ';'
bool VrnParser::connect(AssignInfo& info) {
    Token mark;
    if (!match(mark, Type::Pipe))
        return false;
    if (!match(mark, Type::Equals))
        tokenError("=", current());
    if (match(info.valueToken, Type::Null))
        info.source.push(info.valueToken);
    else if (!path(info.source))
        tokenError(expectedLinkSource, current());
    if (!match(mark, Type::Semicolon))
        tokenError(";", current());
    info.isConnection = true;
    return true;
}

/// reference ::= ID | NULL   a node's name, or none
bool VrnParser::reference(AssignInfo& info) {
    info.isReference = match(info.refToken, Type::Id) || match(info.refToken, Type::Null);
    return info.isReference;
}

void VrnParser::resolveConnections() {
    pendingConnections.resolveAll([this](IInput* input, const AssignInfo& info) {
        const TextPosition at = info.source.last().position();
        const String source = collapse(info.source);
        if (source.toLower().trim() == "null")
            return input->disconnect();
        const StringVector parts = source.split('.', true, false);
        if (parts.size() != 2)
            return logWarning(at, messages::invalidOutput, source.buf());
        interfaces::INode* node = scene->findNode(parts[0]);
        if (!node)
            return logWarning(at, messages::cannotConnectNode, parts[0].buf(), input->label().buf());
        if (interfaces::IOutput* output = node->findOutput(updateOutputName(node->type(), parts[1])))
            return input->connect(output);
        logWarning(at, messages::cannotConnectOutput, source.buf(), input->label().buf());
    });
}

void VrnParser::resolveReferences() {
    pendingReferences.resolveAll([this](IInput* input, const AssignInfo& info) {
        const Token& name = info.refToken;
        if (name.type == Type::Null)
            return input->setNode(nullptr);
        if (Node* node = scene->findNode(name.text))
            return input->setNode(node);
        logWarning(name.position(), messages::cannotAssignNode, name.text.buf(), input->label().buf());
    });
}

} // namespace vor::velmo_sdk::impl
