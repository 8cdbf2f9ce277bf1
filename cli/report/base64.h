// Encodes bytes as text, for pictures embedded in a page (RFC 4648, section 4).
#ifndef VISTATRIM_CLI_REPORT_BASE64_H
#define VISTATRIM_CLI_REPORT_BASE64_H

#include <cstdint>
#include <string>
#include <vector>

namespace vistaTrim::cli {

std::string Base64(const std::vector<uint8_t>& bytes);

} // namespace vistaTrim::cli

#endif
