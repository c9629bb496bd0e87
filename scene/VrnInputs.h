// The statements that set an input of a node, and all inputs below it, to what they are.
#pragma once

#include "scene/VrnWriter.h"

#include <string>

namespace vor::velmo_sdk::impl {

// Whether a text can create the node: its name and its type are identifiers.
[[nodiscard]] bool isWritable(const Node& node);

class VrnInputs {
public:
    VrnInputs(TextBlock& text, const VrnWriterOptions& options, std::vector<VrnLoss>& losses)
        : text_(text), options_(options), losses_(losses) {}

    // Writes an input of the current node. If the input `isThere` already, with the same type, its members and elements
    // are replaced.
    void write(const Input& input, bool isThere);

private:
    // What the text has made of an input before its own statements.
    enum class Before : u8 {
        Nothing,
        Same,    // an input of the same type
        Untyped, // an element without a type, because links after it come first
        ByPath,  // nothing or such an element, of an array that `= []` would give a type to elements made by links
    };

    // The order in which the elements of an array are written.
    enum class Order : u8 {
        ByIndex,
        LinksFirst,     // then the others
        EmptyArraysLast // after the links and the other arrays
    };

    // How an array gets its elements. Elements made by links (of type Null or Node) have to exist before the array has
    // an element type, because later ones are created with that type.
    struct ArrayPlan {
        AttrType type = AttrType::Null; // the element type that values give the array; Null if there are only links
        Order order = Order::ByIndex;
        u64 firstTyped = 0;      // the first element whose value gives the type
        u64 endOfTyped = 0;      // one after the last; 0 if there is none
        u64 endOfLinks = 0;      // one after the last element made by a link; 0 if there is none
        bool keepsLinks = false; // what links make can stay without a type

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
        u64 next = 0; // counts all children once for each pass
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
    std::string path_;  // of the input that is being written, with its indentation
    std::string value_; // reused by every statement
    std::vector<Open> open_;
};

} // namespace vor::velmo_sdk::impl
