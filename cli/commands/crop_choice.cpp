#include "commands/crop_choice.h"

#include <iterator>

#include "options/option_files.h"
#include "options/program_error.h"
#include "options/result_options.h"
#include "text/shown_name.h"

namespace vistaTrim::cli {

namespace {

std::string ReadAll(std::istream& stream)
{
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::string SizeText(photo::PixelSize size)
{
    return std::to_string(size.Width) + " x " + std::to_string(size.Height);
}

} // namespace

ChosenCrops ReadChoice(const std::string& file, std::istream& input)
{
    const std::string text = file == "-" ? ReadAll(input) : ReadOptionFile("--from", file);
    ChosenCrops chosen;
    try {
        chosen = ReadChosenCrops(text, ShownName(file));
    } catch (const ProgramError& error) {
        throw OptionFileError(std::string("--from: ") + error.what());
    }
    if (chosen.Photos.empty())
        throw ProgramError(ShownName(file) + ": names no crops");
    chosen.Content = ContentMark(text);
    return chosen;
}

std::vector<ListedPhoto> PhotosOf(const ChosenCrops& chosen)
{
    std::vector<ListedPhoto> photos;
    for (const ChosenPhoto& photo : chosen.Photos) {
        photos.push_back({photo.File, "", "", nullptr});
        if (photo.File == "-")
            photos.back().Error = "a photograph from standard input cannot be read again";
    }
    return photos;
}

void TakeChosen(const ChosenPhoto& chosen, const photo::Photograph& photograph, PhotoResult& result)
{
    const photo::PixelSize size = photograph.Size();
    if (chosen.Size && !(*chosen.Size == size))
        throw ProgramError("is " + SizeText(size) + " pixels, but " + chosen.Source +
                           " is about one of " + SizeText(*chosen.Size));
    for (size_t i = 0; i < chosen.Crops.size(); ++i)
        if (!photo::Contains({0, 0, size.Width, size.Height}, chosen.Crops[i].Rect))
            throw ProgramError(chosen.Source + ": crop " + std::to_string(i + 1) +
                               " leaves the photograph, which is " + SizeText(size));
    result.Found.Size = size;
    result.Found.Crops = chosen.Crops;
    result.Labels = chosen.Labels;
}

} // namespace vistaTrim::cli
