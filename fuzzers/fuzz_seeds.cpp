// Writes the seed inputs of the fuzzers: fuzz_seeds DIRECTORY creates one subdirectory per
// fuzzer.
//
// Each seed is written in the order its fuzzer reads it. If a fuzzer's reading order changes, its
// seeds remain valid inputs, only less useful ones.
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

// Writes the format FuzzedDataProvider reads: bytes from the front, numbers from the end, most
// significant byte first, in as many bytes as their range needs.
class CSeed {
public:
    CSeed& Whole(int64_t value, int64_t lowest, int64_t highest)
    {
        const uint64_t range = static_cast<uint64_t>(highest) - static_cast<uint64_t>(lowest);
        const uint64_t offset = static_cast<uint64_t>(value) - static_cast<uint64_t>(lowest);
        int bytes = 0;
        while (bytes < 8 && (range >> (8 * bytes)) > 0)
            ++bytes;
        for (int byte = bytes - 1; byte >= 0; --byte)
            Numbers.push_back(static_cast<char>((offset >> (8 * byte)) & 0xFFU));
        return *this;
    }
    CSeed& Bytes(const std::string& bytes)
    {
        Front += bytes;
        return *this;
    }
    // A plausible number from a host, in 64ths.
    CSeed& Number(int32_t sixtyFourths)
    {
        return Whole(4, 0, 7).Whole(sixtyFourths, 1, 255);
    }
    // One of the special numbers, by its index in the list.
    CSeed& Special(int32_t index)
    {
        return Whole(0, 0, 7).Whole(index, 0, 19);
    }
    CSeed& Size(bool portrait, int32_t side)
    {
        Whole(portrait ? 1 : 0, 0, 1);
        return side > 32 ? Whole(0, 0, 31).Whole(side, 1, 640) : Whole(1, 0, 31).Whole(side, 1, 32);
    }
    CSeed& Colour(int32_t a, int32_t b, int32_t c)
    {
        return Whole(a, 0, 255).Whole(b, 0, 255).Whole(c, 0, 255);
    }
    // A shape that covers cols x rows except for `eighths` eighths at each border.
    CSeed& Shape(int32_t cols, int32_t rows, int32_t eighths, int32_t kind)
    {
        const int32_t left = cols * eighths / 8;
        const int32_t top = rows * eighths / 8;
        return Whole(left, 0, cols - 1)
            .Whole(cols - 1 - left, left, cols - 1)
            .Whole(top, 0, rows - 1)
            .Whole(rows - 1 - top, top, rows - 1)
            .Whole(kind, 0, 3);
    }
    void Write(const std::filesystem::path& file) const
    {
        std::ofstream out(file, std::ios::binary);
        out << Front << std::string(Numbers.rbegin(), Numbers.rend());
    }

private:
    std::string Front;
    std::string Numbers;
};

// A flat picture, a bright centre, a gradient, noise or a pattern.
CSeed& Picture(CSeed& seed, int32_t cols, int32_t rows, int32_t which)
{
    switch (which) {
    case 0: return seed.Colour(255, 255, 255).Whole(0, 0, 8);
    case 1:
        seed.Colour(20, 30, 40).Whole(1, 0, 8).Shape(cols, rows, 2, 0);
        return seed.Colour(250, 200, 10);
    case 2: return seed.Colour(0, 0, 0).Whole(1, 0, 8).Shape(cols, rows, 0, 2).Colour(0, 90, 200);
    case 3: return seed.Colour(9, 9, 9).Whole(1, 0, 8).Shape(cols, rows, 0, 3).Colour(7, 77, 77);
    default:
        seed.Bytes("\x01\xF0 pattern of bytes \xFF\xFE").Colour(0, 0, 0).Whole(1, 0, 8);
        return seed.Shape(cols, rows, 1, 1).Colour(1, 1, 1).Whole(21, 1, 96);
    }
}

