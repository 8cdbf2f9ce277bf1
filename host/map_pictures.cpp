#include "map_pictures.h"

#include <algorithm>
#include <memory>

#include <vips/vips8>

#include "analysis/map_access.h"
#include "vips_runtime.h"
#include "whole_file.h"

namespace vistaTrim::host {

std::vector<MapPicture> ReadMaps(const WorkingPicture& picture)
{
    const ImageHandle image = MakeLibraryImage(picture);
    const CMapReader reader(image.get());
    std::vector<MapPicture> pictures;
    for (const NamedMap& map : reader.Maps()) {
        const float* const end = map.Data + static_cast<int64_t>(map.Cols) * map.Rows;
        const float maximum = *std::max_element(map.Data, end);
        const float gain = maximum > 0.0F ? 255.0F / maximum : 0.0F;
        MapPicture made{map.Name, {map.Cols, map.Rows}, {}};
        for (const float* value = map.Data; value != end; ++value)
            made.Grey.push_back(
                static_cast<uint8_t>(std::clamp(*value * gain + 0.5F, 0.0F, 255.0F)));
        pictures.push_back(std::move(made));
    }
    return pictures;
}

std::vector<std::string> WriteMaps(const std::vector<MapPicture>& maps, const std::string& prefix,
                                   bool replace)
{
    std::vector<std::unique_ptr<WholeFile>> files;
    files.reserve(maps.size());
    for (const MapPicture& map : maps)
        files.push_back(std::make_unique<WholeFile>(prefix + "-" + map.Name + ".png", replace));

    RunVips([&] {
        for (size_t i = 0; i < maps.size(); ++i) {
            const MapPicture& map = maps[i];
            const vips::VImage image =
                vips::VImage::new_from_memory(const_cast<uint8_t*>(map.Grey.data()),
                                              map.Grey.size(), map.Size.Width, map.Size.Height, 1,
                                              VIPS_FORMAT_UCHAR)
                    .copy(vips::VImage::option()->set("interpretation", VIPS_INTERPRETATION_B_W));
            image.pngsave_target(vips::VTarget::new_to_file(files[i]->TemporaryPath().c_str()));
        }
    });

    std::vector<std::string> written;
    for (const std::unique_ptr<WholeFile>& file : files) {
        file->Appear();
        written.push_back(file->Target());
    }
    return written;
}

} // namespace vistaTrim::host
