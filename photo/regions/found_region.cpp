#include "vistaTrimPhoto/found_region.h"

#include <array>

namespace vistaTrim::photo {

namespace {

constexpr std::array<RegionKind, 4> kKinds = {RegionKind::Face, RegionKind::Animal,
                                              RegionKind::Subject, RegionKind::Other};

} // namespace

const char* NameOf(RegionKind kind)
{
    switch (kind) {
    case RegionKind::Face: return "face";
    case RegionKind::Animal: return "animal";
    case RegionKind::Subject: return "subject";
    case RegionKind::Other: break;
    }
    return "other";
}

const char* NameOf(RegionSource source)
{
    switch (source) {
    case RegionSource::FaceFinder: return "face-finder";
    case RegionSource::Metadata: return "metadata";
    case RegionSource::File: break;
    }
    return "file";
}

std::optional<RegionKind> RegionKindOfName(const std::string& name)
{
    for (const RegionKind kind : kKinds)
        if (name == NameOf(kind))
            return kind;
    return std::nullopt;
}

} // namespace vistaTrim::photo