void WritePixelSeeds(const std::filesystem::path& directory)
{
    // Sides where something changes: bands, strips, downscaled copies with 1 or 0 pixels.
    for (const int32_t side : {1, 2, 3, 4, 5, 7, 9, 10, 14, 24, 25, 26, 31, 32, 49, 50, 160, 640})
        for (const bool portrait : {false, true})
            for (int32_t which = side > 32 ? side % 5 : 0; which<5; which += side> 32 ? 5 : 1) {
                const int32_t cols = portrait ? side : 640;
                const int32_t rows = portrait ? 640 : side;
                CSeed seed;
                seed.Size(portrait, side);
                for (int32_t crop = 0; crop < 4; ++crop) {
                    const int32_t left = crop * (cols - 1) / 8;
                    const int32_t top = crop * (rows - 1) / 8;
                    seed.Whole(left, 0, cols - 1).Whole(cols - 1 - left / 2, left, cols - 1);
                    seed.Whole(top, 0, rows - 1).Whole(rows - 1 - top / 2, top, rows - 1);
                }
                Picture(seed, cols, rows, which);
                seed.Write(directory / (std::to_string(cols) + "x" + std::to_string(rows) + "_" +
                                        std::to_string(which)));
            }
}

void WriteSelectionSeeds(const std::filesystem::path& directory)
{
    for (const int32_t count : {0, 1, 3, 40, 60, 511, 512, 999, 1000, 1005, 1300})
        for (int32_t spread = 0; spread < 4; ++spread) {
            CSeed seed;
            seed.Whole(1, 0, 3).Whole(count > 60 ? 25 : 5, -1, 70).Whole(spread, -1, 4);
            for (const int32_t weight : {32, 19, 13, 10, 5})
                seed.Number(weight);
            seed.Whole(1, 0, 7).Whole(1, 0, 3);
            constexpr int32_t kKinds = 7;
            seed.Whole(kKinds, 1, 12);
            for (int32_t i = 0; i < kKinds; ++i) {
                seed.Whole(1, 0, 15).Whole(int64_t{3} * i, -8, 80).Whole(1, 0, 15).Whole(i, -8, 80);
                seed.Whole(1, 0, 15).Whole(30 + i, 0, 60).Whole(40 - i, 0, 60).Whole(i % 2, 0, 1);
                for (int32_t measure = 0; measure < 5; ++measure)
                    seed.Whole(1, 0, 3).Whole((37 * i + 51 * measure) % 256, 0, 255);
                seed.Whole(1, 0, 1);
            }
            if (count > 60)
                seed.Whole(0, 0, 15).Whole(count, 0, 1300);
            else
                seed.Whole(1, 0, 15).Whole(count, 0, 60);
            seed.Whole(12345, 0, INT32_MAX).Whole(spread, 0, 3).Whole(2, 1, 3);
            seed.Write(directory / (std::to_string(count) + "_" + std::to_string(spread)));
        }
}

// Steps of a request sequence; see Session::Step.
CSeed& RequestAll(CSeed& seed)
{
    return seed.Whole(8, 0, 9).Whole(0, 0, 5).Whole(0, 0, 1);
}
CSeed& RequestRatio(CSeed& seed, int32_t sixtyFourths)
{
    return seed.Whole(8, 0, 9).Whole(1, 0, 5).Number(sixtyFourths).Whole(0, 0, 1);
}
CSeed& RequestSize(CSeed& seed, int32_t width, int32_t height, int32_t cols, int32_t rows)
{
    seed.Whole(9, 0, 9).Whole(3, 0, 5).Whole(width, 1, cols).Whole(height, 1, rows);
    return seed.Whole(0, 0, 1);
}
CSeed& RequestBest(CSeed& seed, int32_t n, int32_t mode)
{
    seed.Whole(6, 0, 9).Whole(0, 0, 5).Whole(0, 0, 1).Whole(1, 0, 3).Whole(n, -1, 40);
    seed.Whole(1, 0, 7).Whole(mode, 0, 3);
    for (const int32_t weight : {32, 19, 13, 10, 5})
        seed.Number(weight);
    return seed;
}
CSeed& EvaluateOne(CSeed& seed, int32_t cols, int32_t rows)
{
    seed.Whole(3, 0, 9).Whole(1, 0, 3).Whole(cols / 4, 0, cols - 1);
    seed.Whole(cols / 2, cols / 4, cols - 1).Whole(0, 0, rows - 1).Whole(rows - 1, 0, rows - 1);
    return seed.Whole(1, 0, 7);
}
CSeed& AddRectangle(CSeed& seed, int32_t kind)
{
    seed.Whole(2, 0, 9).Whole(1, 0, 7).Whole(100, -20, 660).Whole(1, 0, 7).Whole(1, -20, 660);
    seed.Whole(0, 0, 1).Whole(1, 0, 7).Whole(60, 0, 200).Whole(4, 0, 200);
    return seed.Whole(1, 0, 15).Whole(kind, 0, 3).Whole(1, 0, 7);
}
CSeed& SwitchRow(CSeed& seed, bool scale, int32_t sixtyFourths, bool enabled)
{
    if (scale)
        seed.Whole(1, 0, 9).Whole(1, 0, 3).Whole(sixtyFourths, 0, 64);
    else
        seed.Whole(0, 0, 9).Number(sixtyFourths);
    return seed.Whole(enabled ? 1 : 0, 0, 1);
}

