// The statements that give an input of a node, however deep, all that it is.
#pragma once

#include "scene/VrnWriter.h"

#include <string>

namespace vor::velmo_sdk::impl {

// Whether a text can have the node: its name and its type are identifiers.
[[nodiscard]] bool isWritable(const Node& node);

class VrnInputs {
public:
    VrnInputs(TextBlock& text, const VrnWriterOptions& options, std::vector<VrnLoss>& losses)
        : text_(text), options_(options), losses_(losses) {}

    // For an input of the current node. If it `isThere` already, of the same type, its members and elements are
    // replaced.
    void write(const Input& input, bool isThere);

private:
    // What stands in the place of an input before it is written: nothing, one of its type, or an element that a later
    // link has made, without a type.
    enum class Before : u8 { Nothing, Same, Untyped };
    // How an array comes by its elements.
    struct ArrayPlan {
        AttrType type = AttrType::Null; // that their values give it; Null if there are links alone
        u64 firstTyped = 0;             // the first element that gives it
        u64 endOfTyped = 0;             // behind the last one
        u64 endOfLinks = 0;             // behind the last one made by a link, if these have to come first
    };
    // An input whose members or elements are being written.
    struct Open {
        const Input* input;
        std::size_t pathLength;
        ArrayPlan plan{};
        u64 next = 0; // of all children, then once more if there are links that come first
        [[nodiscard]] u64 end() const noexcept { return input->size() * (plan.endOfLinks != 0 ? 2 : 1); }
    };

    void writeNextOf(Open& parent);
    void begin(const Input& input, Before before);
    void writeValue(const Input& input, Before before);
    void beginArray(const Input& array, Before before);
    [[nodiscard]] ArrayPlan planOf(const Input& array);
    void beginObject(const Input& object, Before before);
    void makeByPath(const char* furtherPath);
    void writeBuffer(const Input& input);
    void writeReference(const Input& input);
    void writeConnection(const Input& input);
    void assign(const AttrData& value);
    void statement(std::string_view sign, std::string_view value);
    void lose(const Input& input, const char* what) { losses_.push_back({input.label(), what}); }
    [[nodiscard]] static const char* obstacle(const Input& input, const ArrayPlan* array);

    TextBlock& text_;
    const VrnWriterOptions& options_;
    std::vector<VrnLoss>& losses_;
    std::string path_;  // of the input that is being written, with its indentation
    std::string value_; // made anew for each statement
    std::vector<Open> open_;
};

} // namespace vor::velmo_sdk::impl
