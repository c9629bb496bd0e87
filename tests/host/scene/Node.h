// The nodes of a scene model that records the calls of the reader.
#pragma once

#include "scene/Input.h"

namespace vor::velmo_sdk::impl {

class Output final : public interfaces::IOutput {
public:
    explicit Output(String name) : name_(std::move(name)) {}
    [[nodiscard]] String name() const override { return name_; }

private:
    String name_;
};

class Node final : public interfaces::INode {
public:
    Node(String type, String name)
        : type_(std::move(type)), name_(std::move(name)), inputs_(std::string(name_.view()), nullptr, AttrData()) {}

    [[nodiscard]] String name() const override { return name_; }
    [[nodiscard]] String type() const override { return type_; }
    [[nodiscard]] interfaces::IOutput* findOutput(const String& name) override {
        record(name_, ".findOutput(", name, ")");
        output_ = std::make_unique<Output>(name);
        return name.startsWith("no") ? nullptr : output_.get();
    }
    [[nodiscard]] bool hasInput(const String& name, AttrType type) const {
        record(name_, ".hasInput(", name, ", ", attrTypeName(type), ")");
        return inputs_.input(name) != nullptr;
    }
    [[nodiscard]] Input* input(const String& name) {
        record(name_, ".input(", name, ")");
        return inputs_.input(name);
    }
    Input* createInput(const String& name, AttrType type) { return top(inputs_.createInput(name, type)); }
    Input* createArray(const String& name, AttrType type) { return top(inputs_.createArray(name, type)); }

private:
    static Input* top(Input* input) { return input; }

    String type_;
    String name_;
    Input inputs_; // holds the node's inputs as its members
    std::unique_ptr<Output> output_;
};

} // namespace vor::velmo_sdk::impl
