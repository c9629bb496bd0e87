#include "cli/files/Mark.h"

#include "check/Findings.h"

namespace vrn::cli {

std::string markOf(const vor::LogRecord& record) {
    if (const char* kind = check::kindName(record.format))
        return std::string(" [") + kind + ']';
    return record.severity == vor::LogSeverity::Notice ? " [check]" : "";
}

} // namespace vrn::cli
