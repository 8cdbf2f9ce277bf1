#include "oracle/slow_analysis.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <stdexcept>

namespace slowOracle {

namespace {

constexpr float kAnchoredStripFraction = 0.25F;
constexpr float kSideStripFraction = 0.2F;
constexpr float kPlaneContrastWeight = 0.33333334F;

size_t Index(int x, int y, int cols)
{
    return static_cast<size_t>(y) * static_cast<size_t>(cols) + static_cast<size_t>(x);
}

size_t CountOf(int cols, int rows)
{
    return static_cast<size_t>(cols) * static_cast<size_t>(rows);
}

float ToFloat(double value)
{
    return static_cast<float>(value);
}

// The pixel, or the nearest one inside.
double Clamped(const FloatPlane& p, int cols, int rows, int x, int y)
{
    return p[Index(std::clamp(x, 0, cols - 1), std::clamp(y, 0, rows - 1), cols)];
}

void RequireSize(const FloatPlane& p, int cols, int rows)
{
    if (cols < 1 || rows < 1 || p.size() != CountOf(cols, rows))
        throw std::invalid_argument("slow oracle: a plane does not have the stated size");
}

} // namespace

// ---- Planes --------------------------------------------------------------------------------

PlaneStack MakeStack(int planeCount, int cols, int rows)
{
    PlaneStack stack;
    stack.Cols = cols;
    stack.Rows = rows;
    stack.Planes.assign(static_cast<size_t>(planeCount), FloatPlane(CountOf(cols, rows), 0.0F));
    return stack;
}

PlaneStack WrapPlane(int cols, int rows, const FloatPlane& plane)
{
    PlaneStack stack;
    stack.Cols = cols;
    stack.Rows = rows;
    stack.Planes.push_back(plane);
    return stack;
}

PlaneStack StackFromBytes(const uint8_t* bytes, int planeCount, int cols, int rows)
{
    PlaneStack stack = MakeStack(planeCount, cols, rows);
    const size_t count = CountOf(cols, rows);
    if (planeCount == 1) {
        for (size_t i = 0; i < count; ++i)
            stack.Planes[0][i] = static_cast<float>(bytes[i]);
        return stack;
    }
    for (size_t i = 0; i < count; ++i)
        for (size_t c = 0; c < 3; ++c)
            stack.Planes.at(c)[i] = static_cast<float>(bytes[3 * i + c]);
    return stack;
}

PlaneStack PlaneView(const PlaneStack& stack, int plane)
{
    const int n = static_cast<int>(stack.Planes.size());
    // Counts up to the pair (p, p) in the packed order (0,0) .. (0,n-1), (1,1) .. (n-1,n-1).
    int pair = 0;
    for (int i = 0; i < plane; ++i)
        pair += n - i;

    PlaneStack view =
        WrapPlane(stack.Cols, stack.Rows, stack.Planes.at(static_cast<size_t>(plane)));
    view.PlaneTables.push_back(stack.PlaneTables.at(static_cast<size_t>(plane)));
    view.PairTables.push_back(stack.PairTables.at(static_cast<size_t>(pair)));
    return view;
}

// ---- Vector primitives ---------------------------------------------------------------------

int IndexOfLargestMagnitude(const float* x, int count)
{
    int best = 0;
    for (int i = 1; i < count; ++i)
        if (std::fabs(x[i]) > std::fabs(x[best]))
            best = i;
    return best;
}

int IndexOfSmallestMagnitude(const float* x, int count)
{
    int best = 0;
    for (int i = 1; i < count; ++i)
        if (std::fabs(x[i]) < std::fabs(x[best]))
            best = i;
    return best;
}

float LargestByMagnitude(const FloatPlane& x)
{
    return x.at(static_cast<size_t>(IndexOfLargestMagnitude(x.data(), static_cast<int>(x.size()))));
}

void NormalisePlane(float* x, int count)
{
    const int largest = IndexOfLargestMagnitude(x, count);
    const int smallest = IndexOfSmallestMagnitude(x, count);
    const float shift = -x[smallest];
    for (int i = 0; i < count; ++i)
        x[i] = x[i] + shift;
    float range = x[largest] - x[smallest];
    if (range < 1e-05F)
        range = 1e-05F;
    const float scale = ToFloat(1.0 / static_cast<double>(range));
    for (int i = 0; i < count; ++i)
        x[i] = x[i] * scale;
}

void NormalisePlane(FloatPlane& x)
{
    NormalisePlane(x.data(), static_cast<int>(x.size()));
}

void AddPlanes(FloatPlane& target, const FloatPlane& source, float alpha)
{
    for (size_t i = 0; i < source.size(); ++i)
        target.at(i) = ToFloat(static_cast<double>(target[i]) +
                               static_cast<double>(alpha) * static_cast<double>(source[i]));
}

void AddElements(FloatPlane& target, const FloatPlane& source)
{
    for (size_t i = 0; i < source.size(); ++i)
        target.at(i) = target[i] + source[i];
}

void MultiplyElements(FloatPlane& target, const FloatPlane& source)
{
    for (size_t i = 0; i < source.size(); ++i)
        target.at(i) = target[i] * source[i];
}

void CubeElements(FloatPlane& x)
{
    for (float& v : x)
        v = ToFloat(std::pow(static_cast<double>(v), 3.0));
}

// ---- Image kernels -------------------------------------------------------------------------

const char* StatusText(int status)
{
    switch (status) {
    case 1: return "ippStsNoOperation: No operation has been executed.";
    case -5: return "ippStsBadArgErr: Incorrect arg/param of the function.";
    case -6: return "ippStsSizeErr: Incorrect value for data size.";
    case -8: return "ippStsNullPtrErr: Null pointer error.";
    case -14: return "ippStsStepErr: Step value is not valid.";
    case -33: return "ippStsMaskSizeErr: Invalid mask size.";
    case -34: return "ippStsAnchorErr: Anchor point is outside the mask.";
    case -108: return "ippStsNotEvenStepErr: Step value is not pixel multiple.";
    default: return "ippStsUnknownStatusCodeErr: Unknown status code.";
    }
}

FloatPlane SobelRowDifference(const FloatPlane& src, int cols, int rows)
{
    RequireSize(src, cols, rows);
    FloatPlane dst(src.size());
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < cols; ++x) {
            const double below = Clamped(src, cols, rows, x - 1, y + 1) +
                                 2.0 * Clamped(src, cols, rows, x, y + 1) +
                                 Clamped(src, cols, rows, x + 1, y + 1);
            const double above = Clamped(src, cols, rows, x - 1, y - 1) +
                                 2.0 * Clamped(src, cols, rows, x, y - 1) +
                                 Clamped(src, cols, rows, x + 1, y - 1);
            dst[Index(x, y, cols)] = ToFloat(below - above);
        }
    return dst;
}

