#include "oracle/slow_selection.h"

#include <algorithm>
#include <cmath>

namespace slowOracle {

namespace {

// True if value a at index i sorts before value b at index j in ascending order.
bool Below(double a, size_t i, double b, size_t j)
{
    const bool aIsNumber = !std::isnan(a);
    const bool bIsNumber = !std::isnan(b);
    if (aIsNumber != bIsNumber)
        return bIsNumber;
    if (aIsNumber && a != b)
        return a < b;
    return i < j;
}

bool HasTies(const std::vector<double>& values)
{
    std::vector<double> sorted;
    for (const double value : values) {
        if (std::isnan(value))
            return true;
        sorted.push_back(value);
    }
    std::sort(sorted.begin(), sorted.end());
    return std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end();
}

void SetWeightsByMode(int32_t rankingMode, Weights& weights)
{
    if (rankingMode < 1 || rankingMode > 3)
        return;
    if (rankingMode != 1)
        weights.Weight1 = 0.0;
    if (rankingMode != 2)
        weights.Weight2 = 0.0;
    if (rankingMode != 3)
        weights.Weight3 = 0.0;
    weights.Weight4 = 0.0;
    weights.Weight5 = 0.0;
}

CropCell PassingCrops(const CropGrid& grid, uint32_t aspectIndex, uint32_t scaleIndex,
                      const std::vector<Roi>& hardRects)
{
    CropCell survivors;
    const auto walkCell = [&survivors, &hardRects](const CropCell& cell) {
        for (const Crop& crop : cell)
            if (PassesHardRects(hardRects, Rect{crop.Left, crop.Right, crop.Top, crop.Bottom}))
                survivors.push_back(crop);
    };
    const auto walkRow = [&walkCell, scaleIndex](const CropRow& row) {
        if (scaleIndex != kNoIndex)
            walkCell(row.at(scaleIndex));
        else
            for (const CropCell& cell : row)
                walkCell(cell);
    };
    if (aspectIndex != kNoIndex)
        walkRow(grid.at(aspectIndex));
    else
        for (const CropRow& row : grid)
            walkRow(row);
    return survivors;
}

double MeasureOf(const Crop& crop, int measure)
{
    switch (measure) {
    case 0: return crop.CompositionScore;
    case 1: return crop.CoverageScore;
    case 2: return crop.BorderScore;
    case 3: return crop.PeakScore;
    default: return crop.CentrePeakScore;
    }
}

void RankSurvivors(const Weights& weights, Selection& selection)
{
    const double weightOf[5] = {weights.Weight1, weights.Weight2, weights.Weight3, weights.Weight4,
                                weights.Weight5};
    const size_t m = selection.Survivors.size();
    for (int measure = 0; measure < 5; ++measure) {
        if (measure >= 3 && !(weightOf[measure] > 0.0))
            continue;
        std::vector<float> values;
        for (const Crop& crop : selection.Survivors)
            values.push_back(static_cast<float>(MeasureOf(crop, measure)));
        selection.Ranks[measure] = PercentileRanks(values, true);
        if (weightOf[measure] != 0.0 && HasTies(std::vector<double>(values.begin(), values.end())))
            selection.DependsOnTies = true;
    }

    for (size_t i = 0; i < m; ++i) {
        double merged = weights.Weight1 * static_cast<double>(selection.Ranks[0][i]) +
                        weights.Weight2 * static_cast<double>(selection.Ranks[1][i]) +
                        weights.Weight3 * static_cast<double>(selection.Ranks[2][i]);
        if (weights.Weight4 > 0.0)
            merged = merged + weights.Weight4 * static_cast<double>(selection.Ranks[3][i]);
        if (weights.Weight5 > 0.0)
            merged = merged + weights.Weight5 * static_cast<double>(selection.Ranks[4][i]);
        selection.Survivors[i].MergedScore = merged;

        double key = merged;
        if (selection.Survivors[i].CoversContent)
            key = key + 1.0;
        // Selection reads the soft score as a float, whatever a host has written there.
        const float roiScore = static_cast<float>(selection.Survivors[i].RoiScore);
        key = key + 1000000.0 * static_cast<double>(roiScore);
        selection.Keys.push_back(key);
    }
    if (HasTies(selection.Keys))
        selection.DependsOnTies = true;
}

void OrderByKey(Selection& selection)
{
    const std::vector<double>& keys = selection.Keys;
    selection.Order.resize(keys.size());
    for (size_t i = 0; i < keys.size(); ++i) {
        size_t before = 0;
        for (size_t j = 0; j < keys.size(); ++j) {
            // Descending, with NaN last.
            const bool iIsNumber = !std::isnan(keys[i]);
            const bool jIsNumber = !std::isnan(keys[j]);
            if (iIsNumber != jIsNumber)
                before += jIsNumber ? 1 : 0;
            else if (jIsNumber && keys[j] != keys[i])
                before += keys[j] > keys[i] ? 1 : 0;
            else
                before += j < i ? 1 : 0;
        }
        selection.Order[before] = i;
    }
}

void FormClusters(float clusterLimit, std::vector<size_t> pool, Selection& selection)
{
    while (!pool.empty()) {
        const Crop& leader = selection.Survivors[pool[0]];
        std::vector<size_t> cluster(1, pool[0]);
        std::vector<size_t> rest;
        for (size_t j = 1; j < pool.size(); ++j) {
            const bool same = CropOverlap(leader, selection.Survivors[pool[j]]) > 0.83F;
            if (same && static_cast<float>(j) < clusterLimit)
                cluster.push_back(pool[j]);
            else
                rest.push_back(pool[j]);
        }
        selection.Clusters.push_back(cluster);
        pool = rest;
    }
}

void ServeClusters(int32_t n, Selection& selection)
{
    std::vector<std::vector<size_t>> clusters = selection.Clusters;
    int32_t k = 0;
    size_t misses = 0;
    while (k < n && misses < clusters.size()) {
        std::vector<size_t>& cluster = clusters[static_cast<size_t>(k) % clusters.size()];
        if (cluster.empty()) {
            // k stays, so every later turn hits this same cluster and serving ends.
            ++misses;
            continue;
        }
        size_t best = 0;
        for (size_t i = 1; i < cluster.size(); ++i)
            if (selection.Survivors[cluster[i]].BorderScore >
                selection.Survivors[cluster[best]].BorderScore)
                best = i;
        selection.Served.push_back(cluster[best]);
        cluster.erase(cluster.begin() + static_cast<std::ptrdiff_t>(best));
        ++k;
        misses = 0;
    }
}

} // namespace

std::vector<float> PercentileRanks(const std::vector<float>& values, bool higherIsBetter)
{
    const float m = static_cast<float>(values.size());
    std::vector<float> ranks;
    for (size_t i = 0; i < values.size(); ++i) {
        size_t position = 0;
        for (size_t j = 0; j < values.size(); ++j)
            if (Below(static_cast<double>(values[j]), j, static_cast<double>(values[i]), i))
                ++position;
        if (higherIsBetter)
            ranks.push_back(static_cast<float>(position + 1) / m);
        else
            ranks.push_back(1.0F - static_cast<float>(position) / m);
    }
    return ranks;
}

float CropOverlap(const Crop& a, const Crop& b)
{
    const auto area = [](const Crop& crop) {
        return (static_cast<int64_t>(crop.Right) - crop.Left + 1) *
               (static_cast<int64_t>(crop.Bottom) - crop.Top + 1);
    };
    const int64_t iw = std::max<int64_t>(0, static_cast<int64_t>(std::min(a.Right, b.Right)) -
                                                std::max(a.Left, b.Left) + 1);
    const int64_t ih = std::max<int64_t>(0, static_cast<int64_t>(std::min(a.Bottom, b.Bottom)) -
                                                std::max(a.Top, b.Top) + 1);
    const float inter = static_cast<float>(iw * ih);
    const double both =
        static_cast<double>(area(a)) + static_cast<double>(area(b)) - static_cast<double>(inter);
    return static_cast<float>(static_cast<double>(inter) / both);
}

size_t PoolSizeOf(size_t m)
{
    const double p = static_cast<double>(m) * static_cast<double>(0.2F);
    return p > 200.0 ? static_cast<size_t>(p) : m;
}

Selection SelectTopCrops(int32_t n, const CropGrid& grid, int32_t rankingMode, uint32_t aspectIndex,
                         uint32_t scaleIndex, Weights weights,
                         const std::vector<Roi>& rectsOfInterest)
{
    Selection selection;
    selection.Survivors = PassingCrops(grid, aspectIndex, scaleIndex, HardRects(rectsOfInterest));
    SetWeightsByMode(rankingMode, weights);
    RankSurvivors(weights, selection);
    OrderByKey(selection);

    selection.PoolSize = PoolSizeOf(selection.Survivors.size());
    const float clusterLimit =
        std::max(1.0F, static_cast<float>(static_cast<double>(selection.PoolSize) * 1.0));
    std::vector<size_t> pool;
    for (size_t i = 0; i < selection.PoolSize; ++i)
        pool.push_back(selection.Order[i]);

    if (static_cast<int64_t>(selection.PoolSize) < n) {
        selection.Served = pool;
    } else {
        selection.Clustered = true;
        FormClusters(clusterLimit, pool, selection);
        ServeClusters(n, selection);
    }
    for (const size_t i : selection.Served)
        selection.Result.push_back(selection.Survivors[i]);
    return selection;
}

} // namespace slowOracle
