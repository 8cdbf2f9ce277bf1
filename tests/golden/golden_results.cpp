#include "golden/golden_results.h"

#include <cmath>
#include <iomanip>
#include <istream>
#include <ostream>
#include <stdexcept>

#include "analysis/test_pictures.h"
#include "vistaTrim/vistaTrim.h"

using namespace vistaTrim;
using testPictures::Picture;

namespace goldenResults {

namespace {

// One candidate in this many is recorded. It is prime, so that they spread over the lattice.
constexpr uint32_t kStride = 151;

// On a plain picture crops differ only by BLAS rounding, and a ranking would depend on that: for
// such a picture only candidates are recorded.
struct NamedPicture {
    const char* Name;
    Picture (*Make)();
    bool Ranked;
};

const NamedPicture kPictures[] = {
    {"blobs_640x480", [] { return testPictures::Blobs(640, 480, 1); }, true},
    {"blobs_480x640", [] { return testPictures::Blobs(480, 640, 2); }, true},
    {"blobs_640x640", [] { return testPictures::Blobs(640, 640, 3); }, true},
    {"blobs_640x137", [] { return testPictures::Blobs(640, 137, 4); }, true},
    {"noise_640x427", [] { return testPictures::Noise(640, 427, 5); }, true},
    {"gradient_640x360", [] { return testPictures::Gradient(640, 360); }, true},
    {"halves_640x480", [] { return testPictures::HalfAndHalf(640, 480); }, false},
    {"pixel_427x640", [] { return testPictures::OneBrightPixel(427, 640); }, false},
};

std::vector<NamedCrop> TakeList(ICropRects* list, uint32_t stride)
{
    std::vector<NamedCrop> crops;
    for (uint32_t i = 0; i < list->Count(); i += stride)
        crops.push_back({i, list->Data()[i]});
    list->Release();
    return crops;
}

void WriteCrops(const char* title, const std::vector<NamedCrop>& crops, std::ostream& out)
{
    out << title << ' ' << crops.size() << '\n';
    for (const NamedCrop& named : crops) {
        const CInt32CropRect& crop = named.Crop;
        out << named.Index << ' ' << crop.Left << ' ' << crop.Right << ' ' << crop.Top << ' '
            << crop.Bottom << ' ' << crop.CoversContent << ' ' << crop.Score.CompositionScore << ' '
            << crop.Score.CoverageScore << ' ' << crop.Score.BorderScore << ' '
            << crop.Score.PeakScore << ' ' << crop.Score.CentrePeakScore << ' '
            << crop.Score.RoiScore << ' ' << crop.Score.MergedScore << '\n';
    }
}

void Expect(bool valid)
{
    if (!valid)
        throw std::runtime_error("not a golden results file");
}

std::vector<NamedCrop> ReadCrops(const std::string& title, std::istream& in)
{
    std::string word;
    size_t count = 0;
    Expect(static_cast<bool>(in >> word >> count) && word == title);
    std::vector<NamedCrop> crops(count);
    for (NamedCrop& named : crops) {
        CInt32CropRect& crop = named.Crop;
        Expect(static_cast<bool>(in >> named.Index >> crop.Left >> crop.Right >> crop.Top >>
                                 crop.Bottom >> crop.CoversContent >> crop.Score.CompositionScore >>
                                 crop.Score.CoverageScore >> crop.Score.BorderScore >>
                                 crop.Score.PeakScore >> crop.Score.CentrePeakScore >>
                                 crop.Score.RoiScore >> crop.Score.MergedScore));
        crop.Score.Scored = true;
    }
    return crops;
}

} // namespace

std::vector<std::string> PictureNames()
{
    std::vector<std::string> names;
    for (const NamedPicture& picture : kPictures)
        names.push_back(picture.Name);
    return names;
}

Results ResultsOf(const std::string& name)
{
    const NamedPicture* chosen = nullptr;
    for (const NamedPicture& picture : kPictures)
        if (name == picture.Name)
            chosen = &picture;
    Expect(chosen != nullptr);
    const Picture picture = chosen->Make();
    const testPictures::ImageHolder image = testPictures::MakeImage(picture);
    const VistaTrimParameters parameters;
    IVistaTrim* driver = CreateVistaTrimObj(image.get(), &parameters);
    const SuggestionParameters everything;
    const WeightDistribution weights(0.31, 0.27, 0.22, 0.13, 0.07);

    Results results;
    ICropRects* list = nullptr;
    ComputeCropSuggestions(driver, &list, &everything);
    results.CandidateCount = list->Count();
    results.Candidates = TakeList(list, kStride);
    if (!chosen->Ranked) {
        DestroyVistaTrimObj(driver);
        return results;
    }
    GetNTopCropSuggestions(driver, 10, &list, &everything, 0, weights);
    results.Best = TakeList(list, 1);

    CRectOfInterest include(picture.Cols / 3, picture.Cols / 3 + 40, picture.Rows / 3,
                            picture.Rows / 3 + 30, false);
    CRectOfInterest exclude(0, 15, 0, picture.Rows - 1, false);
    exclude.Kind = RoiSoftExclude;
    CRectOfInterest hard(picture.Cols - 9, picture.Cols - 1, 0, 9, false);
    hard.Kind = RoiHardExclude;
    for (const CRectOfInterest& rect : {include, exclude, hard})
        driver->AddRectOfInterest(rect);
    GetNTopCropSuggestions(driver, 5, &list, &everything, 0, weights);
    results.BestWished = TakeList(list, 1);
    DestroyVistaTrimObj(driver);
    return results;
}

void Write(const Results& results, std::ostream& out)
{
    out << std::setprecision(9) << "candidates_in_all " << results.CandidateCount << '\n';
    WriteCrops("candidates", results.Candidates, out);
    WriteCrops("best", results.Best, out);
    WriteCrops("best_wished", results.BestWished, out);
}

Results Read(std::istream& in)
{
    Results results;
    std::string word;
    Expect(static_cast<bool>(in >> word >> results.CandidateCount) && word == "candidates_in_all");
    results.Candidates = ReadCrops("candidates", in);
    results.Best = ReadCrops("best", in);
    results.BestWished = ReadCrops("best_wished", in);
    return results;
}

} // namespace goldenResults
