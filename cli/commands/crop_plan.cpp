#include "commands/crop_plan.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <set>

#include "commands/commands.h"
#include "options/name_template.h"
#include "options/program_error.h"
#include "text/shown_name.h"

namespace vistaTrim::cli {

namespace {

namespace fs = std::filesystem;
using photo::PixelSize;

// The template of --name, or the usual one: rank 1 of a shape needs no number.
NameTemplate TemplateFor(const CropLabel& label, const CropFileOptions& how)
{
    if (!how.Name.empty())
        return NameTemplate(how.Name);
    std::string text = label.Shape.empty() ? "{stem}-{rank}" : "{stem}-{shape}";
    if (!label.Shape.empty() && label.Rank > 1)
        text += "-{rank}";
    if (!how.Widths.empty())
        text += "-{width}";
    return NameTemplate(text);
}

std::string NameOf(const ListedPhoto& photo, const CropLabel& label, const CropFileOptions& how,
                   const std::string& width, const std::string& height)
{
    NameFields fields;
    fields.Stem = StemOf(photo);
    fields.Extension = ExtensionOf(photo);
    fields.Shape = label.Shape.empty() ? label.Ratio : label.Shape;
    fields.Ratio = label.Ratio;
    fields.Rank = std::to_string(label.Rank);
    fields.Width = width;
    fields.Height = height;
    return (fs::path(photo.Inside) / TemplateFor(label, how).Expand(fields)).string();
}

} // namespace

std::vector<PixelSize> SizesOfCrop(PixelSize crop, const CropLabel& label,
                                   const CropFileOptions& how)
{
    if (how.ResizeTo)
        return {photo::FittedSize(crop, *how.ResizeTo)};
    if (how.Widths.empty())
        return {label.Fill.value_or(crop)};
    std::vector<PixelSize> sizes;
    for (const int32_t asked : how.Widths) {
        const int32_t width = how.Upscale ? asked : std::min(asked, crop.Width);
        const double height = static_cast<double>(width) * crop.Height / crop.Width;
        const PixelSize size{width, static_cast<int32_t>(std::max(1L, std::lround(height)))};
        if (std::find(sizes.begin(), sizes.end(), size) == sizes.end())
            sizes.push_back(size);
    }
    return sizes;
}

std::vector<PlannedFile> PlanCropFiles(const Options& options, const ListedPhoto& photo,
                                       const photo::Photograph& photograph,
                                       const PhotoResult& result)
{
    const photo::ImageFormat format = options.CropFiles.Format.value_or(photograph.NativeFormat());
    std::vector<PlannedFile> files;
    std::set<std::string> paths;
    for (size_t i = 0; i < result.Found.Crops.size(); ++i) {
        const photo::PixelRect& rect = result.Found.Crops[i].Rect;
        const CropLabel& label = result.Labels[i];
        const PixelSize own{rect.Width, rect.Height};
        for (const PixelSize& size : SizesOfCrop(own, label, options.CropFiles)) {
            PlannedFile file;
            file.Crop = i;
            file.Size = size;
            file.Output.Rect = rect;
            if (!(size == own))
                file.Output.Size = size;
            file.Output.Format = format;
            file.Output.Quality = options.CropFiles.Quality;
            file.Output.Chroma = options.CropFiles.Chroma;
            file.Output.Strip = options.CropFiles.Strip;
            const std::string name =
                NameOf(photo, label, options.CropFiles, std::to_string(size.Width),
                       std::to_string(size.Height)) +
                "." + photo::EndingOf(format);
            file.Path = (fs::path(options.Output) / name).string();
            if (!paths.insert(file.Path).second)
                throw ProgramError("two of its crops would be named " + Shown(name) +
                                   "; a --name with {rank} tells them apart");
            files.push_back(file);
        }
    }
    return files;
}

std::vector<CropLabel> ExpectedLabels(const Options& options, int32_t most)
{
    std::vector<CropLabel> labels;
    const int32_t ranks = std::min(most, options.Request.Top);
    if (!options.EachShape) {
        const std::string ratio = options.Shapes.size() == 1 ? options.Shapes[0].RatioText : "?";
        for (int32_t rank = 1; rank <= ranks; ++rank)
            labels.push_back({"", ratio, rank, {}});
        return labels;
    }
    for (const photo::Shape& shape : options.Shapes)
        for (int32_t rank = 1; rank <= ranks; ++rank)
            labels.push_back({shape.Name, shape.RatioText, rank, shape.Fill});
    return labels;
}

std::vector<std::string> ExpectedNames(const Options& options, const ListedPhoto& photo,
                                       const CropLabel& label)
{
    const CropFileOptions& how = options.CropFiles;
    const auto name = [&](const std::string& width, const std::string& height) {
        return NameOf(photo, label, how, width, height);
    };
    if (label.Fill && !how.ResizeTo && how.Widths.empty())
        return {name(std::to_string(label.Fill->Width), std::to_string(label.Fill->Height))};
    if (how.Widths.empty())
        return {name("?", "?")};
    std::vector<std::string> names;
    for (const int32_t width : how.Widths)
        names.push_back(name(std::to_string(width), "?" + std::to_string(width)));
    return names;
}

void ClaimedNames::Claim(const std::vector<PlannedFile>& files, const std::string& photo)
{
    const std::lock_guard<std::mutex> lock(Mutex);
    for (const PlannedFile& file : files) {
        const auto owner = Owners.find(file.Path);
        if (owner != Owners.end() && owner->second != photo)
            throw ProgramError("its crop " + Shown(file.Path) + " would have the name of one of " +
                               Shown(owner->second));
    }
    for (const PlannedFile& file : files)
        Owners.emplace(file.Path, photo);
}

} // namespace vistaTrim::cli
