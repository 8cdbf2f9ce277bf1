// Names and texts as they are shown to people: no name can move the cursor or begin a new line.
#ifndef VISTATRIM_CLI_TEXT_SHOWN_NAME_H
#define VISTATRIM_CLI_TEXT_SHOWN_NAME_H

#include <string>

namespace vistaTrim::cli {

// A name of a file as it is, unless it holds control characters, marks that turn the direction of
// writing, or bytes that are not UTF-8. Then in the quotes of the shell, as $'new\nline.jpg', which
// a shell takes back as the same name. An empty name is shown as two quotes.
std::string Shown(const std::string& name);

// A message that may hold such a name: the same escapes, but no quotes.
std::string OneLine(const std::string& text);

} // namespace vistaTrim::cli

#endif
