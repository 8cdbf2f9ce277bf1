// How the files of crops are named.
#ifndef VISTATRIM_CLI_OPTIONS_NAME_TEMPLATE_H
#define VISTATRIM_CLI_OPTIONS_NAME_TEMPLATE_H

#include <string>
#include <vector>

namespace vistaTrim::cli {

struct NameFields {
    std::string Stem;      // of the photograph
    std::string Extension; // of the photograph, without the dot
    std::string Shape;
    std::string Ratio;
    std::string Rank;
    std::string Width; // of the file
    std::string Height;
};

// Text with fields in braces, such as "{stem}-{ratio}"; {{ and }} are literal braces. Slashes
// separate folders. The file's ending is not part of the template.
class NameTemplate {
public:
    // Throws std::runtime_error for an unknown field or a name that leads out of the folder.
    explicit NameTemplate(const std::string& text);

    std::string Expand(const NameFields& fields) const;

private:
    struct Piece {
        std::string Text;
        std::string NameFields::*Field = nullptr; // if set, the text is not used
    };
    std::vector<Piece> Pieces;
};

} // namespace vistaTrim::cli

#endif
