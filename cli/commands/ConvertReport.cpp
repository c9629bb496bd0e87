#include "cli/commands/ConvertReport.h"

#include "cli/terminal/Messages.h"
#include "scene/JsonWriter.h"
#include "scene/core/TextEncoding.h"

namespace vrn::cli {

using namespace vor;
using vor::velmo_sdk::impl::JsonText;

namespace {

String lossText(const convert::Loss& loss, const std::string& file) {
    return String::format(messages::lost, escapeForTerminal(file).buf(), escapeForTerminal(loss.what).buf(),
                          static_cast<unsigned long long>(loss.count), loss.count == 1 ? "" : "first ",
                          escapeForTerminal(loss.first).buf());
}

String warningText(const convert::Loss& loss, const std::string& file) {
    const String name = escapeForTerminal(file);
    const String text = escapeForTerminal(loss.first);
    if (loss.count == 1)
        return String::format(messages::readerWarning, name.buf(), text.buf());
    return String::format(messages::readerWarnings, name.buf(), text.buf(),
                          static_cast<unsigned long long>(loss.count - 1));
}

} // namespace

std::string lossesText(const convert::Losses& losses, const std::string& from, const std::string& to) {
    std::string text;
    for (const convert::Loss& loss : losses.all())
        text += (loss.isWarning ? warningText(loss, from) : lossText(loss, to)).view();
    return text;
}

std::string lossesJson(const convert::Losses& losses, const std::string& from, const std::string& to) {
    std::string text;
    for (const convert::Loss& loss : losses.all()) {
        JsonText json;
        json.object([&] {
            json.key("file").text(loss.isWarning ? from : to);
            json.key("kind").text(loss.isWarning ? "warning" : "loss");
            json.key("what").text(loss.isWarning ? loss.first.view() : std::string_view(loss.what));
            json.key("count").number(loss.count);
            if (!loss.isWarning)
                json.key("first").text(loss.first);
        });
        text += json.view();
        text += '\n';
    }
    return text;
}

} // namespace vrn::cli
