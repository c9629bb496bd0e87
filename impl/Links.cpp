#include "impl/Messages.h"
#include "impl/VrnParser.h"

namespace vor::velmo_sdk::impl {

using Type = Token::Type;

/// connect ::= '|' '=' ( NULL | path ) ';'
bool VrnParser::connect(AssignInfo& info) {
    if (!accept(Type::Pipe))
        return false;
    if (!accept(Type::Equals))
        tokenError("=", current());
    if (match(info.valueToken, Type::Null))
        info.source.push(info.valueToken);
    else if (!path(info.source))
        tokenError(expectedLinkSource, current());
    if (!accept(Type::Semicolon))
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
    pendingConnections.resolveAll([this](IInput* input, const PendingLink& link) {
        if (link.isNull())
            return input->disconnect();
        const StringVector parts = link.source.split('.', true, false);
        if (parts.size() != 2)
            return logWarning(link.position, messages::invalidOutput, link.source.buf());
        interfaces::INode* node = scene->findNode(parts[0]);
        if (!node)
            return logWarning(link.position, messages::cannotConnectNode, parts[0].buf(), input->label().buf());
        if (interfaces::IOutput* output = node->findOutput(updateOutputName(node->type(), parts[1])))
            return input->connect(output);
        logWarning(link.position, messages::cannotConnectOutput, link.source.buf(), input->label().buf());
    });
}

void VrnParser::resolveReferences() {
    pendingReferences.resolveAll([this](IInput* input, const PendingLink& link) {
        if (link.isNull())
            return input->setNode(nullptr);
        if (Node* node = scene->findNode(link.source))
            return input->setNode(node);
        logWarning(link.position, messages::cannotAssignNode, link.source.buf(), input->label().buf());
    });
}

} // namespace vor::velmo_sdk::impl
