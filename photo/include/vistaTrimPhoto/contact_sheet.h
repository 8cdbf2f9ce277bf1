// A contact sheet: rows of small pictures under captions, on white.
#ifndef VISTATRIM_PHOTO_CONTACT_SHEET_H
#define VISTATRIM_PHOTO_CONTACT_SHEET_H

#include <string>
#include <vector>

#include "vistaTrimPhoto/image_encoder.h"
#include "vistaTrimPhoto/pixels.h"

namespace vistaTrim::photo {

struct SheetLayout {
    PixelSize Cell{360, 240}; // pictures are centred in it and cut off at its edges
    int32_t Gap = 12;         // beside and below each cell, and around the sheet
    int32_t Caption = 30;     // height of a line of text
    int32_t Columns = 1;
};

PixelSize RowSize(const SheetLayout& layout);

// The captions of the columns.
PixelImage SheetHead(const SheetLayout& layout, const std::vector<std::string>& captions);
// A caption over at most Columns pictures, of three channels each. Without pictures the row is only
// as high as its caption.
PixelImage SheetRow(const SheetLayout& layout, const std::string& caption,
                    const std::vector<PixelImage>& pictures);

// Writes the rows from top to bottom; they must have been made with this layout. Throws PhotoError.
void WriteSheet(const SheetLayout& layout, const std::vector<PixelImage>& rows,
                const std::string& path, const Encoding& encoding);

} // namespace vistaTrim::photo

#endif
