#include "check/SceneCheck.h"

#include "check/Counts.h"
#include "check/Declared.h"
#include "check/Files.h"
#include "check/Hierarchy.h"
#include "check/Indices.h"
#include "check/Links.h"
#include "check/Names.h"
#include "check/Usage.h"
#include "check/Values.h"

namespace vrn::check {

using namespace vor;
using namespace vor::velmo_sdk;
using namespace vor::velmo_sdk::impl;

namespace {

// The declarations of sibling inputs by name. Inputs mostly have the order of their declarations, so that the search
// begins after the last one found.
class Declarations {
public:
    explicit Declarations(std::span<const InputType> all) : all_(all) {}

    [[nodiscard]] const InputType* find(const String& name) {
        for (std::size_t i = 0; i < all_.size(); ++i) {
            const std::size_t at = (next_ + i) % all_.size();
            if (all_[at].name == name) {
                next_ = at + 1;
                return &all_[at];
            }
        }
        return nullptr;
    }

private:
    std::span<const InputType> all_;
    std::size_t next_ = 0;
};

// Visits the inputs that the catalogue declares. Recurses into what it declares, which is never deep; inputs of a file
// may be nested to any depth.
class SceneChecks {
public:
    SceneChecks(const Scene& scene, const Catalogue& catalogue, const Options& options, Findings& findings)
        : scene_(scene), catalogue_(catalogue), options_(options), findings_(findings) {}

    void run() {
        UnknownTypes unknown(scene_, catalogue_);
        for (const Node& node : scene_.nodes()) {
            if (const NodeType* type = catalogue_.find(node.type()))
                checkInputs(node.inputs(), type->inputs(), *type);
            else
                unknown.add(node);
        }
        unknown.report(findings_);
        hierarchy_.reportCycles(findings_);
        if (options_.isPedantic)
            checkUsage(scene_, catalogue_, findings_);
    }

private:
    void checkInputs(std::span<const Input* const> inputs, std::span<const InputType> types, const NodeType& owner) {
        Declarations declarations(types);
        for (const Input* input : inputs) {
            const InputType* type = declarations.find(input->key());
            if (type)
                checkInput({*input, *type, types}, owner);
            else
                unknownInputs_.add(*input, owner, types);
        }
    }

    void checkInput(const Declared& declared, const NodeType& owner) {
        const auto& [input, type, siblings] = declared;
        checkType(declared, findings_);
        checkCount(declared, findings_);
        checkIndices(declared, findings_);
        if (input.type() != AttrType::Array)
            return checkContents(declared, owner);
        for (const Input* element : input.children())
            checkContents({*element, type, siblings}, owner);
    }

    // Of an input or, for an array, of each element.
    void checkContents(const Declared& declared, const NodeType& owner) {
        checkRange(declared, findings_);
        checkListed(declared, findings_);
        checkLink(declared, catalogue_, findings_);
        checkFile(declared, options_.folder, findings_);
        hierarchy_.add(declared);
        if (declared.input.type() == AttrType::Object && !declared.type.members.empty())
            checkInputs(declared.input.children(), declared.type.members, owner);
    }

    const Scene& scene_;
    const Catalogue& catalogue_;
    const Options& options_;
    Findings& findings_;
    UnknownInputs unknownInputs_{findings_};
    Hierarchy hierarchy_;
};

} // namespace

std::vector<LogRecord> checkScene(const Scene& scene, const Catalogue& catalogue, const SourceMap& sources,
                                  const Options& options) {
    Findings findings(sources, options.ignored);
    SceneChecks(scene, catalogue, options, findings).run();
    return findings.take();
}

} // namespace vrn::check