FloatPlane SobelColumnDifference(const FloatPlane& src, int cols, int rows)
{
    RequireSize(src, cols, rows);
    FloatPlane dst(src.size());
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < cols; ++x) {
            const double left = Clamped(src, cols, rows, x - 1, y - 1) +
                                2.0 * Clamped(src, cols, rows, x - 1, y) +
                                Clamped(src, cols, rows, x - 1, y + 1);
            const double right = Clamped(src, cols, rows, x + 1, y - 1) +
                                 2.0 * Clamped(src, cols, rows, x + 1, y) +
                                 Clamped(src, cols, rows, x + 1, y + 1);
            dst[Index(x, y, cols)] = ToFloat(left - right);
        }
    return dst;
}

FloatPlane GradientStrength(const FloatPlane& src, int cols, int rows)
{
    FloatPlane dst = SobelRowDifference(src, cols, rows);
    const FloatPlane other = SobelColumnDifference(src, cols, rows);
    for (size_t i = 0; i < dst.size(); ++i)
        dst[i] = std::fabs(dst[i]) + std::fabs(other[i]);
    return dst;
}

FloatPlane GaussianTaps(int maskSize, float sigma)
{
    if (maskSize < 3 || maskSize % 2 == 0)
        throw std::invalid_argument("slow oracle: a mask must be odd and at least 3");
    const int h = maskSize / 2;
    const double s = sigma;
    FloatPlane taps(static_cast<size_t>(maskSize));
    float sum = 0.0F;
    for (int i = 0; i < maskSize; ++i) {
        const double d = i - h;
        const float tap = ToFloat(std::exp(-(d * d) / ((s + s) * s)));
        taps[static_cast<size_t>(i)] = tap;
        sum = sum + tap;
    }
    for (float& tap : taps)
        tap = tap / sum;
    return taps;
}

FloatPlane GaussianSmooth(const FloatPlane& src, int cols, int rows, int maskSize, float sigma)
{
    RequireSize(src, cols, rows);
    const FloatPlane taps = GaussianTaps(maskSize, sigma);
    const int h = maskSize / 2;

    // The horizontal sums of all rows, kept in double.
    DoublePlane alongRow(src.size());
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < cols; ++x) {
            double sum = 0.0;
            for (int i = 0; i < maskSize; ++i)
                sum += static_cast<double>(taps[static_cast<size_t>(i)]) *
                       Clamped(src, cols, rows, x + i - h, y);
            alongRow[Index(x, y, cols)] = sum;
        }

    FloatPlane dst(src.size());
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < cols; ++x) {
            double sum = 0.0;
            for (int j = 0; j < maskSize; ++j)
                sum += static_cast<double>(taps[static_cast<size_t>(j)]) *
                       alongRow[Index(x, std::clamp(y + j - h, 0, rows - 1), cols)];
            dst[Index(x, y, cols)] = ToFloat(sum);
        }
    return dst;
}

void SmoothStack(const PlaneStack& source, PlaneStack& target, double sigma)
{
    for (size_t k = 0; k < source.Planes.size(); ++k)
        target.Planes.at(k) =
            GaussianSmooth(source.Planes[k], source.Cols, source.Rows, 7, ToFloat(sigma));
}

std::vector<FloatPlane> BlurInterleavedPixels(const uint8_t* pixels, int cols, int rows,
                                              float sigma)
{
    std::vector<FloatPlane> out;
    for (const FloatPlane& plane : StackFromBytes(pixels, 3, cols, rows).Planes)
        out.push_back(GaussianSmooth(plane, cols, rows, 15, sigma));
    return out;
}

namespace {

struct ResizeAxis {
    std::vector<int> First, Second; // source positions
    FloatPlane Fraction;
};

ResizeAxis MakeResizeAxis(int n, int m)
{
    ResizeAxis axis;
    for (int k = 0; k < m; ++k) {
        const double u = (k + 0.5) * (static_cast<double>(n) / static_cast<double>(m)) - 0.5;
        const double whole = std::floor(u);
        const int i = static_cast<int>(whole);
        axis.First.push_back(std::clamp(i, 0, n - 1));
        axis.Second.push_back(std::clamp(i + 1, 0, n - 1));
        axis.Fraction.push_back(ToFloat(u - whole));
    }
    return axis;
}

double Between(double a, double b, float fraction)
{
    return a + (b - a) * static_cast<double>(fraction);
}

} // namespace

