#include "scoring/selection.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

#include "numeric/isa_variants.h"
#include "scoring/crop_analyzer.h"
#include "scoring/measures.h"
#include "scoring/rects_of_interest.h"

namespace vistaTrim {

namespace {

constexpr float kClusterOverlap = 0.83f; // crops that overlap more are the same crop
constexpr float kPoolFraction = 0.2f;    // share of the candidates kept once there are many
constexpr float kClusterShare = 1.0f;    // share of the pool that a cluster may draw from
constexpr double kPoolLimit = 200.0;     // the pool is cut only if more than this remain
constexpr double kRoiTierFactor = 1000000.0;
constexpr double kCoverTierBonus = 1.0;

// Below this many entries a comparison sort is faster.
constexpr size_t kRadixMinimum = 512;

// Bits whose unsigned order is that of the floats. NaN sorts before all numbers and both zeros are
// equal, so the order is total on every machine.
uint32_t OrderedBits(float value)
{
    if (std::isnan(value))
        return 0;
    value += 0.0f;
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof(bits));
    return (bits & 0x80000000U) != 0 ? ~bits : bits | 0x80000000U;
}

uint64_t OrderedBits(double value)
{
    if (std::isnan(value))
        return 0;
    value += 0.0;
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof(bits));
    return (bits & 0x8000000000000000U) != 0 ? ~bits : bits | 0x8000000000000000U;
}

// Sorts entries of (ordered value << 32 | index) ascending. The indices already ascend, so a stable
// sort by the upper half is enough: equal values stay in index order.
void SortByUpperHalf(std::vector<uint64_t>& entries)
{
    if (entries.size() < kRadixMinimum) {
        std::sort(entries.begin(), entries.end());
        return;
    }
    constexpr int kPasses = 3;
    constexpr int kBits = 11;
    constexpr uint64_t kMask = (1U << kBits) - 1;
    std::vector<uint32_t> places(kPasses << kBits, 0);
    for (const uint64_t entry : entries)
        for (int pass = 0; pass < kPasses; ++pass)
            ++places[(static_cast<size_t>(pass) << kBits) +
                     ((entry >> (32 + pass * kBits)) & kMask)];

    std::vector<uint64_t> other(entries.size());
    for (int pass = 0; pass < kPasses; ++pass) {
        uint32_t* place = places.data() + (static_cast<size_t>(pass) << kBits);
        uint32_t next = 0;
        for (size_t digit = 0; digit <= kMask; ++digit)
            next += std::exchange(place[digit], next);
        for (const uint64_t entry : entries)
            other[place[(entry >> (32 + pass * kBits)) & kMask]++] = entry;
        entries.swap(other);
    }
}

// What selection reads from the candidates, one array per field, by survivor index.
struct Survivors {
    std::vector<const CInt32CropRect*> Records; // in the grid; only served records are copied
    std::vector<double> MergedScores;

    int32_t Count() const
    {
        return static_cast<int32_t>(Records.size());
    }
};

Survivors CollectSurvivors(const CropCells& cells, const std::vector<CRectOfInterest>& hardRects)
{
    size_t count = 0;
    for (const CropCell* cell : cells)
        count += cell->size();
    Survivors survivors;
    survivors.Records.reserve(count);
    for (const CropCell* cell : cells)
        for (const CInt32CropRect& crop : *cell)
            if (PassesHardRects(hardRects,
                                CInt32Rect(crop.Left, crop.Right, crop.Top, crop.Bottom)))
                survivors.Records.push_back(&crop);
    return survivors;
}

std::vector<float> RanksOf(const Survivors& survivors, double Score::*measure)
{
    std::vector<RankEntry> entries(survivors.Records.size());
    for (size_t i = 0; i < entries.size(); ++i)
        entries[i] = {static_cast<float>(survivors.Records[i]->Score.*measure),
                      static_cast<int32_t>(i)};
    return PercentileRanks(std::move(entries), true);
}

// Weighted ranks added up, in the order of the measures.
void MergeRanks(Survivors& survivors, const WeightDistribution& weights)
{
    // -0.0, because adding a product to it keeps the product's sign.
    survivors.MergedScores.assign(survivors.Records.size(), -0.0);
    for (const Measure& measure : Measures()) {
        const double weight = weights.*measure.Weight;
        if (measure.RankingMode == 0 && !(weight > 0))
            continue;
        const std::vector<float> ranks = RanksOf(survivors, measure.Value);
        for (size_t i = 0; i < ranks.size(); ++i)
            survivors.MergedScores[i] += weight * static_cast<double>(ranks[i]);
    }
}

WeightDistribution WeightsOfMode(const WeightDistribution& weights, int32_t rankingMode)
{
    WeightDistribution kept(0.0, 0.0, 0.0);
    for (const Measure& measure : Measures())
        if (rankingMode != 0 && measure.RankingMode == rankingMode) {
            kept.*measure.Weight = weights.*measure.Weight;
            return kept;
        }
    return weights;
}

