// Reads the two tables of human judgements that the fitting and evaluation tools use.
#ifndef VISTATRIM_TOOLS_CROP_TABLES_H
#define VISTATRIM_TOOLS_CROP_TABLES_H

#include <cstdint>
#include <string>
#include <vector>

#include "vistaTrim/records.h"

// A box in pixels of the 640-pixel photograph: covers x..x+Width, y..y+Height.
struct CropBox {
    double X = 0;
    double Y = 0;
    double Width = 0;
    double Height = 0;

    double Area() const
    {
        return Width * Height;
    }
};

// Two crops of one photograph and the votes for each.
struct VotedPair {
    CropBox Crops[2];
    double Votes[2] = {0, 0};

    // Whether size cannot have influenced the votes: the areas in the table are equal to the last
    // digit. "Equal-area pairs" always means this.
    bool EqualArea() const
    {
        return Crops[0].Area() == Crops[1].Area();
    }
};

// What people said about one photograph.
struct JudgedPhoto {
    std::string File; // name within the folder of photographs
    double Width = 0;
    double Height = 0;
    std::vector<CropBox> Chosen;
    std::vector<VotedPair> Pairs;
};

// The photographs of one split, sorted by name. Either file name may be empty.
// Throws std::runtime_error naming the file and the line.
std::vector<JudgedPhoto> ReadCropTables(const std::string& boxesFile, const std::string& pairsFile,
                                        const std::string& split);

// The format of the tables, for help texts.
extern const char* const kCropTableHelp;

// The whole pixels a box covers: at least one, clipped to a photograph of the given size.
vistaTrim::CInt32CropRect ToCrop(const CropBox& box, int32_t photoWidth, int32_t photoHeight);

double IntersectionOverUnion(const CropBox& a, const CropBox& b);
// Mean distance of the four sides, each as a share of the frame's side.
double BoundaryDisplacement(const CropBox& a, const CropBox& b, double frameWidth,
                            double frameHeight);

#endif
