#include "commands/map_files.h"

#include <memory>

#include "batch/whole_file.h"
#include "vistaTrimPhoto/image_encoder.h"

namespace vistaTrim::cli {

std::vector<std::string> WriteMapFiles(const std::vector<photo::Map>& maps,
                                       const std::string& prefix, bool replace)
{
    std::vector<std::unique_ptr<WholeFile>> files;
    files.reserve(maps.size());
    for (const photo::Map& map : maps)
        files.push_back(std::make_unique<WholeFile>(prefix + "-" + map.Name + ".png", replace));

    photo::Encoding encoding;
    encoding.Format = photo::ImageFormat::Png;
    for (size_t i = 0; i < maps.size(); ++i)
        photo::WriteImage(photo::GreyOf(maps[i]), files[i]->TemporaryPath(), encoding);

    std::vector<std::string> written;
    for (const std::unique_ptr<WholeFile>& file : files) {
        file->Appear();
        written.push_back(file->Target());
    }
    return written;
}

} // namespace vistaTrim::cli
