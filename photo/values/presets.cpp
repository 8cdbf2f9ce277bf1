#include "vistaTrimPhoto/presets.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

#include "values/presets_table.h"
#include "vistaTrimPhoto/geometry.h"
#include "vistaTrimPhoto/photo_error.h"

namespace vistaTrim::photo {

namespace {

// Says what is wrong with a row; the reader adds the row number.
class RowFault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Names become parts of file names, and must not read as ratios.
bool IsName(const std::string& text)
{
    const auto isPart = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '-' || c == '_';
    };
    return !text.empty() && text[0] != '-' && std::all_of(text.begin(), text.end(), isPart) &&
           !ParseRatio(text);
}

Shape ShapeOfRow(const std::string& row)
{
    std::vector<std::string> cells;
    std::istringstream stream(row);
    for (std::string cell; std::getline(stream, cell, '\t');)
        cells.push_back(cell);
    if (cells.size() < 2 || cells.size() > 4)
        throw RowFault("a row has a name, a ratio, a size or -, and what it is for, "
                       "with tabs between them");
    if (!IsName(cells[0]))
        throw RowFault("'" + cells[0] +
                       "' is not a name of letters, digits, - and _, or reads as a ratio");
    Shape shape{cells[0], "", {}, {}};
    const bool hasSize = cells.size() > 2 && cells[2] != "-";
    if (hasSize) {
        shape.Fill = ParseSize(cells[2]);
        if (!shape.Fill)
            throw RowFault("'" + cells[2] + "' is not WxH");
    }
    if (cells[1] == "-" && hasSize) {
        const Shape ofSize = ShapeOfSize(*shape.Fill);
        shape.Aspect = ofSize.Aspect;
        shape.RatioText = ofSize.RatioText;
        return shape;
    }
    const std::optional<Shape> ofRatio = ShapeOfRatio(cells[1]);
    if (!ofRatio)
        throw RowFault("'" + cells[1] + "' is not W:H");
    shape.Aspect = ofRatio->Aspect;
    shape.RatioText = ofRatio->RatioText;
    if (hasSize && !(Reduced(shape.Fill->Width, shape.Fill->Height) == shape.Aspect))
        throw RowFault("the size " + cells[2] + " is not of the ratio " + cells[1]);
    return shape;
}

} // namespace

Presets::Presets()
{
    AddTable(kPresetsTable, "presets.tsv");
}

void Presets::AddTable(const std::string& table, const std::string& source)
{
    std::istringstream stream(table);
    size_t number = 0;
    for (std::string row; std::getline(stream, row);) {
        ++number;
        if (!row.empty() && row.back() == '\r')
            row.pop_back();
        if (row.empty() || row[0] == '#')
            continue;
        try {
            const Shape shape = ShapeOfRow(row);
            const auto known =
                std::find_if(Shapes.begin(), Shapes.end(),
                             [&shape](const Shape& other) { return other.Name == shape.Name; });
            if (known != Shapes.end())
                *known = shape;
            else
                Shapes.push_back(shape);
        } catch (const RowFault& error) {
            throw PhotoError(PhotoError::Kind::InvalidRequest,
                             source + ":" + std::to_string(number) + ": " + error.what());
        }
    }
}

std::optional<Shape> Presets::Find(const std::string& name) const
{
    for (const Shape& shape : Shapes)
        if (shape.Name == name)
            return shape;
    return std::nullopt;
}

const std::vector<Shape>& Presets::All() const
{
    return Shapes;
}

std::string Presets::Names() const
{
    std::string names;
    for (size_t i = 0; i < Shapes.size(); ++i)
        names += (i == 0 ? "" : i + 1 == Shapes.size() ? " and " : ", ") + Shapes[i].Name;
    return names;
}

} // namespace vistaTrim::photo
