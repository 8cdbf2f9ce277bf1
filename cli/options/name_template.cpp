#include "options/name_template.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <stdexcept>

namespace vistaTrim::cli {

namespace {

struct Field {
    const char* Name;
    std::string NameFields::*Value;
};

constexpr Field kFields[] = {{"stem", &NameFields::Stem},    {"extension", &NameFields::Extension},
                             {"shape", &NameFields::Shape},  {"ratio", &NameFields::Ratio},
                             {"rank", &NameFields::Rank},    {"width", &NameFields::Width},
                             {"height", &NameFields::Height}};

std::string NameFields::*FieldOf(const std::string& name)
{
    for (const Field& field : kFields)
        if (name == field.Name)
            return field.Value;
    throw std::runtime_error(
        "there is no field {" + name +
        "}; there are {stem}, {extension}, {shape}, {ratio}, {rank}, {width} and {height}");
}

void CheckFolders(const std::string& text)
{
    namespace fs = std::filesystem;
    const fs::path path(text);
    if (path.is_absolute())
        throw std::runtime_error("a name must not begin with a slash");
    if (path.filename().empty())
        throw std::runtime_error("a name is missing");
    for (const fs::path& part : path)
        if (part == ".." || part == ".")
            throw std::runtime_error("a name must not contain . or .. as a folder");
}

} // namespace

NameTemplate::NameTemplate(const std::string& text)
{
    CheckFolders(text);
    std::string plain;
    for (size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        const bool doubled = i + 1 < text.size() && text[i + 1] == c;
        if (c != '{' && c != '}') {
            plain += c;
        } else if (doubled) {
            plain += c;
            ++i;
        } else if (c == '}') {
            throw std::runtime_error("a } has no {");
        } else {
            const size_t end = text.find('}', i);
            if (end == std::string::npos)
                throw std::runtime_error("a { has no }");
            Pieces.push_back({plain, nullptr});
            Pieces.push_back({"", FieldOf(text.substr(i + 1, end - i - 1))});
            plain.clear();
            i = end;
        }
    }
    Pieces.push_back({plain, nullptr});
}

std::string NameTemplate::Expand(const NameFields& fields) const
{
    std::string name;
    for (const Piece& piece : Pieces)
        name += piece.Field != nullptr ? fields.*piece.Field : piece.Text;
    return name;
}

} // namespace vistaTrim::cli
