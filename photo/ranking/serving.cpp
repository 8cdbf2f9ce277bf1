#include "ranking/serving.h"

#include <algorithm>

#include "ranking/engine_lists.h"

namespace vistaTrim::photo {

namespace {

// The ratios that are clearly wider than the photograph, the nearest first.
std::vector<double> WiderRatios(const std::vector<Ratio>& ratios, PixelSize photo)
{
    const double own = static_cast<double>(photo.Width) / photo.Height;
    std::vector<double> wider;
    for (const Ratio& ratio : ratios)
        if (ratio.Value() > 1.05 * own)
            wider.push_back(ratio.Value());
    std::sort(wider.begin(), wider.end());
    return wider;
}

// Of a free choice, the first few are to differ in shape: people who crop a photograph often cut
// it wider than it was, and a single list leaves that to its tail. So two wider ratios get turns
// of their own between those of the whole table. The candidates are scored once all the same.
CropList FreeChoice(IVistaTrim& driver, const Request& request, const std::vector<Ratio>& ratios,
                    PixelSize photo)
{
    // The same length whatever request.Top is: the engine groups like crops only as long as it
    // finds more candidates than are asked for, and the first crops are not to depend on their
    // number.
    constexpr int32_t kListLength = 60;
    std::vector<CropList> lists = {
        BestOf(driver, request, kListLength, SuggestionParameters(false))};
    const std::vector<double> wider = WiderRatios(ratios, photo);
    for (size_t i = 0; i < wider.size() && i < 2; ++i)
        lists.push_back(
            BestOf(driver, request, kListLength, SuggestionParameters(wider[i], false)));
    std::vector<size_t> order;
    for (size_t list = lists.size() - 1; list > 0; --list) {
        order.push_back(0);
        order.push_back(list);
    }
    // Without turns of its own, for those who want more than the lists hold: all that rank high,
    // ungrouped, which is what the engine gives when asked for more than there is.
    constexpr int32_t kMoreThanThereIs = 100'000'000;
    lists.push_back(BestOf(driver, request, kMoreThanThereIs, SuggestionParameters(false)));
    return TakeTurns(lists, order, static_cast<size_t>(request.Top));
}

} // namespace

CropList Serve(IVistaTrim& driver, const Request& request, const std::vector<Ratio>& ratios,
               PixelSize photo, const SuggestionParameters& engineRequest)
{
    // Whoever names ratios, a size or one measure gets the engine's own order.
    const bool isFree = request.Aspects.empty() && !request.Size && request.Ranking == RankBy::All;
    return isFree ? FreeChoice(driver, request, ratios, photo)
                  : BestOf(driver, request, request.Top, engineRequest);
}

} // namespace vistaTrim::photo
