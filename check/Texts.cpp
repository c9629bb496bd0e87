#include "check/Texts.h"

#include "scene/core/NumberText.h"
#include "scene/core/TextEncoding.h"

namespace vrn::check {

using namespace vor;

std::string shortened(std::string_view text) {
    constexpr std::size_t maxLength = 200;
    return truncated(text, maxLength);
}

std::string pathText(const velmo_sdk::impl::Input& input) { return shortened(input.label()); }

std::string numberText(double number) {
    char buffer[realTextCapacity];
    return std::string(writeReal(number, buffer));
}

std::string numberText(float number) {
    char buffer[realTextCapacity];
    return std::string(writeReal(number, buffer));
}

std::string elementsText(u64 count) { return std::to_string(count) + (count == 1 ? " element" : " elements"); }

std::string eitherText(const std::vector<std::string>& choices) {
    constexpr std::size_t maxChoices = 8;
    std::string text;
    for (std::size_t i = 0; i < choices.size(); ++i) {
        const bool isLast = i + 1 == choices.size();
        if (i == maxChoices && !isLast)
            return text + " or others";
        text += i == 0 ? "" : isLast ? " or " : ", ";
        text += choices[i];
    }
    return text;
}

} // namespace vrn::check
