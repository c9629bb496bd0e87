// Where statements are put into a text and taken out of it, so that lines, indentation and comments stay as they are.
#pragma once

#include "impl/Edit.h"
#include "impl/edit/Statements.h"

namespace vor::velmo_sdk::impl {

// Adds an assignment after a statement of the same node: on a line of its own if that statement has one, after its
// comment, and with the indentation and the spaces of its neighbours. `path` begins with the name of the node, which is
// omitted if the statement omits it.
[[nodiscard]] TextChange insertAssignment(const Statements& statements, std::size_t after, std::string_view path,
                                          std::string_view sign, std::string_view value);

// Adds `TYPE NAME` as the last statement, with the punctuation of the last declaration and as far below the others.
[[nodiscard]] TextChange appendDeclaration(const Statements& statements, std::string_view typeAndName);

// Removes statements, given by their indices in order. Lines that become empty disappear; comments stay.
[[nodiscard]] std::vector<TextChange> removeStatements(const Statements& statements,
                                                       std::span<const std::size_t> removed);

} // namespace vor::velmo_sdk::impl
