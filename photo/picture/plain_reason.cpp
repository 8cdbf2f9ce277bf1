#include "picture/plain_reason.h"

#include <algorithm>
#include <cctype>
#include <initializer_list>

namespace vistaTrim::photo {

namespace {

using Kind = PhotoError::Kind;

std::string LowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

// "No space left on device", which follows "unix error:" up to the end of the line.
std::string SystemReason(const std::string& message)
{
    const std::string mark = "unix error: ";
    const size_t at = message.find(mark);
    if (at == std::string::npos)
        return "";
    const size_t begin = at + mark.size();
    return message.substr(begin, message.find('\n', begin) - begin);
}

bool Says(const std::string& text, std::initializer_list<const char*> words)
{
    return std::any_of(words.begin(), words.end(),
                       [&text](const char* word) { return text.find(word) != std::string::npos; });
}

} // namespace

PhotoError PlainError(Kind kind, const std::string& message)
{
    const std::string text = LowerCase(message);
    const std::string system = SystemReason(message);
    if (Says(text, {"out of memory", "cannot allocate memory", "unable to allocate"}))
        return {Kind::OutOfMemory, "not enough memory"};
    switch (kind) {
    case Kind::Unreadable:
    case Kind::Damaged:
        if (!system.empty())
            return {Kind::Unreadable, system};
        if (Says(text, {"operation is blocked", "unsupported", "not supported", "unimplemented",
                        "samples out of range"}))
            return {Kind::Unsupported, "an unsupported kind of picture"};
        if (Says(text, {"too large", "too big", "too many pixels", "exceeds", "limit"}))
            return {Kind::Unsupported, "the picture is larger than can be read"};
        if (Says(text, {"premature", "truncated", "unexpected end", "end of file", "end of stream",
                        "end of input", "eof"}))
            return {Kind::Damaged, "the file is cut short"};
        return {Kind::Damaged, "the file is damaged or cut short"};
    case Kind::NotWritable:
        if (!system.empty())
            return {kind, "cannot be written: " + system};
        if (Says(text, {"too large", "too big", "too wide", "dimension", "exceeds"}))
            return {kind, "the format does not hold a picture of this size"};
        if (Says(text, {"unsupported", "not supported", "not found", "no encoder"}))
            return {kind, "the installed libvips does not write this format"};
        return {kind, "the picture cannot be written"};
    default: break;
    }
    return {kind, "the picture library fails"};
}

} // namespace vistaTrim::photo