void ResizeStackLinear(const PlaneStack& source, PlaneStack& target, Messages& messages)
{
    if (source.Cols < 0 || source.Rows < 0 || target.Cols < 0 || target.Rows < 0)
        messages.push_back(StatusText(-6));
    else if (source.Cols == 0 || source.Rows == 0 || target.Cols == 0 || target.Rows == 0)
        messages.push_back(StatusText(1));

    // The setup fails silently; each plane's kernel then reports that its tables are missing.
    if (source.Cols < 2 || source.Rows < 2) {
        for (size_t k = 0; k < source.Planes.size(); ++k)
            messages.push_back(StatusText(-8));
        return;
    }

    const ResizeAxis across = MakeResizeAxis(source.Cols, target.Cols);
    const ResizeAxis down = MakeResizeAxis(source.Rows, target.Rows);
    for (size_t k = 0; k < source.Planes.size(); ++k) {
        const FloatPlane& src = source.Planes[k];
        for (int y = 0; y < target.Rows; ++y) {
            const size_t yy = static_cast<size_t>(y);
            for (int x = 0; x < target.Cols; ++x) {
                const size_t xx = static_cast<size_t>(x);
                const int x0 = across.First[xx], x1 = across.Second[xx];
                const int y0 = down.First[yy], y1 = down.Second[yy];
                const double upper = Between(src[Index(x0, y0, source.Cols)],
                                             src[Index(x1, y0, source.Cols)], across.Fraction[xx]);
                const double lower = Between(src[Index(x0, y1, source.Cols)],
                                             src[Index(x1, y1, source.Cols)], across.Fraction[xx]);
                target.Planes.at(k)[Index(x, y, target.Cols)] =
                    ToFloat(Between(upper, lower, down.Fraction[yy]));
            }
        }
    }
}

void ThresholdBelow(FloatPlane& map, float level, float value)
{
    for (float& v : map)
        if (!(v >= level))
            v = value;
}

void ScaleColumns(FloatPlane& map, int cols, int rows, int firstCol, int width, float factor)
{
    if (width < 1 || rows < 1)
        return;
    for (int y = 0; y < rows; ++y)
        for (int x = firstCol; x < firstCol + width; ++x)
            map.at(Index(x, y, cols)) = map[Index(x, y, cols)] * factor;
}

void ErodeBox(FloatPlane& map, int cols, int rows, int size)
{
    RequireSize(map, cols, rows);
    const FloatPlane src = map;
    const int h = (size - 1) / 2;
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < cols; ++x) {
            double least = Clamped(src, cols, rows, x, y);
            for (int dy = -h; dy <= h; ++dy)
                for (int dx = -h; dx <= h; ++dx)
                    least = std::min(least, Clamped(src, cols, rows, x + dx, y + dy));
            map[Index(x, y, cols)] = ToFloat(least);
        }
}

void DilateBox(FloatPlane& map, int cols, int rows, int size)
{
    RequireSize(map, cols, rows);
    const FloatPlane src = map;
    const int h = (size - 1) / 2;
    for (int y = 0; y < rows; ++y)
        for (int x = 0; x < cols; ++x) {
            double most = Clamped(src, cols, rows, x, y);
            for (int dy = -h; dy <= h; ++dy)
                for (int dx = -h; dx <= h; ++dx)
                    most = std::max(most, Clamped(src, cols, rows, x + dx, y + dy));
            map[Index(x, y, cols)] = ToFloat(most);
        }
}

// ---- Summed-area tables --------------------------------------------------------------------

DoublePlane BuildSummedAreaTable(const FloatPlane& map, int cols, int rows)
{
    RequireSize(map, cols, rows);
    DoublePlane t(map.size());
    t[0] = map[0];
    for (int r = 1; r < rows; ++r)
        t[Index(0, r, cols)] = map[Index(0, r, cols)] + t[Index(0, r - 1, cols)];
    for (int c = 1; c < cols; ++c)
        t[Index(c, 0, cols)] = map[Index(c, 0, cols)] + t[Index(c - 1, 0, cols)];
    for (int r = 1; r < rows; ++r)
        for (int c = 1; c < cols; ++c)
            t[Index(c, r, cols)] = ((t[Index(c - 1, r, cols)] + t[Index(c, r - 1, cols)]) -
                                    t[Index(c - 1, r - 1, cols)]) +
                                   map[Index(c, r, cols)];
    return t;
}

double RegionSum(const DoublePlane& table, int cols, int firstRow, int firstCol, int lastRow,
                 int lastCol)
{
    const double a = table.at(Index(lastCol, lastRow, cols));
    const double b = firstRow < 1 ? 0.0 : table.at(Index(lastCol, firstRow - 1, cols));
    const double c = firstCol < 1 ? 0.0 : table.at(Index(firstCol - 1, lastRow, cols));
    const double d =
        firstRow < 1 || firstCol < 1 ? 0.0 : table.at(Index(firstCol - 1, firstRow - 1, cols));
    return ((a - b) - c) + d;
}

