#include "impl/edit/SingleEdit.h"

#include "impl/Messages.h"
#include "impl/Reader.h"
#include "impl/edit/Layout.h"
#include "impl/edit/Sameness.h"
#include "scene/VrnValue.h"
#include "scene/syntax/Identifier.h"

#include <algorithm>
#include <cstdarg>

namespace vor::velmo_sdk::impl {

namespace {

[[noreturn]] __attribute__((format(printf, 2, 3))) void refuse(std::vector<std::size_t> places, const char* reason,
                                                               ...) {
    va_list texts;
    va_start(texts, reason);
    const String text = String::formatv(reason, texts);
    va_end(texts);
    throw Refused{text, std::move(places)};
}

// A text in a reason.
String shown(const String& text) {
    constexpr std::size_t maxLength = 60;
    return quoted(text, maxLength);
}

std::string withoutBlanks(std::string_view text) {
    std::string result(text);
    std::erase_if(result, [](char c) { return isIn(c, blankChar); });
    return result;
}

std::string_view nodeNameOf(std::string_view label) { return label.substr(0, label.find('.')); }

// Whether an input is a member or element of another one, at any depth.
bool isBelow(std::string_view label, std::string_view above) noexcept {
    return label.size() > above.size() && label.starts_with(above) &&
           (label[above.size()] == '.' || label[above.size()] == '[');
}

Input* nameIn(const Node& node, const Input* parent, const String& name) {
    return parent ? parent->input(name) : node.input(name);
}

// The input of a path without blanks, or null. Within a NameMapScope, former names lead to inputs as well.
Input* findInput(const Scene& scene, std::string_view path) {
    const Node* node = scene.findNode(nodeNameOf(path));
    Input* input = nullptr;
    for (std::size_t at = nodeNameOf(path).size(); node && at < path.size();) {
        const bool isIndex = path[at] == '[';
        const std::size_t end = std::min(path.find_first_of(isIndex ? "]" : ".[", at + 1), path.size());
        const String word = path.substr(at + 1, end - at - 1);
        u64 index = 0;
        if (isIndex)
            input = input && String::parse(word, index) ? input->element(index) : nullptr;
        else
            input = nameIn(*node, input, updateInputName(node->type(), word));
        if (!input)
            return nullptr;
        at = end + (isIndex ? 1 : 0);
    }
    return input;
}

// Throws if the reader objects to a statement of an edit.
void refuseFindings(const Statements& statement) {
    for (const auto* findings : {&statement.fatal(), &statement.findings()})
        if (!findings->empty())
            refuse({}, refusals::notAccepted, shown(String(statement.text())).buf(), findings->front().text.buf());
}

} // namespace

SingleEdit::Made SingleEdit::make(const Edit& edit, bool isLast) {
    Made made{.changes = changesFor(edit)};
    made.text = verify(edit, made.changes, isLast);
    return made;
}

SingleEdit::Changes SingleEdit::changesFor(const Edit& edit) {
    switch (edit.kind) {
    case Edit::Kind::Set:
        return assign(edit, "=");
    case Edit::Kind::Link:
        return assign(edit, "|=");
    case Edit::Kind::Add:
        return add(edit);
    case Edit::Kind::Rename:
        return rename(edit);
    case Edit::Kind::Remove:
        break;
    }
    return remove(edit);
}

// The statement that the edit asks for is read into the expected scene, as if it were the last one of the text.
SingleEdit::Changes SingleEdit::assign(const Edit& edit, std::string_view sign) {
    const String statement = edit.target + " " + sign + " " + edit.value + ";";
    const Statements read(statement, expected_);
    refuseFindings(read);
    const bool isOne = read.all().size() == 1 && read.all()[0].all.end == statement.len();
    if (!isOne || !read.all()[0].isAssignment() || (read.all()[0].kind == StatementKind::Connection) != (sign == "|="))
        refuse({}, refusals::notOneStatement, shown(statement).buf());
    const Statement& asked = read.all()[0];
    const std::string path = withoutBlanks(asked.path.of(read.text()));
    const std::string_view name = nodeNameOf(path);
    const Input* input = findInput(expected_, std::string(name) + asked.input.buf());
    if (!input)
        refuse({}, refusals::noInput, shown(edit.target).buf());
    std::string value(asked.value.of(read.text()));
    if (asked.kind == StatementKind::Value)
        value = spelling(input->value(), value);
    const u32 node = statements_.nodeOf(name);
    if (const Statement* old = effective(node, asked, input->type()))
        return {{old->value.begin, old->value.end - old->value.begin, value}};
    return {insertAssignment(statements_, lastOf(node), path, sign, value)};
}

AttrType SingleEdit::typeOf(std::string_view value) const {
    Scene scene; // without the catalogue, which may give the input a type
    scene.setLimits(options_.limits);
    const Statements read(String("t n; n.x = ") + value + ";", scene);
    const Input* input = findInput(scene, "n.x");
    return input ? input->type() : AttrType::Null;
}

// The value as the user spelled it, unless the input has another type: then what it was converted to.
std::string SingleEdit::spelling(const AttrData& converted, std::string_view value) const {
    if (typeOf(value) == converted.type())
        return std::string(value);
    std::string text;
    appendLiteral(converted, text);
    return text;
}

// The last statement that assigned the input in the same way, if nothing after it clears the input; or null. An empty
// object or array clears what statements before it did, so these do not replace each other.
const Statement* SingleEdit::effective(u32 node, const Statement& asked, AttrType type) const {
    const auto& all = statements_.all();
    const bool clears = asked.kind == StatementKind::Value && (type == AttrType::Object || type == AttrType::Array);
    for (auto each = all.rbegin(); each != all.rend() && !clears; ++each) {
        if (each->node != node || !each->isAssignment() || !each->isTaken)
            continue;
        if (each->kind == asked.kind && each->input == asked.input)
            return &*each;
        if (each->kind == StatementKind::Value && isBelow(asked.input, each->input))
            return nullptr;
    }
    return nullptr;
}

std::size_t SingleEdit::lastOf(u32 node) const {
    const auto& all = statements_.all();
    const auto last = std::ranges::find(all.rbegin(), all.rend(), node, &Statement::node);
    return static_cast<std::size_t>(all.rend() - last) - 1;
}

SingleEdit::Changes SingleEdit::add(const Edit& edit) {
    for (const String& name : {edit.target, edit.value})
        if (!isIdentifier(name))
            refuse({}, refusals::notName, shown(name).buf());
    refuseIfNamed(edit.value, false);
    const String declaration = edit.target + " " + edit.value;
    const Statements read(declaration + ";", expected_);
    if (!expected_.findNode(edit.value) || !read.findings().empty())
        refuse({}, refusals::keywordType, shown(edit.target).buf());
    return {appendDeclaration(statements_, declaration)};
}

// The places of all mentions for which the predicate holds.
template <class Predicate> std::vector<std::size_t> SingleEdit::mentionsIf(Predicate predicate) const {
    std::vector<std::size_t> places;
    for (const Mention& each : statements_.mentions())
        if (predicate(each, each.span.of(statements_.text())))
            places.push_back(each.span.begin);
    return places;
}

// A name that occurs anywhere is not free: a link to a missing node would find the new one.
void SingleEdit::refuseIfNamed(const String& name, bool isType) const {
    auto places = mentionsIf([&](const Mention& each, std::string_view word) {
        return word == name.view() && (each.role != MentionRole::Type || isType);
    });
    if (!places.empty())
        refuse(std::move(places), refusals::nameInUse, shown(name).buf());
}

// The node of a name. `asked` is how the edit spells it.
const Node& SingleEdit::nodeNamed(const String& name, const String& asked) const {
    const Node* node = expected_.findNode(name);
    if (!node)
        refuse({}, refusals::noNode, shown(asked).buf());
    return *node;
}

SingleEdit::Changes SingleEdit::rename(const Edit& edit) {
    const String& name = edit.target;
    const bool isType = nodeNamed(name, name).isDefinition();
    const u32 node = statements_.nodeOf(name);
    if (!isIdentifier(edit.value))
        refuse({}, refusals::notName, shown(edit.value).buf());
    if (name == edit.value)
        return {};
    refuseIfNamed(edit.value, isType);
    expected_.renameNode(name, edit.value);
    Changes changes;
    for (const std::size_t place : mentionsIf([&](const Mention&each, std::string_view word) {
             if (each.role == MentionRole::Node)
                 return each.node == node;
             return word == name.view() && (each.role == MentionRole::Link || isType);
         }))
        changes.push_back({place, name.len(), std::string(edit.value.view())});
    std::ranges::sort(changes, {}, &TextChange::offset);
    return changes;
}

SingleEdit::Changes SingleEdit::remove(const Edit& edit) {
    const std::string path = withoutBlanks(edit.target);
    if (path.find('.') == std::string::npos) {
        const String name = std::string_view(path);
        return removeNode(name, nodeNamed(name, edit.target).isDefinition());
    }
    const NameMapScope names(&expected_);
    Input* input = findInput(expected_, path);
    if (!input)
        refuse({}, refusals::noInput, shown(edit.target).buf());
    return removeInput(input);
}

SingleEdit::Changes SingleEdit::removeNode(const String& name, bool isType) {
    const u32 node = statements_.nodeOf(name);
    auto users = mentionsIf([&](const Mention& each, std::string_view word) {
        const bool isUse = each.role == MentionRole::Link || (each.role == MentionRole::Type && isType);
        return isUse && word == name.view() && statements_.all()[each.statement].node != node;
    });
    if (!users.empty())
        refuse(std::move(users), refusals::stillInUse, shown(name).buf());
    expected_.removeNode(name);
    std::vector<std::size_t> removed;
    for (std::size_t i = 0; i < statements_.all().size(); ++i)
        if (statements_.all()[i].node == node)
            removed.push_back(i);
    return removeStatements(statements_, removed);
}

// The assignments of an input and of everything below it.
std::vector<std::size_t> SingleEdit::assignmentsBelow(u32 node, std::string_view path) const {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < statements_.all().size(); ++i) {
        const Statement& each = statements_.all()[i];
        if (each.node == node && each.isAssignment() && (each.input == path || isBelow(each.input, path)))
            found.push_back(i);
    }
    return found;
}

