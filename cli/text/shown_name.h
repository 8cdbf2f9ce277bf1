// File names and messages made safe to show: none can move the cursor or begin a new line.
#ifndef VISTATRIM_CLI_TEXT_SHOWN_NAME_H
#define VISTATRIM_CLI_TEXT_SHOWN_NAME_H

#include <string>

namespace vistaTrim::cli {

// A file name as it is, unless it holds control characters, bidirectional marks or bytes that are
// not UTF-8. Then it is quoted for the shell, as in $'new\nline.jpg', which a shell reads as the
// same name. An empty name is shown as two quotes.
std::string Shown(const std::string& name);

// A message that may hold such a name: the same escapes, but no quotes.
std::string OneLine(const std::string& text);

} // namespace vistaTrim::cli

#endif
