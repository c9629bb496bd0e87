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

// Cuts a path at its dots, of which one may lead; false unless that makes two parts.
static bool cutInTwo(std::string_view path, std::string_view& node, std::string_view& output) noexcept {
    path.remove_prefix(path.starts_with('.') ? 1 : 0);
    const std::size_t dot = path.find('.');
    if (dot == std::string_view::npos)
        return false;
    node = path.substr(0, dot);
    output = path.substr(dot + 1);
    return output.find('.') == std::string_view::npos;
}

void VrnParser::resolveConnections() {
    pendingConnections.resolveAll([this](IInput* input, const PendingLink& link) {
        if (link.isNull())
            return input->disconnect();
        std::string_view nodeName;
        std::string_view outputName;
        if (!cutInTwo(link.source, nodeName, outputName))
            return logWarning(link.position, messages::invalidOutput, link.source.buf());
        const String name = nodeName;
        interfaces::INode* node = scene->findNode(name);
        if (!node)
            return logWarning(link.position, messages::cannotConnectNode, name.buf(), input->label().buf());
        if (interfaces::IOutput* output = node->findOutput(updateOutputName(node->type(), outputName)))
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