double RegionMean(const DoublePlane& table, int cols, int firstRow, int firstCol, int lastRow,
                  int lastCol, double denominator)
{
    return RegionSum(table, cols, firstRow, firstCol, lastRow, lastCol) / denominator;
}

namespace {

// Turns running sums along the rows into sums over both directions, rounding each step to float.
void SumDownColumns(FloatPlane& table, int cols, int rows)
{
    for (int c = 1; c <= cols; ++c) {
        float s = 0.0F;
        for (int r = 1; r <= rows; ++r) {
            s = s + table[Index(c, r, cols + 1)];
            table[Index(c, r, cols + 1)] = s;
        }
    }
}

} // namespace

FloatPlane BuildPlaneTable(const FloatPlane& plane, int cols, int rows)
{
    RequireSize(plane, cols, rows);
    FloatPlane table(CountOf(cols + 1, rows + 1), 0.0F);
    for (int r = 0; r < rows; ++r) {
        float s = 0.0F;
        for (int c = 0; c < cols; ++c) {
            s = s + plane[Index(c, r, cols)];
            table[Index(c + 1, r + 1, cols + 1)] = s;
        }
    }
    SumDownColumns(table, cols, rows);
    return table;
}

FloatPlane BuildPairTable(const FloatPlane& a, const FloatPlane& b, int cols, int rows)
{
    RequireSize(a, cols, rows);
    RequireSize(b, cols, rows);
    FloatPlane table(CountOf(cols + 1, rows + 1), 0.0F);
    for (int r = 0; r < rows; ++r) {
        float s = 0.0F;
        for (int c = 0; c < cols; ++c) {
            const double product = static_cast<double>(a[Index(c, r, cols)]) *
                                   static_cast<double>(b[Index(c, r, cols)]);
            s = ToFloat(product + static_cast<double>(s));
            table[Index(c + 1, r + 1, cols + 1)] = s;
        }
    }
    SumDownColumns(table, cols, rows);
    return table;
}

void BuildTables(PlaneStack& stack)
{
    stack.PlaneTables.clear();
    stack.PairTables.clear();
    for (const FloatPlane& plane : stack.Planes)
        stack.PlaneTables.push_back(BuildPlaneTable(plane, stack.Cols, stack.Rows));
    for (size_t i = 0; i < stack.Planes.size(); ++i)
        for (size_t j = i; j < stack.Planes.size(); ++j)
            stack.PairTables.push_back(
                BuildPairTable(stack.Planes[i], stack.Planes[j], stack.Cols, stack.Rows));
}

// ---- Multi-scale edges ---------------------------------------------------------------------

void NormaliseRowBySum(float* row, int length, float offset, float threshold)
{
    float sum = 0.0F;
    for (int i = 0; i < length; ++i)
        if (row[i] > threshold)
            sum = sum + row[i];
    const double divisor = static_cast<double>(sum) + static_cast<double>(offset);
    for (int i = 0; i < length; ++i)
        row[i] = ToFloat(static_cast<double>(row[i]) / divisor);
}

void NormaliseRowsBySum(FloatPlane& plane, int cols, int rows)
{
    RequireSize(plane, cols, rows);
    const float offset = ToFloat(static_cast<double>(cols) * static_cast<double>(0.01F));
    for (int y = 0; y < rows; ++y)
        NormaliseRowBySum(plane.data() + Index(0, y, cols), cols, offset, 0.05F);
}

int ScaledSide(int side, float scale)
{
    return static_cast<int>(static_cast<double>(side) * static_cast<double>(scale));
}

FloatPlane ComputeMultiScaleEdges(const PlaneStack& source, bool normaliseOutput,
                                  bool normaliseRows, const std::vector<float>& scales,
                                  Messages& messages)
{
    const int cols = source.Cols, rows = source.Rows;
    const size_t fullCount = CountOf(cols, rows);
    const int planeCount = static_cast<int>(source.Planes.size());

    std::vector<PlaneStack> scaled;
    for (const float scale : scales) {
        const int w = ScaledSide(cols, scale);
        const int h = ScaledSide(rows, scale);
        if (w < 1 || h < 1)
            continue;
        scaled.push_back(MakeStack(planeCount, w, h));
        ResizeStackLinear(source, scaled.back(), messages);
    }

    FloatPlane out(fullCount, 0.0F);
    FloatPlane edgeBuffer(fullCount, 0.0F); // keeps its content from scale to scale
    for (const PlaneStack& small : scaled) {
        const int w = small.Cols, h = small.Rows;
        const int n = w * h;

        FloatPlane edges = GradientStrength(small.Planes.at(0), w, h);
        for (size_t k = 1; k < small.Planes.size(); ++k)
            AddElements(edges, GradientStrength(small.Planes[k], w, h));
        NormalisePlane(edges);
        if (normaliseRows)
            NormaliseRowsBySum(edges, w, h);
        std::copy(edges.begin(), edges.end(), edgeBuffer.begin());

        PlaneStack smoothed = MakeStack(1, w, h);
        SmoothStack(WrapPlane(w, h, edges), smoothed, 0.5);

        // A scaled side of 1 is rejected here: the buffer then keeps the edges just copied in
        // and, after them, the previous scale's full-size result.
        PlaneStack full = WrapPlane(cols, rows, edgeBuffer);
        ResizeStackLinear(smoothed, full, messages);
        edgeBuffer = full.Planes[0];

        // The count is that of the small plane: only the first n elements are rescaled.
        NormalisePlane(edgeBuffer.data(), n);
        AddElements(out, edgeBuffer);
    }
    if (normaliseOutput)
        NormalisePlane(out);
    return out;
}

