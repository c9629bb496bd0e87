// What a conversion lost, and what its readers noticed, as lines of text or JSON on standard error.
#pragma once

#include "convert/Convert.h"

namespace vrn::cli {

// `from` and `to` are the names of the files that warnings and losses are about.
[[nodiscard]] std::string lossesText(const convert::Losses& losses, const std::string& from, const std::string& to);
[[nodiscard]] std::string lossesJson(const convert::Losses& losses, const std::string& from, const std::string& to);

} // namespace vrn::cli
