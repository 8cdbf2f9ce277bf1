#include "picture/loaders.h"

#include <algorithm>
#include <cctype>

namespace vistaTrim::photo {

namespace {

const std::string kPrefix = "VipsForeignLoad";

bool EndsWith(const std::string& text, const std::string& end)
{
    return text.size() >= end.size() &&
           text.compare(text.size() - end.size(), end.size(), end) == 0;
}

bool IsBlocked(void* type)
{
    return (VIPS_OPERATION_CLASS(type)->flags & VIPS_OPERATION_BLOCKED) != 0;
}

// A loader's endings may be listed with its class for files, with a sibling or with the parent.
struct Found {
    std::vector<Loader> Sources;
    std::vector<Loader> Others;
};

void AddEndings(const Loader& from, Loader& to)
{
    for (const std::string& ending : from.Endings)
        if (std::find(to.Endings.begin(), to.Endings.end(), ending) == to.Endings.end())
            to.Endings.push_back(ending);
}

void* Note(void* type, void* found, void*)
{
    const std::string name = G_OBJECT_CLASS_NAME(type);
    if (IsBlocked(type) || name.compare(0, kPrefix.size(), kPrefix) != 0)
        return nullptr;
    Loader loader;
    for (const char** suffix = VIPS_FOREIGN_CLASS(type)->suffs;
         suffix != nullptr && *suffix != nullptr; ++suffix) {
        std::string ending = *suffix + (**suffix == '.' ? 1 : 0);
        std::transform(ending.begin(), ending.end(), ending.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        loader.Endings.push_back(ending);
    }
    const std::string parent = g_type_name(g_type_parent(G_OBJECT_CLASS_TYPE(type)));
    loader.Family = parent.substr(std::min(parent.size(), kPrefix.size()));
    auto& lists = *static_cast<Found*>(found);
    (EndsWith(name, "Source") ? lists.Sources : lists.Others).push_back(loader);
    return nullptr;
}

void* RecognisesIfAllowed(void* type, void* source, void*)
{
    const auto recognises = VIPS_FOREIGN_LOAD_CLASS(type)->is_a_source;
    if (IsBlocked(type) || recognises == nullptr)
        return nullptr;
    auto* const from = static_cast<VipsSource*>(source);
    vips_source_rewind(from); // the previous loader may have moved it
    return recognises(from) ? type : nullptr;
}

} // namespace

std::vector<Loader> AllowedLoaders()
{
    Found found;
    vips_foreign_map("VipsForeignLoad", Note, &found, nullptr);
    for (Loader& source : found.Sources)
        for (const Loader& other : found.Others)
            if (other.Family == source.Family)
                AddEndings(other, source);
    return found.Sources;
}

std::string LoaderOf(const vips::VSource& source)
{
    // libvips itself asks the blocked loaders too, and the one for FITS inflates any compressed
    // file to look inside, to whatever size its header promises.
    const char* name = nullptr;
    if (vips_foreign_map("VipsForeignLoad", RecognisesIfAllowed, source.get_source(), nullptr) !=
        nullptr)
        name = vips_foreign_find_load_source(source.get_source());
    if (name == nullptr) {
        vips_error_clear();
        return "";
    }
    const GType type = g_type_from_name(name);
    if (type == 0)
        return "";
    // A blocked loader may come first: that of microscope slides, which are TIFF files.
    void* loader = g_type_class_ref(type);
    const bool isBlocked = IsBlocked(loader);
    g_type_class_unref(loader);
    return isBlocked ? "" : name;
}

} // namespace vistaTrim::photo
