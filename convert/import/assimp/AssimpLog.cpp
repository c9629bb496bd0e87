#include "convert/import/assimp/AssimpLog.h"

#include <assimp/DefaultLogger.hpp>
#include <assimp/LogStream.hpp>

namespace vrn::convert {

namespace {

constexpr std::string_view validation = "Validation warning: ";

// Assimp also logs what is usual or does not matter here.
bool isOfUse(std::string_view text) {
    const auto contains = [&](std::string_view part) { return text.find(part) != std::string_view::npos; };
    return text.starts_with(validation) || contains("gnor") || contains("kip") || contains("unexpected") ||
           contains("out of ");
}

// Adds what Assimp logs as warnings. A line is the severity and the thread, a colon and the text.
class WarningStream : public Assimp::LogStream {
public:
    explicit WarningStream(Losses& losses) : losses_(losses) {}

    void write(const char* line) override {
        std::string_view text(line);
        text.remove_prefix(std::min(text.find(": ") + 2, text.size()));
        text = text.substr(0, text.find('\n'));
        if (!isOfUse(text))
            return;
        if (text.starts_with(validation))
            text.remove_prefix(validation.size());
        losses_.warn(text);
    }

private:
    Losses& losses_;
};

} // namespace

AssimpLog::AssimpLog(Losses& losses) {
    Assimp::DefaultLogger::create(nullptr, Assimp::Logger::NORMAL, 0);
    Assimp::DefaultLogger::get()->attachStream(new WarningStream(losses), // owned by the log
                                               Assimp::Logger::Warn | Assimp::Logger::Err);
}

AssimpLog::~AssimpLog() { Assimp::DefaultLogger::kill(); }

} // namespace vrn::convert
