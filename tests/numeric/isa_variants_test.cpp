#include "numeric/isa_variants.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

namespace vistaTrim {
namespace {

TEST(IsaVariants, PlainVariantIsAlwaysAvailable)
{
    EXPECT_TRUE(IsaVariantAvailable(IsaVariantPlain));
    EXPECT_TRUE(IsaVariantAvailable(ActiveIsaVariant()));
}

TEST(IsaVariants, EachHasAName)
{
    std::set<std::string> names = {""};
    for (int variant = IsaVariantPlain; variant < IsaVariantCount; ++variant)
        EXPECT_TRUE(names.insert(NameOf(static_cast<IsaVariant>(variant))).second) << variant;
    EXPECT_STREQ(NameOf(IsaVariantCount), "");
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
