#include "options/text_values.h"

#include <charconv>
#include <sstream>

namespace vistaTrim::cli {

std::optional<std::vector<double>> ParseNumbers(const std::string& text)
{
    std::vector<double> numbers;
    std::istringstream pieces(text + ','); // so that an empty last piece is noticed
    for (std::string piece; std::getline(pieces, piece, ',');) {
        double value = 0;
        const char* end = piece.data() + piece.size();
        const std::from_chars_result parsed =
            std::from_chars(piece.data(), end, value, std::chars_format::fixed);
        if (parsed.ec != std::errc() || parsed.ptr != end)
            return std::nullopt;
        // from_chars accepts "nan", which is useless here.
        if (!(value - value == 0.0))
            return std::nullopt;
        numbers.push_back(value);
    }
    return numbers;
}

} // namespace vistaTrim::cli