// ---- Border strips -------------------------------------------------------------------------

int StripBand(int cols, int rows, float fraction)
{
    const float width = static_cast<float>(std::min(cols, rows)) * fraction;
    return std::max(1, static_cast<int>(std::floor(width)));
}

StripRect MakeStrip(Side side, int cols, int rows, int band)
{
    StripRect strip = {0, 0, cols - 1, rows - 1, 0};
    switch (side) {
    case SideTop: strip.Bottom = std::min(rows - 1, band - 1); break;
    case SideBottom: strip.Top = std::max(rows - band, 0); break;
    case SideLeft: strip.Right = std::min(cols - 1, band - 1); break;
    case SideRight: strip.Left = std::max(cols - band, 0); break;
    }
    strip.Area = (strip.Right - strip.Left + 1) * (strip.Bottom - strip.Top + 1);
    return strip;
}

namespace {

float StripSum(const FloatPlane& table, int cols, const StripRect& r)
{
    const int stride = cols + 1;
    const double lowerRight = table.at(Index(r.Right + 1, r.Bottom + 1, stride));
    const double upperLeft = table.at(Index(r.Left, r.Top, stride));
    const double upperRight = table.at(Index(r.Right + 1, r.Top, stride));
    const double lowerLeft = table.at(Index(r.Left, r.Bottom + 1, stride));
    return ToFloat(((lowerRight + upperLeft) - upperRight) - lowerLeft);
}

struct SumAndArea {
    float Sum, Area;
};

SumAndArea GroupSum(const FloatPlane& table, int cols, const std::vector<StripRect>& group)
{
    SumAndArea total = {0.0F, 0.0F};
    for (const StripRect& strip : group) {
        total.Sum = total.Sum + StripSum(table, cols, strip);
        total.Area = total.Area + static_cast<float>(strip.Area);
    }
    return total;
}

} // namespace

StripStatistics ComputeStripStatistics(const PlaneStack& stack, const std::vector<StripRect>& group)
{
    const size_t n = stack.Planes.size();
    StripStatistics model;
    for (size_t p = 0; p < n; ++p) {
        const SumAndArea total = GroupSum(stack.PlaneTables.at(p), stack.Cols, group);
        model.Mean.push_back(total.Sum / total.Area);
    }
    model.Covariance.assign(n * n, 0.0F);
    size_t pair = 0;
    for (size_t i = 0; i < n; ++i)
        for (size_t j = i; j < n; ++j) {
            const SumAndArea total = GroupSum(stack.PairTables.at(pair), stack.Cols, group);
            const double moment = static_cast<double>(total.Sum) / static_cast<double>(total.Area);
            const double square =
                static_cast<double>(model.Mean[i]) * static_cast<double>(model.Mean[j]);
            model.Covariance[i * n + j] = ToFloat(moment - square);
            ++pair;
        }
    for (size_t a = 1; a < n; ++a)
        for (size_t b = 0; b < a; ++b)
            model.Covariance[a * n + b] = model.Covariance[b * n + a];
    return model;
}

// ---- Distance maps -------------------------------------------------------------------------

namespace {

// A small square matrix that rounds every stored element as `precision` says. Rounding the double
// result of an operation on two floats gives exactly the float result, since 53 >= 2 * 24 + 2.
class SmallMatrix {
public:
    SmallMatrix(int size, InversePrecision precision)
        : Size(size), Precision(precision),
          Elements(static_cast<size_t>(size) * static_cast<size_t>(size), 0.0)
    {
    }
    double Get(int row, int col) const
    {
        return Elements[Index(col, row, Size)];
    }
    void Set(int row, int col, double value)
    {
        Elements[Index(col, row, Size)] = Round(value);
    }
    double Round(double value) const
    {
        return Precision == InversePrecision::kSingle ? static_cast<double>(ToFloat(value)) : value;
    }

private:
    int Size;
    InversePrecision Precision;
    std::vector<double> Elements;
};

// Turns the lower triangle of `m` into the Cholesky factor. False if `m` is not positive
// definite: a pivot that is zero, negative or NaN.
bool FactorCholesky(SmallMatrix& m, int n)
{
    for (int j = 0; j < n; ++j) {
        double pivot = m.Get(j, j);
        for (int k = 0; k < j; ++k)
            pivot = m.Round(pivot - m.Round(m.Get(j, k) * m.Get(j, k)));
        if (!(pivot > 0.0))
            return false;
        m.Set(j, j, std::sqrt(pivot));
        for (int i = j + 1; i < n; ++i) {
            double sum = m.Get(i, j);
            for (int k = 0; k < j; ++k)
                sum = m.Round(sum - m.Round(m.Get(i, k) * m.Get(j, k)));
            m.Set(i, j, sum / m.Get(j, j));
        }
    }
    return true;
}

// Inverts a lower triangle by forward substitution of unit vectors.
SmallMatrix InvertLowerTriangle(const SmallMatrix& lower, int n, InversePrecision precision)
{
    SmallMatrix x(n, precision);
    for (int j = 0; j < n; ++j) {
        x.Set(j, j, 1.0 / lower.Get(j, j));
        for (int i = j + 1; i < n; ++i) {
            double sum = 0.0;
            for (int k = j; k < i; ++k)
                sum = x.Round(sum + x.Round(lower.Get(i, k) * x.Get(k, j)));
            x.Set(i, j, -sum / lower.Get(i, i));
        }
    }
    return x;
}

} // namespace

