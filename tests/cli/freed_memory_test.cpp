#include "batch/freed_memory.h"

#include <cstddef>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include <sys/resource.h>

#include <gtest/gtest.h>

namespace vistaTrim::cli {
namespace {

long ResidentKilobytes()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.compare(0, 6, "VmRSS:") == 0)
            return std::stol(line.substr(6));
    return 0;
}

long MinorPageFaults()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_minflt;
}

using Block = std::unique_ptr<char[]>;

Block Touched(size_t bytes)
{
    Block block(new char[bytes]);
    for (size_t i = 0; i < bytes; i += 1024)
        static_cast<volatile char*>(block.get())[i] = 1;
    return block;
}

// These two run in this order, the first with a fresh heap.
TEST(FreedMemory, IsReturnedToTheSystemBetweenSteps)
{
    std::vector<Block> blocks;
    for (int i = 0; i < 300; ++i)
        blocks.push_back(Touched(100 * 1000)); // 30 MB, of sizes that come from the heap
    const Block behind = Touched(1000);        // keeps the heap from shrinking by itself
    blocks.clear();
    const long before = ResidentKilobytes();
    ReturnFreedMemory();
    EXPECT_LT(ResidentKilobytes(), before - 20000);
}

TEST(FreedMemory, IsKeptForTheNextPhotograph)
{
    KeepFreedMemory();
    const auto photograph = [] {
        const Block maps = Touched(12 * 1000 * 1000);
        const Block tables = Touched(25 * 1000 * 1000);
        ReturnFreedMemory();
    };
    photograph();
    const long before = MinorPageFaults();
    photograph();
    EXPECT_LT(MinorPageFaults() - before, 100); // instead of 9,000
}

} // namespace
} // namespace vistaTrim::cli
