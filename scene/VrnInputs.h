// Writes the statements that recreate an input of a node and everything below it.
#pragma once

#include "scene/VrnWriter.h"

#include <string>

namespace vor::velmo_sdk::impl {

// Whether a file can create the node: its name and type are identifiers.
[[nodiscard]] bool isWritable(const Node& node);

class VrnInputs {
public:
    VrnInputs(TextBlock& text, const VrnWriterOptions& options, std::vector<VrnLoss>& losses)
        : text_(text), options_(options), losses_(losses) {}

    // Writes an input of the current node, whose block is open. If `isThere`, the node already has the input with the
    // same type, from its definition; its members and elements are replaced.
    void write(const Input& input, bool isThere);

private:
    // The state of an input, when the text is read, before its own statements.
    enum class Before : u8 {
        Nothing,
        Same,    // an input of the same type
        Untyped, // an element without a type, because links at higher indices precede it
        ByPath,  // nothing, or such an element, where `= []` would also give a type to the elements created by links
    };

    // The order in which the elements of an array are written.
    enum class Order : u8 {
        ByIndex,
        LinksFirst,     // links before all others
        EmptyArraysLast // after the links and the other arrays
    };

    // How to write the elements of an array. Elements created by links (of type Null or Node) must exist before the
    // array has an element type, because later ones are created with that type.
    struct ArrayPlan {
        AttrType type = AttrType::Null; // the element type that values give the array; Null if there are only links
        Order order = Order::ByIndex;
        u64 firstTyped = 0;      // the first element whose value sets the element type
        u64 endOfTyped = 0;      // one past the last of them; 0 if there is none
        u64 endOfLinks = 0;      // one past the last element created by a link; 0 if there is none
        bool keepsLinks = false; // elements created by links can stay without a type

        [[nodiscard]] bool isKept(u64 link) const noexcept {
            return type == AttrType::Null || (keepsLinks && (link < firstTyped || order != Order::ByIndex));
        }
        [[nodiscard]] u64 passes() const noexcept { return 1 + static_cast<u64>(order); }
        [[nodiscard]] u64 passOf(const Input& element) const noexcept;
    };

    // An input whose members or elements are being written.
    struct Open {
        const Input* input;
        std::size_t pathLength;
        ArrayPlan plan{};
        u64 next = 0; // the next child; all children are visited in each pass
        [[nodiscard]] u64 end() const noexcept { return input->size() * plan.passes(); }
    };

    void writeNextOf(Open& parent);
    void writeMember(const Input& member);
    void writeElement(const Input& element, const ArrayPlan& plan);
    void begin(const Input& input, Before before);
    void writeValue(const Input& input, Before before);
    void beginArray(const Input& array, Before before);
    void beginObject(const Input& object, Before before);
    void createByPath(const char* furtherPath);
    void writeBuffer(const Input& input);
    void writeReference(const Input& input);
    void writeConnection(const Input& input);
    void keepPlaceAndLink(const Input& element);
    void assign(const AttrData& value);
    void statement(std::string_view sign, std::string_view value);
    void lose(const Input& input, const char* what) { losses_.push_back({input.label(), what}); }
    [[nodiscard]] static ArrayPlan planOf(const Input& array);
    [[nodiscard]] static bool canCreateByPaths(const Input& array, u64 endOfLinks);
    [[nodiscard]] static const char* obstacle(const Input& input);
    [[nodiscard]] static const char* elementLoss(const Input& element, const ArrayPlan& plan);

    TextBlock& text_;
    const VrnWriterOptions& options_;
    std::vector<VrnLoss>& losses_;
    std::string path_;  // the current input, with the indentation
    std::string value_; // reused by every statement
    std::vector<Open> open_;
};

} // namespace vor::velmo_sdk::impl