FloatPlane InvertRegularised(const FloatPlane& a, int n, float eps, InversePrecision precision)
{
    const double epsilon = eps;
    if (n == 1)
        return {ToFloat(1.0 / (static_cast<double>(a.at(0)) + epsilon))};

    const size_t count = CountOf(n, n);
    SmallMatrix m(n, precision);
    float firstDiagonal = 0.0F;
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) {
            float value = a.at(Index(j, i, n));
            if (i == j)
                value = value + eps;
            if (i == 0 && j == 0)
                firstDiagonal = value;
            m.Set(i, j, value);
        }

    FloatPlane result(count, 0.0F);
    if (!FactorCholesky(m, n)) {
        // The first diagonal element, regularised a second time, is used for all planes.
        for (int i = 0; i < n; ++i)
            result[Index(i, i, n)] = ToFloat(1.0 / (static_cast<double>(firstDiagonal) + epsilon));
        return result;
    }
    const SmallMatrix x = InvertLowerTriangle(m, n, precision);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j <= i; ++j) {
            double sum = 0.0;
            for (int k = i; k < n; ++k)
                sum = x.Round(sum + x.Round(x.Get(k, i) * x.Get(k, j)));
            result[Index(j, i, n)] = ToFloat(sum);
            result[Index(i, j, n)] = ToFloat(sum);
        }
    return result;
}

FloatPlane ComputeMahalanobisMap(const PlaneStack& stack, const StripStatistics& model,
                                 bool normalise, InversePrecision precision)
{
    const size_t n = stack.Planes.size();
    const size_t count = CountOf(stack.Cols, stack.Rows);
    const FloatPlane inverse =
        InvertRegularised(model.Covariance, static_cast<int>(n), 10.0F, precision);

    FloatPlane out(count);
    FloatPlane centred(n), weighted(n);
    for (size_t i = 0; i < count; ++i) {
        for (size_t k = 0; k < n; ++k)
            centred[k] = stack.Planes[k][i] + -model.Mean[k];
        for (size_t k = 0; k < n; ++k) {
            double sum = 0.0;
            for (size_t l = 0; l < n; ++l)
                sum += static_cast<double>(centred[l]) * static_cast<double>(inverse[l * n + k]);
            weighted[k] = ToFloat(sum);
        }
        float squared = 0.0F;
        if (n == 3) {
            double sum = 0.0;
            for (size_t k = 0; k < 3; ++k)
                sum += static_cast<double>(centred[k]) * static_cast<double>(weighted[k]);
            squared = ToFloat(sum);
        } else {
            for (size_t k = 0; k < n; ++k)
                squared =
                    ToFloat(static_cast<double>(squared) +
                            static_cast<double>(weighted[k]) * static_cast<double>(centred[k]));
        }
        out[i] = std::sqrt(squared);
    }
    if (normalise)
        NormalisePlane(out);
    return out;
}

FloatPlane ComputeScalarDistanceMap(const PlaneStack& stack, const StripStatistics& model,
                                    bool normalise)
{
    const float v = ToFloat(static_cast<double>(model.Covariance.at(0)) + 10.0);
    const float r = ToFloat(std::sqrt(static_cast<double>(v)));
    const float s = ToFloat(1.0 / static_cast<double>(r));
    FloatPlane out = stack.Planes.at(0);
    for (float& x : out)
        x = std::fabs(x + -model.Mean.at(0)) * s;
    if (normalise)
        NormalisePlane(out);
    return out;
}

namespace {

FloatPlane DistanceMap(const PlaneStack& stack, const std::vector<StripRect>& group, bool normalise,
                       InversePrecision precision)
{
    const StripStatistics model = ComputeStripStatistics(stack, group);
    if (stack.Planes.size() == 1)
        return ComputeScalarDistanceMap(stack, model, normalise);
    return ComputeMahalanobisMap(stack, model, normalise, precision);
}

FloatPlane AnchoredContrast(const PlaneStack& stack, float fraction, Side anchor, Side opposite,
                            InversePrecision precision)
{
    const int band = StripBand(stack.Cols, stack.Rows, fraction);
    const StripRect anchorStrip = MakeStrip(anchor, stack.Cols, stack.Rows, band);
    const std::vector<StripRect> rest = {
        MakeStrip(SideLeft, stack.Cols, stack.Rows, band),
        MakeStrip(SideRight, stack.Cols, stack.Rows, band),
        MakeStrip(opposite, stack.Cols, stack.Rows, band),
    };
    FloatPlane out = DistanceMap(stack, {anchorStrip}, false, precision);
    AddPlanes(out, DistanceMap(stack, rest, false, precision), 1.0F);
    NormalisePlane(out);
    return out;
}

} // namespace

FloatPlane ComputeTopContrast(const PlaneStack& stack, float fraction, InversePrecision precision)
{
    return AnchoredContrast(stack, fraction, SideTop, SideBottom, precision);
}

FloatPlane ComputeBottomContrast(const PlaneStack& stack, float fraction,
                                 InversePrecision precision)
{
    return AnchoredContrast(stack, fraction, SideBottom, SideTop, precision);
}

