#include "picture/iptc.h"

#include <vector>

namespace vistaTrim::photo {

namespace {

const std::string kMark("Photoshop 3.0\0", 14);
const std::string kResource = "8BIM";
constexpr int kIptc = 0x0404;

struct Resource {
    int Kind;
    std::string Whole; // with its header and padding
    std::string Data;
};

size_t ByteAt(const std::string& text, size_t at)
{
    return static_cast<unsigned char>(text[at]);
}

// Stops at the first damaged resource.
std::vector<Resource> ResourcesOf(const std::string& list)
{
    std::vector<Resource> resources;
    for (size_t at = 0; at + 12 <= list.size() && list.compare(at, 4, kResource) == 0;) {
        const auto kind = static_cast<int>(ByteAt(list, at + 4) * 256 + ByteAt(list, at + 5));
        const size_t name = 1 + ByteAt(list, at + 6); // a length and that many characters
        const size_t head = 6 + name + name % 2;
        if (at + head + 4 > list.size())
            break;
        size_t size = 0;
        for (size_t i = 0; i < 4; ++i)
            size = size * 256 + ByteAt(list, at + head + i);
        const size_t begin = at + head + 4;
        if (size > list.size() - begin)
            break;
        const size_t end = begin + size + size % 2;
        resources.push_back({kind, list.substr(at, end - at), list.substr(begin, size)});
        at = end;
    }
    return resources;
}

bool IsList(const std::string& data)
{
    return data.compare(0, kMark.size(), kMark) == 0;
}

} // namespace

std::string WithoutThumbnails(const std::string& resources)
{
    std::string kept;
    for (const Resource& resource : ResourcesOf(resources))
        if (resource.Kind != 0x0409 && resource.Kind != 0x040C) // both versions of thumbnails
            kept += resource.Whole;
    return kept;
}

std::string IptcForJpeg(const std::string& data)
{
    if (IsList(data)) {
        const std::string kept = WithoutThumbnails(data.substr(kMark.size()));
        return kept.empty() ? "" : kMark + kept;
    }
    if (data.empty())
        return "";
    std::string resource = kResource + std::string("\x04\x04\0\0", 4);
    for (int shift = 24; shift >= 0; shift -= 8)
        resource.push_back(static_cast<char>(data.size() >> shift & 0xFF));
    return kMark + resource + data + (data.size() % 2 != 0 ? std::string(1, '\0') : "");
}

std::string IptcForTiff(const std::string& data)
{
    if (!IsList(data))
        return data;
    for (const Resource& resource : ResourcesOf(data.substr(kMark.size())))
        if (resource.Kind == kIptc)
            return resource.Data;
    return "";
}

} // namespace vistaTrim::photo
