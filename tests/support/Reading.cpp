#include "tests/support/Reading.h"

namespace vrn::test {

Reading readText(const String& text) { return readText(text, nullptr); }

Reading readText(const String& text, std::shared_ptr<const Catalogue> catalogue) {
    Reading reading;
    reading.scene->setCatalogue(std::move(catalogue));
    readMore(reading, text);
    return reading;
}

void readMore(Reading& reading, const String& text) {
    reading.log.clear();
    reading.thrown.reset();
    reading.run([&] { return parseString(reading.scene.get(), text); });
}

Input* Reading::input(const String& path) const {
    ParserOn parser(path);
    ds::Vector<Token> tokens;
    if (!parser->path(tokens))
        return nullptr;
    const Node* owner = scene->findNode(tokens[0].text);
    Input* input = owner ? owner->input(tokens[2].text) : nullptr;
    for (std::size_t i = 3; i < tokens.size() && input; ++i) {
        u64 index = 0;
        if (tokens[i].type == Token::Type::Id)
            input = input->input(tokens[i].text);
        else if (tokens[i].type == Token::Type::Brackets)
            input = String::parse(String(tokens[i].text).trimChars("[]"), index) ? input->element(index) : nullptr;
    }
    return input;
}

std::string Reading::logText() const {
    std::string text;
    const auto add = [&](const char* kind, const LogRecord& record) {
        text += String::format("%s %d,%d: ", kind, record.position.line, record.position.column);
        text += record.text.view();
        text += '\n';
    };
    for (const LogRecord& record : log)
        add(record.severity == LogSeverity::Error ? "error" : "warning", record);
    if (thrown)
        add("thrown", *thrown);
    else
        text += isOk ? "result true\n" : "result false\n";
    return text;
}

std::string Reading::json() const {
    std::string text;
    writeSceneJson(*scene, {}, [&](std::string_view piece) { text += piece; });
    return text;
}

} // namespace vrn::test
