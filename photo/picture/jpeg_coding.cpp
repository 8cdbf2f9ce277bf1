// Markers, tables and sampling factors: ITU-T T.81 (1992), annex B. Example tables: annex K.
#include "picture/jpeg_coding.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace vistaTrim::photo {

namespace {

// Annex K's tables in zigzag order, which are those of quality 50.
constexpr QuantisationTable kLuma = {16,  11, 12, 14,  12,  10,  16,  14,  13, 14,  18,  17,  16,
                                     19,  24, 40, 26,  24,  22,  22,  24,  49, 35,  37,  29,  40,
                                     58,  51, 61, 60,  57,  51,  56,  55,  64, 72,  92,  78,  64,
                                     68,  87, 69, 55,  56,  80,  109, 81,  87, 95,  98,  103, 104,
                                     103, 62, 77, 113, 121, 112, 100, 120, 92, 101, 103, 99};
constexpr QuantisationTable kChroma = {
    17, 18, 18, 24, 21, 24, 47, 26, 26, 47, 99, 66, 56, 66, 99, 99, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99,
    99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99, 99};

int Scaled(int atFifty, int quality)
{
    const int percent = quality < 50 ? 5000 / quality : 200 - 2 * quality;
    return std::clamp((atFifty * percent + 50) / 100, 1, 255);
}

// Ratios count, not differences: the step from 2 to 4 costs as many bits as that from 20 to 40. The
// lower frequencies, which come first, hold most of a picture's bits.
double Distance(const QuantisationTable& table, const QuantisationTable& atFifty, int quality)
{
    double sum = 0;
    for (size_t i = 0; i < table.size(); ++i) {
        const double ratio =
            static_cast<double>(std::max(1, table[i])) / Scaled(atFifty[i], quality);
        sum += std::log(ratio) * std::log(ratio) / static_cast<double>(1 + i);
    }
    return sum;
}

class Markers {
public:
    explicit Markers(const vips::VSource& source) : Source(source.get_source())
    {
    }

    std::optional<JpegCoding> Read()
    {
        if (Byte() != 0xFF || Byte() != 0xD8)
            return std::nullopt;
        while (!Ended) {
            if (Byte() != 0xFF)
                return std::nullopt;
            int marker = Byte();
            while (marker == 0xFF) // fill bytes
                marker = Byte();
            if (marker == 0xDA || marker == 0xD9) // start of scan, end of image
                return Found();
            ReadSegment(marker);
        }
        return std::nullopt;
    }

private:
    struct Plane {
        int Across, Down;
        size_t Table;
    };

    int Byte()
    {
        uint8_t byte = 0;
        if (Ended || vips_source_read(Source, &byte, 1) != 1) {
            Ended = true;
            return -1;
        }
        return byte;
    }

    void ReadSegment(int marker)
    {
        const int high = Byte();
        const int length = high * 256 + Byte() - 2; // it counts its own two bytes
        if (Ended || length < 0) {
            Ended = true;
            return;
        }
        const bool isFrame =
            marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        if (marker != 0xDB && !isFrame) {
            Ended = vips_source_seek(Source, length, SEEK_CUR) < 0;
            return;
        }
        std::vector<int> segment(static_cast<size_t>(length));
        std::generate(segment.begin(), segment.end(), [this] { return Byte(); });
        if (Ended)
            return;
        if (isFrame)
            ReadFrame(segment);
        else
            ReadTables(segment);
    }

    void ReadTables(const std::vector<int>& segment)
    {
        for (size_t at = 0; at < segment.size();) {
            const size_t bytes = segment[at] >= 16 ? 2 : 1; // of each entry
            const auto place = static_cast<size_t>(segment[at] % 16);
            if (place >= Tables.size() || segment.size() - at - 1 < 64 * bytes)
                return;
            QuantisationTable table{};
            for (size_t i = 0; i < 64; ++i) {
                const size_t entry = at + 1 + i * bytes;
                table[i] = bytes == 1 ? segment[entry] : segment[entry] * 256 + segment[entry + 1];
            }
            Tables[place] = table;
            at += 1 + 64 * bytes;
        }
    }

    void ReadFrame(const std::vector<int>& segment)
    {
        constexpr size_t kHead = 6; // depth, height, width, number of planes
        for (size_t at = kHead; at + 3 <= segment.size(); at += 3)
            Planes.push_back({segment.at(at + 1) / 16, segment.at(at + 1) % 16,
                              static_cast<size_t>(segment.at(at + 2))});
    }

    const QuantisationTable* TableOf(const Plane& plane) const
    {
        return plane.Table < Tables.size() && Tables[plane.Table] ? &*Tables[plane.Table] : nullptr;
    }

    std::optional<JpegCoding> Found() const
    {
        if (Planes.empty() || TableOf(Planes[0]) == nullptr)
            return std::nullopt;
        const bool hasChroma = Planes.size() >= 3;
        const bool sharesTable = !hasChroma || Planes[1].Table == Planes[0].Table;
        JpegCoding coding;
        coding.Quality =
            QualityOfTables(*TableOf(Planes[0]), sharesTable ? nullptr : TableOf(Planes[1]));
        // libvips writes chroma at full resolution or at half of it along both axes. Anything in
        // between counts as half: full resolution would add a fifth more bytes and no detail.
        if (hasChroma) {
            const bool isFull =
                Planes[0].Across <= Planes[1].Across && Planes[0].Down <= Planes[1].Down;
            coding.Chroma = isFull ? ChromaSampling::Full : ChromaSampling::Half;
        }
        return coding;
    }

    VipsSource* Source;
    bool Ended = false;
    std::array<std::optional<QuantisationTable>, 4> Tables;
    std::vector<Plane> Planes;
};

} // namespace

int QualityOfTables(const QuantisationTable& luma, const QuantisationTable* chroma)
{
    int best = 1;
    double least = INFINITY;
    for (int quality = 1; quality <= 100; ++quality) {
        double distance = Distance(luma, kLuma, quality);
        if (chroma != nullptr) // about a quarter of a picture's bits
            distance += Distance(*chroma, kChroma, quality) / 4;
        if (distance < least) {
            least = distance;
            best = quality;
        }
    }
    return best;
}

std::optional<JpegCoding> CodingOfJpeg(const vips::VSource& source)
{
    return Markers(source).Read();
}

} // namespace vistaTrim::photo
