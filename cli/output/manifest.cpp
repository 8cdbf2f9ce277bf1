#include "output/manifest.h"

#include <nlohmann/json.hpp>

#include "batch/output_place.h"
#include "output/result_text.h"

namespace vistaTrim::cli {

Manifest::Manifest(const std::string& file, bool replace) : File(file), Replace(replace)
{
    CheckOutputFile(file); // before the work, not after it
    const WholeFile probe(file, replace);
}

void Manifest::Add(const PhotoResult& result)
{
    using Json = nlohmann::ordered_json;
    // If some shapes were written and others failed, the written ones are listed all the same.
    PhotoResult whole = result;
    if (!result.Crops.empty())
        whole.Error.clear();
    Json line = Json::parse(JsonLine(whole));
    if (whole.Error != result.Error)
        line["error"] = result.Error;
    if (line.contains("crops")) {
        for (Json& crop : line["crops"])
            crop["files"] = Json::array();
        for (const WrittenCrop& written : result.Crops)
            line["crops"][written.Crop]["files"].push_back({{"file", written.File},
                                                            {"width", written.Size.Width},
                                                            {"height", written.Size.Height}});
    }
    Text += (Text.empty() ? "" : ",\n") + line.dump(-1, ' ', false, Json::error_handler_t::replace);
}

void Manifest::Finish()
{
    WriteWholeFile(File, Replace, "[\n" + Text + (Text.empty() ? "" : "\n") + "]\n");
}

} // namespace vistaTrim::cli
