// Named shapes.
#ifndef VISTATRIM_PHOTO_PRESETS_H
#define VISTATRIM_PHOTO_PRESETS_H

#include <optional>
#include <string>
#include <vector>

#include "vistaTrimPhoto/shape.h"

namespace vistaTrim::photo {

class Presets {
public:
    Presets(); // those of presets.tsv

    // Adds the rows of a table of the same format; a name that exists already gets the new shape.
    // `source` names the table in messages. Throws a PhotoError (InvalidRequest) that names it and
    // the row.
    void AddTable(const std::string& table, const std::string& source);

    std::optional<Shape> Find(const std::string& name) const;
    const std::vector<Shape>& All() const; // in the order of the tables
    std::string Names() const;             // "square, portrait and wide"

private:
    std::vector<Shape> Shapes;
};

} // namespace vistaTrim::photo

#endif
