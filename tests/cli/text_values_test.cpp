#include "options/text_values.h"

#include <vector>

#include <gtest/gtest.h>

namespace vistaTrim::cli {
namespace {

TEST(TextValues, ReadNumbers)
{
    EXPECT_EQ(ParseNumbers("0.3,0.25,-1"), (std::vector<double>{0.3, 0.25, -1.0}));
    for (const char* text : {"", "1,", ",1", "1;2", "nan", "inf,1", "0.3 ,1", "0x10"})
        EXPECT_FALSE(ParseNumbers(text)) << text;
}

} // namespace
} // namespace vistaTrim::cli
