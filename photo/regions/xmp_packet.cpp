#include "regions/xmp_packet.h"

#include <exception>
#include <mutex>

namespace vistaTrim::photo {

namespace {

// Large enough for any list of regions; a larger packet holds an edit history or is an attack.
constexpr size_t kLargestPacket = 8'000'000;

std::mutex& ParserLock()
{
    static std::mutex lock;
    return lock;
}

void MakeParserReady()
{
    static const bool kReady = [] {
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
        return Exiv2::XmpParser::initialize();
    }();
    static_cast<void>(kReady);
}

} // namespace

std::optional<Exiv2::XmpData> ParseXmp(const std::string& packet)
{
    if (packet.size() > kLargestPacket)
        return std::nullopt;
    const std::lock_guard<std::mutex> guard(ParserLock());
    MakeParserReady();
    Exiv2::XmpData data;
    try {
        if (Exiv2::XmpParser::decode(data, packet) != 0)
            return std::nullopt;
    } catch (const std::exception&) { // whatever a hostile packet provokes
        return std::nullopt;
    }
    return data;
}

std::optional<std::string> WriteXmp(const Exiv2::XmpData& data)
{
    const std::lock_guard<std::mutex> guard(ParserLock());
    MakeParserReady();
    std::string packet;
    // A crop needs no padding for edits in place.
    constexpr uint32_t kPadding = 1;
    try {
        if (Exiv2::XmpParser::encode(packet, data, Exiv2::XmpParser::useCompactFormat, kPadding) !=
            0)
            return std::nullopt;
    } catch (const std::exception&) {
        return std::nullopt;
    }
    return packet;
}

} // namespace vistaTrim::photo
