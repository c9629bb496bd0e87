#include "impl/Messages.h"
#include "impl/VrnParser.h"

#include <algorithm>

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

/// reference ::= ID | NULL   the name of a node, or null for no node
bool VrnParser::reference(AssignInfo& info) {
    info.isReference = match(info.refToken, Type::Id) || match(info.refToken, Type::Null);
    return info.isReference;
}

// Splits the path of an output at its dot, not counting a leading one.
PendingLink VrnParser::linkTo(const ds::Vector<Token>& source) {
    const std::span<const Token> whole(source.data(), source.size());
    const auto isDot = [](const Token& token) { return token.type == Type::Dot; };
    PendingLink link;
    link.position = source.last().position();
    link.isWithNode = isDot(whole[0]);
    const std::span<const Token> path = whole.subspan(link.isWithNode ? 1 : 0);
    const auto dot = static_cast<std::size_t>(std::ranges::find_if(path, isDot) - path.begin());
    const bool hasTwoParts = dot < path.size() && std::ranges::none_of(path.subspan(dot + 1), isDot);
    link.node = collapse(hasTwoParts ? path.first(dot) : path);
    if (hasTwoParts)
        link.output = collapse(path.subspan(dot + 1));
    return link;
}

// Announces the nodes that will be looked up next, if the scene supports it.
template <class AnyScene> static void expectNodes(const AnyScene& scene, std::span<const String* const> names) {
    if constexpr (requires { scene.expectNodes(names); })
        scene.expectNodes(names);
}

void VrnParser::resolveConnections() {
    const auto resolve = [this](IInput* input, const PendingLink& link) {
        if (link.isNull())
            return input->disconnect();
        if (link.output.isEmpty())
            return logWarning(link.position, messages::invalidOutput, link.source().buf());
        interfaces::INode* node = scene->findNode(link.node);
        if (!node)
            return logWarning(link.position, messages::cannotConnectNode, link.node.buf(), input->label().buf());
        if (interfaces::IOutput* output = node->findOutput(updateOutputName(node->type(), link.output)))
            return input->connect(output);
        logWarning(link.position, messages::cannotConnectOutput, link.source().buf(), input->label().buf());
    };
    pendingConnections.resolveAll(resolve, [this](auto names) { expectNodes(*scene, names); });
}

void VrnParser::resolveReferences() {
    const auto resolve = [this](IInput* input, const PendingLink& link) {
        if (link.isNull())
            return input->setNode(nullptr);
        if (Node* node = scene->findNode(link.node))
            return input->setNode(node);
        logWarning(link.position, messages::cannotAssignNode, link.node.buf(), input->label().buf());
    };
    pendingReferences.resolveAll(resolve, [this](auto names) { expectNodes(*scene, names); });
}

} // namespace vor::velmo_sdk::impl
