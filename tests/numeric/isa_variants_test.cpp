#include "numeric/isa_variants.h"

#include <gtest/gtest.h>

namespace vistaTrim {
namespace {

TEST(IsaVariants, PlainVariantIsAlwaysAvailable)
{
    EXPECT_TRUE(IsaVariantAvailable(IsaVariantPlain));
    EXPECT_TRUE(IsaVariantAvailable(ActiveIsaVariant()));
}

TEST(IsaVariants, SelectingAnUnknownVariantGivesPlain)
{
    const IsaVariant before = ActiveIsaVariant();
    EXPECT_FALSE(IsaVariantAvailable(IsaVariantCount));
    SelectIsaVariant(IsaVariantCount);
    EXPECT_EQ(ActiveIsaVariant(), IsaVariantPlain);
    SelectIsaVariant(before);
    EXPECT_EQ(ActiveIsaVariant(), before);
}

} // namespace
} // namespace vistaTrim
