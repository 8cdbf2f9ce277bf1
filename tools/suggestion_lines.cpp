#include "suggestion_lines.h"

#include <filesystem>
#include <stdexcept>

#include <nlohmann/json.hpp>

Suggestions ReadSuggestions(std::istream& lines, const std::string& source)
{
    Suggestions suggestions;
    size_t number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        try {
            const nlohmann::json photo = nlohmann::json::parse(line);
            std::vector<CropBox> crops;
            for (const nlohmann::json& crop : photo.at("crops"))
                crops.push_back({crop.at("x"), crop.at("y"), crop.at("width"), crop.at("height")});
            const std::filesystem::path file = photo.at("file").get<std::string>();
            suggestions[file.filename().string()] = crops;
        } catch (const nlohmann::json::exception& error) {
            throw std::runtime_error(source + ":" + std::to_string(number) + ": " + error.what());
        }
    }
    return suggestions;
}

const std::vector<CropBox>& CropsOf(const Suggestions& suggestions, const std::string& photo,
                                    const std::string& source)
{
    const auto found = suggestions.find(photo);
    if (found == suggestions.end())
        throw std::runtime_error(source + ": holds no line for " + photo);
    return found->second;
}
