// Shapes with a name.
#ifndef VISTATRIM_CLI_OPTIONS_PRESETS_H
#define VISTATRIM_CLI_OPTIONS_PRESETS_H

#include <optional>
#include <string>
#include <vector>

#include "options/shape.h"

namespace vistaTrim::cli {

class Presets {
public:
    Presets(); // those of presets.tsv

    // Adds the rows of a file of the same form; a name that is there already gets the new shape.
    // Throws std::runtime_error with file and line for a row that is not understood.
    void AddFile(const std::string& path);
    void AddTable(const std::string& table, const std::string& source);

    std::optional<Shape> Find(const std::string& name) const;
    std::string Names() const; // "square, portrait and wide"

private:
    std::vector<Shape> Shapes;
};

} // namespace vistaTrim::cli

#endif
