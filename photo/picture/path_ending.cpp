#include "picture/path_ending.h"

#include <algorithm>
#include <cctype>

namespace vistaTrim::photo {

std::string EndingOfPath(const std::string& path)
{
    const std::string name = path.substr(path.find_last_of('/') + 1);
    const size_t dot = name.find_last_of('.');
    if (dot == std::string::npos || dot == 0)
        return "";
    std::string ending = name.substr(dot + 1);
    const auto isDigit = [](unsigned char c) { return std::isdigit(c) != 0; };
    if (ending.find(' ') != std::string::npos || std::all_of(ending.begin(), ending.end(), isDigit))
        return "";
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return ending;
}

} // namespace vistaTrim::photo
