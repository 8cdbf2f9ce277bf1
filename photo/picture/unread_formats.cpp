#include "picture/unread_formats.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>

#include "picture/tiff_reader.h"

namespace vistaTrim::photo {

namespace {

constexpr const char* kRawEndings[] = {"3fr", "arw", "cr2", "cr3", "crw", "dcr", "dng",
                                       "erf", "fff", "gpr", "iiq", "k25", "kdc", "mef",
                                       "mos", "mrw", "nef", "nrw", "orf", "pef", "raf",
                                       "raw", "rw2", "rwl", "sr2", "srf", "srw", "x3f"};

struct Beginning {
    size_t At;
    const char* Bytes;
    size_t Size;
    const char* Sentence;
};

constexpr const char* kConvert = "; convert it to JPEG, PNG or TIFF";

constexpr Beginning kBeginnings[] = {{4, "ftypcrx ", 8, kRawSentence},
                                     {0, "FUJIFILMCCD-RAW", 15, kRawSentence},
                                     {0, "IIRO", 4, kRawSentence},
                                     {0, "IIRS", 4, kRawSentence},
                                     {0, "MMOR", 4, kRawSentence},
                                     {0, "IIU\0", 4, kRawSentence},
                                     {6, "HEAPCCDR", 8, kRawSentence},
                                     {0, "FOVb", 4, kRawSentence},
                                     {0, "\0MRM", 4, kRawSentence},
                                     {0, "BM", 2, "a BMP picture"},
                                     {0, "8BPS", 4, "a layered PSD picture"},
                                     {0, "\x76\x2f\x31\x01", 4, "an OpenEXR picture"},
                                     {0, "#?RADIANCE", 10, "a Radiance HDR picture"},
                                     {0, "SIMPLE  =", 9, "a FITS picture"},
                                     {0, "\0\0\0\x0CjP  ", 8, "a JPEG 2000 picture"},
                                     {0, "\xFF\x4F\xFF\x51", 4, "a JPEG 2000 picture"},
                                     {0, "\0\0\0\x0CJXL ", 8, "a JPEG XL picture"},
                                     {0, "\xFF\x0A", 2, "a JPEG XL picture"},
                                     {4, "ftypheic", 8, "a HEIC picture"},
                                     {4, "ftypmif1", 8, "a HEIF picture"},
                                     {4, "ftypavif", 8, "an AVIF picture"},
                                     {4, "ftyp", 4, "a video, not a photograph"},
                                     {0, "\x1A\x45\xDF\xA3", 4, "a video, not a photograph"},
                                     {0, "%PDF", 4, "a PDF document, not a photograph"},
                                     {0, "PK\x03\x04", 4, "an archive, not a photograph"}};

bool IsDrawing(const std::string& head)
{
    const bool isMarkup = head.find('<') != std::string::npos &&
                          head.find_first_not_of(" \t\r\n\xEF\xBB\xBF") == head.find('<');
    return isMarkup && head.find("<svg") != std::string::npos;
}

bool IsSensorData(const TiffDirectory& directory)
{
    constexpr uint16_t kPhotometric = 262;
    const std::vector<uint64_t> kind = NumbersOf(directory, kPhotometric);
    return !kind.empty() &&
           (kind[0] == 32803 || kind[0] == 34892); // colour filter array, linear raw
}

} // namespace

bool IsRawEnding(const std::string& ending)
{
    return std::any_of(std::begin(kRawEndings), std::end(kRawEndings),
                       [&ending](const char* raw) { return ending == raw; });
}

bool IsRawTiff(const vips::VSource& source)
{
    constexpr uint16_t kSubDirectories = 330;
    constexpr uint16_t kDngVersion = 50706;
    const TiffReader reader = TiffReaderOf(source);
    if (!reader.First())
        return false;
    std::array<char, 2> mark{};
    if (*reader.First() == 16 && vips_source_seek(source.get_source(), 8, SEEK_SET) == 8 &&
        vips_source_read(source.get_source(), mark.data(), 2) == 2 && mark[0] == 'C' &&
        mark[1] == 'R')
        return true;
    const auto first = reader.Directory(*reader.First());
    if (!first)
        return false;
    if (first->count(kDngVersion) != 0 || IsSensorData(*first))
        return true;
    for (const uint64_t offset : NumbersOf(*first, kSubDirectories)) {
        const auto below = reader.Directory(offset);
        if (below && IsSensorData(*below))
            return true;
    }
    return false;
}

std::string UnreadSentence(const vips::VSource& source, const std::string& ending)
{
    std::string head(1024, '\0');
    size_t size = 0;
    vips_source_rewind(source.get_source());
    while (size < head.size()) {
        const gint64 got = vips_source_read(source.get_source(), &head[size], head.size() - size);
        if (got <= 0)
            break;
        size += static_cast<size_t>(got);
    }
    head.resize(size);
    if (IsRawTiff(source))
        return kRawSentence;
    if (IsDrawing(head))
        return "an SVG drawing, not a photograph";
    for (const Beginning& known : kBeginnings)
        if (size >= known.At + known.Size &&
            std::memcmp(head.data() + known.At, known.Bytes, known.Size) == 0) {
            const std::string sentence = known.Sentence;
            const bool isPicture = sentence.find("picture") != std::string::npos;
            return isPicture ? sentence + ", which is not read here" + kConvert : sentence;
        }
    if (IsRawEnding(ending))
        return kRawSentence;
    return "not a picture, or of a format that cannot be read";
}

} // namespace vistaTrim::photo
