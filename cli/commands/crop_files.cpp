#include "commands/crop_files.h"

#include <memory>

#include <unistd.h>

#include "batch/whole_file.h"
#include "vistaTrimPhoto/crop_writer.h"

namespace vistaTrim::cli {

namespace {

photo::ImageFormat FormatFor(const photo::Photograph& photograph, const Options& options)
{
    return options.CropFiles.Format.value_or(photograph.NativeFormat());
}

bool Exists(const std::string& file)
{
    return access(file.c_str(), F_OK) == 0;
}

photo::CropOutput OutputOf(const photo::PixelRect& rect, photo::ImageFormat format,
                           const CropFileOptions& how)
{
    photo::CropOutput output;
    output.Rect = rect;
    if (how.ResizeTo)
        output.Size = photo::FittedSize({rect.Width, rect.Height}, *how.ResizeTo);
    output.Format = format;
    output.Quality = how.Quality;
    output.Strip = how.Strip;
    return output;
}

} // namespace

std::string CropFile(const photo::Photograph& photograph, const std::string& prefix, size_t rank,
                     const Options& options)
{
    return prefix + "-" + std::to_string(rank) + "." +
           photo::EndingOf(FormatFor(photograph, options));
}

std::vector<std::string> WriteCropFiles(const photo::Photograph& photograph,
                                        const std::vector<photo::Crop>& crops,
                                        const std::string& prefix, const Options& options)
{
    std::vector<photo::CropOutput> outputs; // of the files to write
    std::vector<std::string> paths;
    std::vector<std::unique_ptr<WholeFile>> files;
    for (size_t i = 0; i < crops.size(); ++i) {
        const std::string name = CropFile(photograph, prefix, i + 1, options);
        if (options.Resume && Exists(name))
            continue;
        outputs.push_back(
            OutputOf(crops[i].Rect, FormatFor(photograph, options), options.CropFiles));
        files.push_back(std::make_unique<WholeFile>(name, options.Force));
        paths.push_back(files.back()->TemporaryPath());
    }

    photo::WriteCrops(photograph, outputs, paths);

    std::vector<std::string> written;
    written.reserve(files.size());
    for (size_t i = files.size(); i-- > 0;)
        files[i]->Appear();
    for (const std::unique_ptr<WholeFile>& file : files)
        written.push_back(file->Target());
    return written;
}

bool HasAllCrops(const photo::Photograph& photograph, const std::string& prefix,
                 const Options& options)
{
    for (int32_t rank = 1; rank <= options.Request.Top; ++rank)
        if (!Exists(CropFile(photograph, prefix, static_cast<size_t>(rank), options)))
            return false;
    return true;
}

} // namespace vistaTrim::cli
