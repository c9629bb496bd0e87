#include "inspect/diff/InputDifference.h"

#include "inspect/value/ValueText.h"
#include "scene/BufferNumbers.h"

#include <cstring>

namespace vrn::inspect {

using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

namespace {

class InputComparison {
public:
    InputComparison(const Input& before, const Input& after, std::string_view path, double tolerance,
                    const DifferenceSink& sink)
        : before_(before), after_(after), path_(path), tolerance_(tolerance), sink_(sink) {}

    [[nodiscard]] bool compare() const {
        compareConnections();
        if (before_.type() != after_.type()) {
            changed(Aspect::Type, attrTypeName(before_.type()), attrTypeName(after_.type()));
            return false;
        }
        switch (valueKind(before_.type())) {
        case ValueKind::Object:
            return true;
        case ValueKind::Array:
            compareArrays();
            return true;
        case ValueKind::Buffer:
            compareBuffers();
            return false;
        case ValueKind::Node:
            compareReferences();
            return false;
        case ValueKind::Null:
        case ValueKind::Bool:
        case ValueKind::Int:
        case ValueKind::UInt:
        case ValueKind::Real:
        case ValueKind::Components:
        case ValueKind::String:
            break;
        }
        compareValues();
        return false;
    }

private:
    [[nodiscard]] Difference of(Aspect aspect) const {
        return {
            .change = Change::Changed, .aspect = aspect, .path = path_, .inputBefore = &before_, .inputAfter = &after_};
    }

    void changed(Aspect aspect, std::optional<std::string> before, std::optional<std::string> after) const {
        Difference difference = of(aspect);
        difference.before = std::move(before);
        difference.after = std::move(after);
        sink_(difference);
    }

    void compareConnections() const {
        const auto isSame = [](const Output& a, const Output& b) {
            return a.name() == b.name() && a.node()->name() == b.node()->name();
        };
        const Output* before = before_.connection();
        const Output* after = after_.connection();
        if (before && after ? isSame(*before, *after) : before == after)
            return;
        const auto label = [](const Output* output) {
            return output ? std::optional(std::string(output->label().view())) : std::nullopt;
        };
        changed(Aspect::Connection, label(before), label(after));
    }

    void compareReferences() const {
        const auto name = [](const Node* node) {
            return node ? std::optional(std::string(node->name().view())) : std::nullopt;
        };
        const Node* before = before_.nodeValue();
        const Node* after = after_.nodeValue();
        if (before && after ? before->name() != after->name() : before != after)
            changed(Aspect::Reference, name(before), name(after));
    }

    void compareArrays() const {
        if (before_.elementType() != after_.elementType())
            changed(Aspect::ElementType, attrTypeName(before_.elementType()), attrTypeName(after_.elementType()));
        compareCounts(before_.size(), after_.size());
    }

    void compareCounts(u64 before, u64 after) const {
        if (before != after)
            changed(Aspect::Count, std::to_string(before), std::to_string(after));
    }

    void compareBuffers() const {
        const AttrData& before = before_.value();
        const AttrData& after = after_.value();
        if (before.dataType() != after.dataType())
            changed(Aspect::DataType, dataTypeText(before.dataType()), dataTypeText(after.dataType()));
        compareCounts(before.count(), after.count());
        if (before.dataType() != after.dataType() || before == after)
            return;
        visitNumbers(before, [&]<class Number>(std::span<const Number> numbers) {
            const u64 components = elementLayout(before.dataType()).components;
            const auto difference = compareNumbers(numbers, after.elements<Number>(), components, tolerance_);
            report(Aspect::Elements, difference);
        });
    }

    void compareValues() const {
        const AttrData& before = before_.value();
        const AttrData& after = after_.value();
        if (before == after)
            return;
        if (before.components().empty())
            sink_(of(Aspect::Value));
        else
            report(Aspect::Value, compareNumbers(before.components(), after.components(), 1, tolerance_));
    }

    void report(Aspect aspect, const NumbersDifference& numbers) const {
        if (numbers.differing == 0)
            return;
        Difference difference = of(aspect);
        difference.numbers = numbers;
        sink_(difference);
    }

    const Input& before_;
    const Input& after_;
    std::string_view path_;
    double tolerance_;
    const DifferenceSink& sink_;
};

} // namespace

bool compareInputs(const Input& before, const Input& after, std::string_view path, double tolerance,
                   const DifferenceSink& sink) {
    return InputComparison(before, after, path, tolerance, sink).compare();
}

} // namespace vrn::inspect