SingleEdit::Changes SingleEdit::removeInput(Input* input) {
    const String label = input->label();
    const u32 node = statements_.nodeOf(input->node()->name());
    const std::vector<std::size_t> removed = assignmentsBelow(node, pathInNode(*input));
    if (removed.empty())
        refuse(placesOf(label), refusals::notInText, shown(label).buf());
    if (input->isElement() && input->index() + 1 != input->parent()->size())
        refuse(placesOf(label), refusals::notLastElement, shown(label).buf());
    // Parents that only these statements created disappear, too.
    Input* parent = input->parent();
    while (parent && parent->size() == 1 && assignmentsBelow(node, pathInNode(*parent)) == removed) {
        input = parent;
        parent = input->parent();
    }
    if (!parent)
        input->node()->removeInput(input->key());
    else if (input->isElement())
        parent->removeElement(input->index());
    else
        parent->removeInput(input->key());
    return removeStatements(statements_, removed);
}

// Reads the new text and compares its scene with the expected one.
std::unique_ptr<EditableText> SingleEdit::verify(const Edit& edit, const Changes& changes, bool isLast) const {
    const String text = std::string_view(changedText(statements_.text(), changes));
    std::unique_ptr<EditableText> next;
    Scene last;
    if (isLast) {
        refuseNewFindings(readOnly(text, last));
    } else {
        next = std::make_unique<EditableText>(text, options_);
        refuseNewFindings(next->statements.findings());
        refuseNewFindings(next->statements.fatal());
    }
    const std::optional<String> different = firstDifference(expected_, next ? next->scene : last);
    if (!different)
        return next;
    const bool isTarget = edit.kind != Edit::Kind::Add && *different == withoutBlanks(edit.target);
    refuse(placesOf(*different), isTarget ? refusals::changesValue : refusals::changesMore, shown(*different).buf());
}