// The best of the survivors, best first. Equal keys keep index order.
std::vector<int32_t> PoolOf(const Survivors& survivors)
{
    struct SortEntry {
        uint64_t Key;
        int32_t Index;
    };
    const int32_t count = survivors.Count();
    std::vector<SortEntry> entries(static_cast<size_t>(count));
    for (size_t i = 0; i < entries.size(); ++i) {
        // Three tiers in one number: wishes met, content covered, merged rank. In double, because a
        // float would lose the rank beside the first tier.
        const CInt32CropRect& crop = *survivors.Records[i];
        double key = survivors.MergedScores[i];
        if (crop.CoversContent)
            key += kCoverTierBonus;
        key += kRoiTierFactor * static_cast<double>(static_cast<float>(crop.Score.RoiScore));
        entries[i] = {OrderedBits(key), static_cast<int32_t>(i)};
    }

    // 0.2f is slightly above 0.2, so 1000 candidates give just over the limit and are cut to 200.
    const double share = count * static_cast<double>(kPoolFraction);
    const int32_t poolSize = share > kPoolLimit ? static_cast<int32_t>(share) : count;
    const auto before = [](const SortEntry& a, const SortEntry& b) {
        return a.Key != b.Key ? a.Key > b.Key : a.Index < b.Index;
    };
    const auto poolEnd = entries.begin() + poolSize;
    if (poolEnd != entries.end())
        std::nth_element(entries.begin(), poolEnd, entries.end(), before);
    std::sort(entries.begin(), poolEnd, before);

    std::vector<int32_t> pool(static_cast<size_t>(poolSize));
    for (size_t i = 0; i < pool.size(); ++i)
        pool[i] = entries[i].Index;
    return pool;
}

// Rectangles as doubles, which represent every integer in the computation exactly up to crops of
// 2^53 pixels: sides would have to exceed 94 million pixels.
struct OverlapSide {
    double Left, Right, Top, Bottom, Area;
};

OverlapSide SideOf(const CInt32CropRect& crop)
{
    const CInt32Rect rect(crop.Left, crop.Right, crop.Top, crop.Bottom);
    return {static_cast<double>(rect.Left), static_cast<double>(rect.Right),
            static_cast<double>(rect.Top), static_cast<double>(rect.Bottom),
            static_cast<double>(rect.Area())};
}

VISTATRIM_VARIANT_BODY float OverlapOf(const OverlapSide& a, double left, double right, double top,
                                       double bottom, double area)
{
    const double width = std::max(0.0, std::min(a.Right, right) - std::max(a.Left, left) + 1.0);
    const double height = std::max(0.0, std::min(a.Bottom, bottom) - std::max(a.Top, top) + 1.0);
    const double common = static_cast<double>(static_cast<float>(width * height));
    return static_cast<float>(common / (a.Area + area - common));
}

// The candidates that no cluster has taken yet, best first, one list per field.
struct Pool {
    std::vector<double> Left, Right, Top, Bottom, Area;
    std::vector<int32_t> Survivor;
    std::vector<uint8_t> Joins; // scratch
    size_t Count = 0;
};

VISTATRIM_VARIANT_BODY void FindMembersBody(const OverlapSide& leader, const double* left,
                                            const double* right, const double* top,
                                            const double* bottom, const double* area, size_t count,
                                            uint8_t* joins)
{
    for (size_t j = 0; j < count; ++j)
        joins[j] =
            OverlapOf(leader, left[j], right[j], top[j], bottom[j], area[j]) > kClusterOverlap;
}

VISTATRIM_VARIANTS(FindMembers,
                   (const OverlapSide& leader, const double* left, const double* right,
                    const double* top, const double* bottom, const double* area, size_t count,
                    uint8_t* joins),
                   (leader, left, right, top, bottom, area, count, joins))

Pool MakePool(const Survivors& survivors, const std::vector<int32_t>& order)
{
    Pool pool;
    pool.Count = order.size();
    for (std::vector<double>* list : {&pool.Left, &pool.Right, &pool.Top, &pool.Bottom, &pool.Area})
        list->resize(pool.Count);
    pool.Survivor = order;
    pool.Joins.resize(pool.Count);
    for (size_t i = 0; i < pool.Count; ++i) {
        const OverlapSide side = SideOf(*survivors.Records[static_cast<size_t>(order[i])]);
        pool.Left[i] = side.Left;
        pool.Right[i] = side.Right;
        pool.Top[i] = side.Top;
        pool.Bottom[i] = side.Bottom;
        pool.Area[i] = side.Area;
    }
    return pool;
}

