#include "inspect/read/Kind.h"

#include "check/Findings.h"
#include "impl/Reader.h"

namespace vrn::inspect {

const char* kindOf(const vor::LogRecord& record) noexcept {
    const char* finding = check::kindName(record.format);
    return finding ? finding : vor::velmo_sdk::impl::messageName(record.format);
}

std::string markOf(const vor::LogRecord& record) {
    if (const char* kind = check::kindName(record.format))
        return std::string(" [") + kind + ']';
    return record.severity == vor::LogSeverity::Notice ? " [check]" : "";
}

} // namespace vrn::inspect