std::vector<FloatPlane> ComputeSideContrasts(const PlaneStack& stack, float fraction,
                                             InversePrecision precision)
{
    const int band = StripBand(stack.Cols, stack.Rows, fraction);
    std::vector<FloatPlane> maps;
    for (const Side side : {SideTop, SideBottom, SideLeft, SideRight})
        maps.push_back(
            DistanceMap(stack, {MakeStrip(side, stack.Cols, stack.Rows, band)}, true, precision));
    return maps;
}

// ---- Saliency ------------------------------------------------------------------------------

namespace {

// The bottom-anchored value unless it is the greater.
FloatPlane LesserOf(const FloatPlane& bottom, const FloatPlane& top)
{
    FloatPlane out(bottom.size());
    for (size_t i = 0; i < bottom.size(); ++i)
        out[i] = bottom[i] > top.at(i) ? top[i] : bottom[i];
    return out;
}

} // namespace

SaliencyStages ComputeSaliencyMaps(const uint8_t* pixels, int cols, int rows,
                                   InversePrecision precision, Messages& messages)
{
    SaliencyStages s;
    s.PixelStack = StackFromBytes(pixels, 3, cols, rows);
    s.BlurredStack = MakeStack(3, cols, rows);
    SmoothStack(s.PixelStack, s.BlurredStack, static_cast<double>(0.7F));
    BuildTables(s.BlurredStack);

    s.TopJoint = ComputeTopContrast(s.BlurredStack, kAnchoredStripFraction, precision);
    s.BottomJoint = ComputeBottomContrast(s.BlurredStack, kAnchoredStripFraction, precision);
    s.ColorContrastMap = LesserOf(s.BottomJoint, s.TopJoint);

    s.TopEnriched = s.TopJoint;
    s.BottomEnriched = s.BottomJoint;
    for (int p = 0; p < 3; ++p) {
        const PlaneStack view = PlaneView(s.BlurredStack, p);
        AddPlanes(s.TopEnriched, ComputeTopContrast(view, kAnchoredStripFraction, precision),
                  kPlaneContrastWeight);
        AddPlanes(s.BottomEnriched, ComputeBottomContrast(view, kAnchoredStripFraction, precision),
                  kPlaneContrastWeight);
    }
    NormalisePlane(s.BottomEnriched);
    NormalisePlane(s.TopEnriched);
    s.ContrastMap = LesserOf(s.BottomEnriched, s.TopEnriched);
    NormalisePlane(s.ContrastMap);

    s.Edges = ComputeMultiScaleEdges(s.PixelStack, false, false, {0.04F, 0.2F}, messages);
    s.SaliencyMap = s.Edges;
    MultiplyElements(s.SaliencyMap, s.ContrastMap);
    NormalisePlane(s.SaliencyMap);

    const std::vector<FloatPlane> sides =
        ComputeSideContrasts(s.BlurredStack, kSideStripFraction, precision);
    for (size_t i = 0; i < 4; ++i)
        s.SideMaps[i] = sides[i];
    return s;
}

// ---- The edge map --------------------------------------------------------------------------

float ThresholdLevel(const FloatPlane& map, float fraction)
{
    return ToFloat(static_cast<double>(LargestByMagnitude(map)) * static_cast<double>(fraction));
}

float CentreWeight(int strip)
{
    const float c = ToFloat(std::pow(static_cast<double>(0.2F), 0.5));
    return ToFloat(std::pow(static_cast<double>(c), std::abs(2 - strip)));
}

void CentreWeightColumns(FloatPlane& map, int cols, int rows)
{
    const double width = cols;
    for (int i = 0; i < 5; ++i) {
        // Both casts truncate toward zero, so a last column of -0.8 is column 0.
        const int first = static_cast<int>(i * width / 5.0);
        const int last = static_cast<int>((i + 1) * width / 5.0 - 1.0);
        ScaleColumns(map, cols, rows, first, last - first + 1, CentreWeight(i));
    }
}

EdgeStages ComputeEdgeStages(const uint8_t* pixels, int cols, int rows)
{
    EdgeStages e;
    const std::vector<FloatPlane> planes = BlurInterleavedPixels(pixels, cols, rows, 2.0F);
    e.Summed.assign(CountOf(cols, rows), 0.0F);
    for (size_t k = 0; k < 3; ++k) {
        e.Smoothed[k] = planes[k];
        AddElements(e.Summed, GradientStrength(planes[k], cols, rows));
    }

    FloatPlane map = e.Summed;
    e.FirstLevel = ThresholdLevel(map, 0.1F);
    ThresholdBelow(map, e.FirstLevel, 0.0F);
    NormalisePlane(map);
    e.Normalised = map;

    NormaliseRowsBySum(map, cols, rows);
    e.RowNormalised = map;

    e.SecondLevel = ThresholdLevel(map, 0.3F);
    ThresholdBelow(map, e.SecondLevel, 0.0F);
    ErodeBox(map, cols, rows, 5);
    DilateBox(map, cols, rows, 7);
    e.Cleaned = map;

    CentreWeightColumns(map, cols, rows);
    NormalisePlane(map);
    e.EdgeMap = map;
    return e;
}

// ---- The whole analysis --------------------------------------------------------------------

WorkingSize ComputeWorkingSize(int sourceCols, int sourceRows)
{
    WorkingSize size;
    size.ScaleFactor = ToFloat(640.0 / std::max(sourceCols, sourceRows));
    const double factor = size.ScaleFactor;
    size.WorkCols = static_cast<int>(sourceCols * factor + 0.5);
    size.WorkRows = static_cast<int>(sourceRows * factor + 0.5);
    return size;
}

