// SingleEdit: makes one edit of a text.
//
// Changes the scene of the text in the same way as the text; the new text must then read as the same scene.
#pragma once

#include "impl/edit/EditableText.h"
#include "impl/edit/Refusals.h"

namespace vor::velmo_sdk::impl {

class SingleEdit {
public:
    using Changes = std::vector<TextChange>;

    struct Made {
        Changes changes;                      // in order
        std::unique_ptr<EditableText> text{}; // what they lead to; null after the last edit, which needs only the check
    };

    // The text is one that the reader reads to its end. Its scene is changed.
    SingleEdit(EditableText& text, const EditOptions& options)
        : options_(options), expected_(text.scene), statements_(text.statements) {}
    SingleEdit(const SingleEdit&) = delete;
    SingleEdit& operator=(const SingleEdit&) = delete;

    // Throws Refused. Call once.
    [[nodiscard]] Made make(const Edit& edit, bool isLast);

private:
    [[nodiscard]] Changes changesFor(const Edit& edit);
    [[nodiscard]] Changes assign(const Edit& edit, std::string_view sign);
    [[nodiscard]] Changes add(const Edit& edit);
    [[nodiscard]] Changes rename(const Edit& edit);
    [[nodiscard]] Changes remove(const Edit& edit);
    [[nodiscard]] Changes removeNode(const String& name, bool isType);
    [[nodiscard]] Changes removeInput(Input* input);

    [[nodiscard]] const Node& nodeNamed(const String& name, const String& asked) const;
    [[nodiscard]] AttrType typeOf(std::string_view value) const;
    [[nodiscard]] std::string spelling(const AttrData& converted, std::string_view value) const;
    [[nodiscard]] const Statement* effective(u32 node, const Statement& asked, AttrType type) const;
    [[nodiscard]] std::size_t lastOf(u32 node) const;
    [[nodiscard]] std::vector<std::size_t> assignmentsBelow(u32 node, std::string_view path) const;
    template <class Predicate> [[nodiscard]] std::vector<std::size_t> mentionsIf(Predicate predicate) const;
    void refuseIfNamed(const String& name, bool isType) const;
    [[nodiscard]] std::unique_ptr<EditableText> verify(const Edit& edit, const Changes& changes, bool isLast) const;
    [[nodiscard]] std::vector<Finding> readOnly(const String& text, Scene& scene) const;
    void refuseNewFindings(const std::vector<Finding>& findings) const;
    [[nodiscard]] std::vector<std::size_t> placesOf(std::string_view label) const;

    const EditOptions& options_;
    Scene& expected_; // first that of the text, then as it should be
    const Statements& statements_;
};

} // namespace vor::velmo_sdk::impl
