#include "crop_tables.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

const char* const kCropTableHelp =
    "Tables are tab-separated text with a header line of column names.\n"
    "  boxes:  split file width height x y w h            the crop a person chose\n"
    "  pairs:  split file x0 y0 w0 h0 votes0 x1 y1 w1 h1 votes1   two crops and their votes\n"
    "Coordinates are pixels of the photograph scaled to 640 on its longer side, origin top\n"
    "left; a box covers x..x+w, y..y+h.";

namespace {

std::vector<std::string> SplitLine(const std::string& line)
{
    std::vector<std::string> fields;
    std::istringstream stream(line);
    for (std::string field; std::getline(stream, field, '\t');) {
        if (!field.empty() && field.back() == '\r')
            field.pop_back();
        fields.push_back(field);
    }
    return fields;
}

// A table with named columns, read line by line.
class CTableReader {
public:
    CTableReader(const std::string& fileName, const std::vector<std::string>& columns)
        : FileName(fileName), Stream(fileName)
    {
        if (!Stream)
            throw std::runtime_error(fileName + ": cannot open");
        std::string line;
        std::getline(Stream, line);
        const std::vector<std::string> names = SplitLine(line);
        for (const std::string& column : columns) {
            const auto found = std::find(names.begin(), names.end(), column);
            if (found == names.end())
                throw std::runtime_error(fileName + ": no column '" + column + "'");
            Positions[column] = static_cast<size_t>(found - names.begin());
        }
        NumColumns = names.size();
    }

    bool Next()
    {
        for (std::string line; std::getline(Stream, line);) {
            ++LineNumber;
            if (line.empty())
                continue;
            Fields = SplitLine(line);
            if (Fields.size() != NumColumns)
                throw std::runtime_error(Where() + "expected " + std::to_string(NumColumns) +
                                         " columns, found " + std::to_string(Fields.size()));
            return true;
        }
        return false;
    }

    const std::string& Text(const std::string& column) const
    {
        return Fields[Positions.at(column)];
    }

    double Number(const std::string& column) const
    {
        const std::string& text = Text(column);
        size_t used = 0;
        double value = 0;
        try {
            value = std::stod(text, &used);
        } catch (const std::exception&) {
            used = 0;
        }
        if (used != text.size() || text.empty() || !std::isfinite(value))
            throw std::runtime_error(Where() + "'" + text + "' is not a number");
        return value;
    }

    CropBox Box(const std::string& suffix) const
    {
        CropBox box;
        box.X = Number("x" + suffix);
        box.Y = Number("y" + suffix);
        box.Width = Number("w" + suffix);
        box.Height = Number("h" + suffix);
        if (!(box.Width > 0) || !(box.Height > 0))
            throw std::runtime_error(Where() + "crop without area");
        return box;
    }

private:
    std::string Where() const
    {
        return FileName + ":" + std::to_string(LineNumber) + ": ";
    }

    std::string FileName;
    std::ifstream Stream;
    std::map<std::string, size_t> Positions;
    size_t NumColumns = 0;
    size_t LineNumber = 1;
    std::vector<std::string> Fields;
};

} // namespace

std::vector<JudgedPhoto> ReadCropTables(const std::string& boxesFile, const std::string& pairsFile,
                                        const std::string& split)
{
    std::map<std::string, JudgedPhoto> photos;
    if (!boxesFile.empty()) {
        CTableReader table(boxesFile, {"split", "file", "width", "height", "x", "y", "w", "h"});
        while (table.Next()) {
            if (table.Text("split") != split)
                continue;
            JudgedPhoto& photo = photos[table.Text("file")];
            photo.Width = table.Number("width");
            photo.Height = table.Number("height");
            photo.Chosen.push_back(table.Box(""));
        }
    }
    if (!pairsFile.empty()) {
        CTableReader table(pairsFile, {"split", "file", "x0", "y0", "w0", "h0", "votes0", "x1",
                                       "y1", "w1", "h1", "votes1"});
        while (table.Next()) {
            if (table.Text("split") != split)
                continue;
            VotedPair pair;
            pair.Crops[0] = table.Box("0");
            pair.Crops[1] = table.Box("1");
            pair.Votes[0] = table.Number("votes0");
            pair.Votes[1] = table.Number("votes1");
            photos[table.Text("file")].Pairs.push_back(pair);
        }
    }
    if (photos.empty())
        throw std::runtime_error("no photograph in split '" + split + "' in " + boxesFile + " " +
                                 pairsFile);

    std::vector<JudgedPhoto> result;
    for (auto& entry : photos) {
        entry.second.File = entry.first;
        result.push_back(std::move(entry.second));
    }
    return result;
}

vistaTrim::CInt32CropRect ToCrop(const CropBox& box, int32_t photoWidth, int32_t photoHeight)
{
    const auto side = [](double first, double length, int32_t limit, int32_t& low, int32_t& high) {
        low = std::clamp(static_cast<int32_t>(std::lround(first)), 0, limit - 1);
        high = std::clamp(static_cast<int32_t>(std::lround(first + length)) - 1, low, limit - 1);
    };
    vistaTrim::CInt32CropRect crop;
    side(box.X, box.Width, photoWidth, crop.Left, crop.Right);
    side(box.Y, box.Height, photoHeight, crop.Top, crop.Bottom);
    return crop;
}

double IntersectionOverUnion(const CropBox& a, const CropBox& b)
{
    const double width = std::max(0.0, std::min(a.X + a.Width, b.X + b.Width) - std::max(a.X, b.X));
    const double height =
        std::max(0.0, std::min(a.Y + a.Height, b.Y + b.Height) - std::max(a.Y, b.Y));
    const double common = width * height;
    return common / (a.Area() + b.Area() - common);
}

double BoundaryDisplacement(const CropBox& a, const CropBox& b, double frameWidth,
                            double frameHeight)
{
    const double left = std::abs(a.X - b.X) / frameWidth;
    const double right = std::abs(a.X + a.Width - b.X - b.Width) / frameWidth;
    const double top = std::abs(a.Y - b.Y) / frameHeight;
    const double bottom = std::abs(a.Y + a.Height - b.Y - b.Height) / frameHeight;
    return (left + right + top + bottom) / 4;
}