CSeed SequenceStart(int32_t cols, int32_t rows, int32_t density)
{
    CSeed seed;
    seed.Size(cols < rows, cols < rows ? cols : rows);
    if (density == 25) {
        seed.Whole(0, 0, 31); // the default tables
    } else {
        seed.Whole(1, 0, 31).Whole(3, 1, 5);
        for (const int32_t aspect : {96, 64, 48})
            seed.Number(aspect).Whole(1, 0, 3);
        seed.Whole(3, 1, 5);
        for (const int32_t scale : {32, 48, 64})
            seed.Whole(1, 0, 7).Whole(scale, 0, 64).Whole(1, 0, 3);
    }
    if (density > 6)
        seed.Whole(0, 0, 15).Whole(density, 0, 32);
    else
        seed.Whole(1, 0, 15).Whole(density, 0, 6);
    seed.Whole(1, 0, 3).Whole(1, 0, 3); // no face flag, no rectangles
    return Picture(seed, cols, rows, density % 5);
}

void WriteSequenceSeeds(const std::filesystem::path& directory)
{
    int number = 0;
    const auto write = [&](const CSeed& seed) {
        seed.Write(directory / ("sequence_" + std::to_string(number++)));
    };
    const int32_t sizes[][2] = {{640, 32}, {24, 640}, {640, 1}, {640, 96}};
    for (const auto& [cols, rows] : sizes)
        for (const int32_t density : {0, 1, 2, 5, 25}) {
            CSeed plain = SequenceStart(cols, rows, density);
            RequestBest(RequestAll(RequestAll(plain)), 10, 0);
            EvaluateOne(plain, cols, rows);
            write(plain);

            CSeed sizesAndRatios = SequenceStart(cols, rows, density);
            RequestSize(sizesAndRatios, cols / 2 + 1, rows / 2 + 1, cols, rows);
            RequestRatio(RequestRatio(sizesAndRatios, 96), 101);
            RequestBest(RequestAll(sizesAndRatios), 30, 1);
            write(sizesAndRatios);

            CSeed switched = SequenceStart(cols, rows, density);
            SwitchRow(switched, false, 96, false);
            RequestRatio(SwitchRow(switched, true, 48, false), 96);
            RequestAll(SwitchRow(RequestAll(switched), true, 80, true));
            write(switched);

            CSeed wished = SequenceStart(cols, rows, density);
            for (int32_t kind = 0; kind < 4; ++kind)
                RequestBest(AddRectangle(wished, kind), 5, 3);
            write(wished);

            CSeed strange = SequenceStart(cols, rows, density);
            for (const int32_t special : {14, 15, 16, 17, 18, 9}) {
                strange.Whole(8, 0, 9).Whole(1, 0, 5).Special(special).Whole(0, 0, 1);
                strange.Whole(8, 0, 9).Whole(4, 0, 5).Special(special).Special(special);
                strange.Whole(1, 0, 3).Whole(0, 0, 1);
            }
            write(strange);
        }
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 2) {
        std::fprintf(stderr, "usage: fuzz_seeds DIRECTORY\n");
        return 2;
    }
    const std::filesystem::path top = arguments[1];
    for (const char* name : {"pixels", "selection", "request_sequence"})
        std::filesystem::create_directories(top / name);
    WritePixelSeeds(top / "pixels");
    WriteSelectionSeeds(top / "selection");
    WriteSequenceSeeds(top / "request_sequence");
    return 0;
}