int ComputeBorderBand(int workCols, int workRows)
{
    const float v = ToFloat(std::min(workCols, workRows) * static_cast<double>(0.15F));
    return v < 1.0F ? 1 : static_cast<int>(v);
}

float BandMean(Side side, const DoublePlane& table, int cols, int rows, int band)
{
    const double whole = table.at(Index(cols - 1, rows - 1, cols));
    const double acrossArea = static_cast<double>(band) * cols;
    const double downArea = static_cast<double>(rows) * band;
    switch (side) {
    case SideTop: return ToFloat(table.at(Index(cols - 1, band - 1, cols)) / acrossArea);
    case SideBottom: {
        const double rest =
            rows - band < 1 ? 0.0 : table.at(Index(cols - 1, rows - band - 1, cols));
        return ToFloat((whole - rest) / acrossArea);
    }
    case SideLeft: return ToFloat(table.at(Index(band - 1, rows - 1, cols)) / downArea);
    case SideRight: break;
    }
    const double rest = cols - band < 1 ? 0.0 : table.at(Index(cols - band - 1, rows - 1, cols));
    return ToFloat((whole - rest) / downArea);
}

float BandGain(float mean)
{
    return ToFloat(1.0 / (static_cast<double>(mean) + static_cast<double>(0.01F)));
}

namespace {

// The bottom-right element of a table, with a floor so that it can be a denominator.
float Total(const DoublePlane& table)
{
    const float total = ToFloat(table.back());
    return total < 1e-10F ? 1e-10F : total;
}

} // namespace

Analysis AnalyseBytes(const std::vector<uint8_t>& bytes, int sourceCols, int sourceRows,
                      InversePrecision precision)
{
    Analysis a;
    a.SourceCols = sourceCols;
    a.SourceRows = sourceRows;
    const WorkingSize size = ComputeWorkingSize(sourceCols, sourceRows);
    a.ScaleFactor = size.ScaleFactor;
    a.WorkCols = size.WorkCols;
    a.WorkRows = size.WorkRows;
    if (size.WorkCols < 1 || size.WorkRows < 1) {
        a.ErrorLines.push_back("Image aspect ratio is larger than 1:640! ");
        return a;
    }
    const int cols = size.WorkCols, rows = size.WorkRows;
    if (bytes.size() < 3 * CountOf(cols, rows))
        throw std::invalid_argument("slow oracle: the buffer is smaller than the working size");
    const uint8_t* pixels = bytes.data();

    a.Saliency = ComputeSaliencyMaps(pixels, cols, rows, precision, a.ErrorLines);
    a.ContrastMap = a.Saliency.ContrastMap;
    a.SaliencyMap = a.Saliency.SaliencyMap;
    a.ColorContrastMap = a.Saliency.ColorContrastMap;

    a.Edge = ComputeEdgeStages(pixels, cols, rows);
    a.EdgeMap = a.Edge.EdgeMap;

    a.ColorContrastLevel = ThresholdLevel(a.ColorContrastMap, 0.2F);
    ThresholdBelow(a.ColorContrastMap, a.ColorContrastLevel, 0.0F);

    a.ContrastMask = a.ContrastMap;
    a.ContrastMaskLevel = ThresholdLevel(a.ContrastMask, 0.1F);
    ThresholdBelow(a.ContrastMask, a.ContrastMaskLevel, 0.0F);

    a.PeakMap = a.ColorContrastMap;
    a.PeakLevel = ThresholdLevel(a.PeakMap, 0.5F);
    ThresholdBelow(a.PeakMap, a.PeakLevel, 0.0F);
    CubeElements(a.PeakMap);

    a.ContrastTable = BuildSummedAreaTable(a.ContrastMap, cols, rows);
    a.SaliencyTable = BuildSummedAreaTable(a.SaliencyMap, cols, rows);
    a.ContrastMaskTable = BuildSummedAreaTable(a.ContrastMask, cols, rows);
    a.ColorContrastTable = BuildSummedAreaTable(a.ColorContrastMap, cols, rows);
    a.PeakTable = BuildSummedAreaTable(a.PeakMap, cols, rows);
    a.EdgeTable = BuildSummedAreaTable(a.EdgeMap, cols, rows);

    a.ContrastMaskTotal = Total(a.ContrastMaskTable);
    a.ColorContrastTotal = Total(a.ColorContrastTable);
    a.EdgeTotal = Total(a.EdgeTable);
    a.PeakTotal = Total(a.PeakTable);

    a.BorderBand = ComputeBorderBand(cols, rows);
    for (const Side side : {SideTop, SideBottom, SideLeft, SideRight}) {
        a.SideMaps[side] = a.Saliency.SideMaps[side];
        a.SideLevels[side] = ThresholdLevel(a.SideMaps[side], 0.01F);
        ThresholdBelow(a.SideMaps[side], a.SideLevels[side], 0.0F);
        a.SideTables[side] = BuildSummedAreaTable(a.SideMaps[side], cols, rows);
        a.SideGain[side] = BandGain(BandMean(side, a.SideTables[side], cols, rows, a.BorderBand));
    }
    a.Built = true;
    return a;
}

Analysis AnalysePicture(const Picture& picture, InversePrecision precision)
{
    return AnalyseBytes(picture.Bytes, picture.Cols, picture.Rows, precision);
}

} // namespace slowOracle