// What the reader says about a text, without its statements, which takes longer.
std::vector<Finding> SingleEdit::readOnly(const String& text, Scene& scene) const {
    std::vector<Finding> findings;
    const ScopedLogSink sink(
        [&](const LogRecord& record) {
            findings.push_back({record.text, record.position, record.format});
        },
        Notices::Yes);
    EditableText::prepare(scene, options_);
    try {
        (void)parseString(&scene, text);
    } catch (const ReadError& error) {
        findings.push_back({error.what(), error.position()});
    }
    return findings;
}

// Refuses kinds of findings that are more frequent than they were.
void SingleEdit::refuseNewFindings(const std::vector<Finding>& findings) const {
    Statements::Counts left = statements_.counts();
    for (const Finding& each : findings)
        if (left[each.kind]-- == 0)
            refuse({}, refusals::newDiagnostic, each.text.buf());
}

// The last assignment of an input, or else the first statement of its node.
std::vector<std::size_t> SingleEdit::placesOf(std::string_view label) const {
    const std::string_view name = nodeNameOf(label);
    const u32 node = statements_.nodeOf(name);
    const auto& all = statements_.all();
    const auto assigned = std::find_if(all.rbegin(), all.rend(), [&](const Statement& each) {
        return each.node == node && each.isAssignment() && each.input == label.substr(name.size());
    });
    if (assigned != all.rend())
        return {assigned->all.begin};
    const auto first = std::ranges::find(all, node, &Statement::node);
    return node == Statement::noNode || first == all.end() ? std::vector<std::size_t>() : std::vector{first->all.begin};
}

} // namespace vor::velmo_sdk::impl
