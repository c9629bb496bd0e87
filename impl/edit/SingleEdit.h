// SingleEdit: makes one edit of a text.
//
// Reads the text into a scene and changes that scene in the same way as the text; the new text must then read as the
// same scene.
#pragma once

#include "impl/Edit.h"
#include "impl/edit/Refusals.h"
#include "impl/edit/Statements.h"

namespace vor::velmo_sdk::impl {

class SingleEdit {
public:
    // Throws Refused if the text cannot be read.
    SingleEdit(const String& text, const EditOptions& options);
    SingleEdit(const SingleEdit&) = delete;
    SingleEdit& operator=(const SingleEdit&) = delete;

    // The changes in order, or throws Refused. Call once.
    [[nodiscard]] std::vector<TextChange> make(const Edit& edit);

private:
    using Changes = std::vector<TextChange>;

    [[nodiscard]] Changes assign(const Edit& edit, std::string_view sign);
    [[nodiscard]] Changes add(const Edit& edit);
    [[nodiscard]] Changes rename(const Edit& edit);
    [[nodiscard]] Changes remove(const Edit& edit);
    [[nodiscard]] Changes removeNode(const String& name, u32 node);
    [[nodiscard]] Changes removeInput(Input* input);

    void prepare(Scene& scene) const;
    [[nodiscard]] AttrType typeOf(std::string_view value) const;
    [[nodiscard]] std::string spelling(const AttrData& converted, std::string_view value) const;
    [[nodiscard]] const Statement* effective(u32 node, const Statement& asked, AttrType type) const;
    [[nodiscard]] std::size_t lastOf(u32 node) const;
    [[nodiscard]] std::vector<std::size_t> assignmentsBelow(u32 node, std::string_view path) const;
    template <class Predicate> [[nodiscard]] std::vector<std::size_t> mentionsIf(Predicate predicate) const;
    void refuseIfNamed(const String& name, bool isType) const;
    void verify(const Edit& edit, const Changes& changes) const;
    [[nodiscard]] std::vector<std::size_t> placesOf(std::string_view label) const;

    const EditOptions& options_;
    Scene expected_; // first that of the text, then as it should be
    Statements statements_;
};

} // namespace vor::velmo_sdk::impl
