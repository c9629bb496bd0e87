#include "convert/import/ImportContext.h"

#include "scene/core/NumberText.h"

#include <algorithm>

namespace vrn::convert {

namespace {

// Letters, digits and underlines, not beginning with a digit; all else between them becomes one underline.
std::string identifier(std::string_view name, const char* otherwise) {
    std::string text;
    bool isGap = false;
    for (const char c : name) {
        const bool fits = String::isLetter(c) || String::isDigit(c) || c == '_';
        if (fits && isGap && !text.empty())
            text += '_';
        if (fits)
            text += c;
        isGap = !fits;
    }
    if (text.empty())
        return otherwise;
    return String::isDigit(text[0]) ? "_" + text : text;
}

// Words that mean something else where a text names a node.
bool isKeyword(const String& name) {
    static constexpr std::string_view words[] = {"define", "remove", "null", "true", "false", "inf", "nan"};
    const auto isName = [&](std::string_view word) { return name.compareNoCase(word) == 0; };
    bool isKeyword = std::ranges::any_of(words, isName);
    for (i32 type = 0; type < dataTypeCount; ++type)
        isKeyword |= isName(dataTypeName(static_cast<DataType>(type)));
    for (i32 type = 0; type < attrTypeCount; ++type)
        isKeyword |=
            componentCount(static_cast<AttrType>(type)) > 1 && isName(attrTypeName(static_cast<AttrType>(type)));
    return isKeyword;
}

} // namespace

Node* ImportContext::nodeOf(const aiString& name) const {
    const auto place = places.find(std::string(textOf(name)));
    return place == places.end() ? nullptr : place->second.node;
}

Node& ImportContext::create(const char* type, std::string_view name, const char* otherwise) {
    std::string wanted = identifier(name, otherwise);
    if (isKeyword(std::string_view(wanted)))
        wanted += '_';
    std::string unique = wanted;
    Node* node = nullptr;
    while (!(node = scene.createNode(type, std::string_view(unique))))
        unique = wanted + '_' + std::string(String(++names[wanted] + 1).view());
    if (!name.empty())
        setText(*node, "name", name);
    return *node;
}

void set(Node& node, const char* name, AttrData value) {
    Input* input = node.createInput(name, value.type());
    input->assign(std::move(value));
}

void setMember(Input& object, const char* name, AttrData value) {
    Input* input = object.createInput(name, value.type());
    input->assign(std::move(value));
}

void setText(Node& node, const char* name, std::string_view text) { set(node, name, AttrData::string(text)); }

AttrData numbersOf(AttrType type, std::span<const double> numbers) {
    AttrData value = AttrData::zero(type);
    std::ranges::copy(numbers.first(value.components().size()), value.components().begin());
    return value;
}

void setNumbers(Node& node, const char* name, AttrType type, std::span<const double> numbers) {
    set(node, name, numbersOf(type, numbers));
}

void refer(Node& node, const char* name, Node& target) { node.createInput(name, AttrType::Node)->setNode(&target); }

void connect(Node& node, const char* name, Node& source, const char* output) {
    if (Output* from = source.findOutput(output))
        node.createInput(name, AttrType::Null)->connect(from);
}

double plain(float number) {
    char digits[realTextCapacity];
    double same = static_cast<double>(number);
    (void)parseReal(writeReal(number, digits), same);
    return same;
}

Matrix matrixOf(const aiMatrix4x4& matrix) {
    Matrix made{};
    for (unsigned row = 0; row < 4; ++row)
        for (unsigned column = 0; column < 4; ++column)
            made[4 * column + row] = plain(matrix[row][column]);
    return made;
}

} // namespace vrn::convert
