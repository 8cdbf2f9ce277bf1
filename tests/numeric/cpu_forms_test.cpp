#include "numeric/cpu_forms.h"

#include <gtest/gtest.h>

namespace vistaTrim {
namespace {

TEST(CpuForms, PlainVariantIsAlwaysAvailable)
{
    EXPECT_TRUE(CpuFormAvailable(CpuFormPlain));
    EXPECT_TRUE(CpuFormAvailable(ActiveCpuForm()));
}

TEST(CpuForms, SelectingAnUnknownVariantGivesPlain)
{
    const CpuForm before = ActiveCpuForm();
    EXPECT_FALSE(CpuFormAvailable(CpuFormCount));
    SelectCpuForm(CpuFormCount);
    EXPECT_EQ(ActiveCpuForm(), CpuFormPlain);
    SelectCpuForm(before);
    EXPECT_EQ(ActiveCpuForm(), before);
}

} // namespace
} // namespace vistaTrim