// Removes from the pool the best candidate and all that overlap it enough, in order.
std::vector<int32_t> TakeCluster(Pool& pool, float clusterLimit)
{
    const OverlapSide leader = {pool.Left[0], pool.Right[0], pool.Top[0], pool.Bottom[0],
                                pool.Area[0]};
    FindMembers(leader, pool.Left.data(), pool.Right.data(), pool.Top.data(), pool.Bottom.data(),
                pool.Area.data(), pool.Count, pool.Joins.data());

    std::vector<int32_t> cluster(1, pool.Survivor[0]);
    size_t rest = 0;
    for (size_t j = 1; j < pool.Count; ++j) {
        // The limit applies to the position in the pool, not to the cluster's size.
        if (pool.Joins[j] != 0 && static_cast<float>(j) < clusterLimit) {
            cluster.push_back(pool.Survivor[j]);
            continue;
        }
        pool.Left[rest] = pool.Left[j];
        pool.Right[rest] = pool.Right[j];
        pool.Top[rest] = pool.Top[j];
        pool.Bottom[rest] = pool.Bottom[j];
        pool.Area[rest] = pool.Area[j];
        pool.Survivor[rest] = pool.Survivor[j];
        ++rest;
    }
    pool.Count = rest;
    return cluster;
}

CInt32CropRect ServedCopy(const Survivors& survivors, int32_t index)
{
    CInt32CropRect copy = *survivors.Records[static_cast<size_t>(index)];
    copy.Score.MergedScore = survivors.MergedScores[static_cast<size_t>(index)];
    return copy;
}

// The member with the cleanest borders; of equals, the earliest.
std::vector<int32_t>::iterator CleanestMember(const Survivors& survivors,
                                              std::vector<int32_t>& cluster)
{
    const auto borderOf = [&survivors](int32_t index) {
        return survivors.Records[static_cast<size_t>(index)]->Score.BorderScore;
    };
    auto best = cluster.begin();
    for (auto member = cluster.begin(); member != cluster.end(); ++member)
        if (borderOf(*member) > borderOf(*best))
            best = member;
    return best;
}

} // namespace

std::vector<float> PercentileRanks(std::vector<RankEntry> entries, bool higherIsBetter)
{
    const auto byIndex = [](const RankEntry& a, const RankEntry& b) { return a.Index < b.Index; };
    if (!std::is_sorted(entries.begin(), entries.end(), byIndex))
        std::sort(entries.begin(), entries.end(), byIndex);

    std::vector<uint64_t> sorted(entries.size());
    for (size_t i = 0; i < entries.size(); ++i)
        sorted[i] = (uint64_t{OrderedBits(entries[i].Value)} << 32) |
                    static_cast<uint32_t>(entries[i].Index);
    SortByUpperHalf(sorted);

    std::vector<float> ranks(sorted.size());
    const float count = static_cast<float>(sorted.size());
    for (size_t k = 0; k < sorted.size(); ++k) {
        const size_t index = sorted[k] & 0xFFFFFFFFU;
        ranks[index] = higherIsBetter ? static_cast<float>(k + 1) / count
                                      : 1.0f - static_cast<float>(k) / count;
    }
    return ranks;
}

float CropOverlap(const CInt32CropRect& a, const CInt32CropRect& b)
{
    const OverlapSide side = SideOf(b);
    return OverlapOf(SideOf(a), side.Left, side.Right, side.Top, side.Bottom, side.Area);
}

const std::vector<CInt32CropRect>& CCropAnalyzer::SelectTopCrops(int32_t n, const CropCells& cells,
                                                                 int32_t rankingMode,
                                                                 const WeightDistribution& weights)
{
    Survivors survivors = CollectSurvivors(cells, HardRects(RectsOfInterest));
    MergeRanks(survivors, WeightsOfMode(weights, rankingMode));
    const std::vector<int32_t> order = PoolOf(survivors);

    SelectedCrops.clear();
    if (static_cast<int64_t>(order.size()) < n) {
        // Too few to choose from: return them all, including near-duplicates.
        for (const int32_t index : order)
            SelectedCrops.push_back(ServedCopy(survivors, index));
        return SelectedCrops;
    }

    // Serving visits every cluster once before returning to the first, and every cluster has a
    // member for its first turn: n clusters are enough.
    const size_t wanted = n > 0 ? static_cast<size_t>(n) : 0;
    const float clusterLimit = std::max(1.0f, static_cast<float>(order.size()) * kClusterShare);
    std::vector<std::vector<int32_t>> clusters;
    if (wanted > 0)
        for (Pool pool = MakePool(survivors, order); pool.Count > 0 && clusters.size() < wanted;)
            clusters.push_back(TakeCluster(pool, clusterLimit));

    // The turn does not advance past an empty cluster, so the list ends at the first one, even if
    // later clusters still have members.
    for (size_t k = 0; k < wanted && !clusters.empty(); ++k) {
        std::vector<int32_t>& cluster = clusters[k % clusters.size()];
        if (cluster.empty())
            break;
        const auto served = CleanestMember(survivors, cluster);
        SelectedCrops.push_back(ServedCopy(survivors, *served));
        cluster.erase(served);
    }
    return SelectedCrops;
}

} // namespace vistaTrim
