#include "text/shown_name.h"

#include <cstdint>

namespace vistaTrim::cli {

namespace {

struct Character {
    uint32_t Code = 0;
    size_t Bytes = 0; // 0: not UTF-8
};

Character CharacterAt(const std::string& text, size_t at)
{
    const auto byte = [&text](size_t i) { return static_cast<unsigned char>(text[i]); };
    const uint32_t first = byte(at);
    if (first < 0x80)
        return {first, 1};
    const size_t bytes = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || at + bytes > text.size())
        return {};
    uint32_t code = first & (0x7FU >> bytes);
    for (size_t i = 1; i < bytes; ++i) {
        if ((byte(at + i) & 0xC0U) != 0x80)
            return {};
        code = code << 6U | (byte(at + i) & 0x3FU);
    }
    constexpr uint32_t kLeast[] = {0, 0, 0x80, 0x800, 0x10000}; // overlong encodings are not UTF-8
    const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < kLeast[bytes] || isSurrogate || code > 0x10FFFF)
        return {};
    return {code, bytes};
}

bool IsPlain(const Character& character)
{
    const uint32_t code = character.Code;
    const bool isControl = code < 0x20 || (code >= 0x7F && code < 0xA0);
    const bool breaksLine = code == 0x2028 || code == 0x2029;
    const bool turns = code == 0x200E || code == 0x200F || (code >= 0x202A && code <= 0x202E) ||
                       (code >= 0x2066 && code <= 0x2069);
    return character.Bytes != 0 && !isControl && !breaksLine && !turns;
}

std::string Escape(unsigned char byte)
{
    switch (byte) {
    case '\n': return "\\n";
    case '\r': return "\\r";
    case '\t': return "\\t";
    default: break;
    }
    const auto digit = [byte](int shift) { return static_cast<char>('0' + (byte >> shift) % 8); };
    return {'\\', digit(6), digit(3), digit(0)};
}

// Returns whether anything was escaped. In quotes, a quote and a backslash are escaped as well.
bool AddEscaped(const std::string& text, bool inQuotes, std::string& escaped)
{
    bool any = false;
    for (size_t i = 0; i < text.size();) {
        const Character character = CharacterAt(text, i);
        const size_t bytes = character.Bytes == 0 ? 1 : character.Bytes;
        if (!IsPlain(character)) {
            any = true;
            for (size_t k = 0; k < bytes; ++k)
                escaped += Escape(static_cast<unsigned char>(text[i + k]));
        } else {
            if (inQuotes && (text[i] == '\'' || text[i] == '\\'))
                escaped += '\\';
            escaped.append(text, i, bytes);
        }
        i += bytes;
    }
    return any;
}

} // namespace

std::string Shown(const std::string& name)
{
    if (name.empty())
        return "''";
    std::string quoted = "$'";
    return AddEscaped(name, true, quoted) ? quoted + "'" : name;
}

std::string OneLine(const std::string& text)
{
    std::string line;
    AddEscaped(text, false, line);
    return line;
}

} // namespace vistaTrim::cli
