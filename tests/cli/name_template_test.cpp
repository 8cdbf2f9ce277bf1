#include "options/name_template.h"

#include <stdexcept>

#include <gtest/gtest.h>

namespace vistaTrim::cli {
namespace {

const NameFields kFields = {"holiday", "heic", "og-image", "40x21", "3", "1200", "630"};

std::string Expanded(const std::string& text)
{
    return NameTemplate(text).Expand(kFields);
}

std::string FaultOf(const std::string& text)
{
    try {
        const NameTemplate made(text);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "none";
}

TEST(NameTemplate, PutsEachFieldInItsPlace)
{
    EXPECT_EQ(Expanded("{stem}"), "holiday");
    EXPECT_EQ(Expanded("{extension}"), "heic");
    EXPECT_EQ(Expanded("{shape}"), "og-image");
    EXPECT_EQ(Expanded("{ratio}"), "40x21");
    EXPECT_EQ(Expanded("{rank}"), "3");
    EXPECT_EQ(Expanded("{width}"), "1200");
    EXPECT_EQ(Expanded("{height}"), "630");
    EXPECT_EQ(Expanded("a{stem}-{rank}{rank}_z"), "aholiday-33_z");
    EXPECT_EQ(Expanded("plain"), "plain");
}

TEST(NameTemplate, DoubledBracesStandForOne)
{
    EXPECT_EQ(Expanded("{{{rank}}}"), "{3}");
    EXPECT_EQ(Expanded("{{rank}}"), "{rank}");
    EXPECT_EQ(Expanded("a}}b{{c"), "a}b{c");
}

TEST(NameTemplate, ExpandsNoFieldInAField)
{
    NameFields fields = kFields;
    fields.Stem = "{rank}";
    EXPECT_EQ(NameTemplate("{stem}").Expand(fields), "{rank}");
}

TEST(NameTemplate, ASlashBeginsAFolder)
{
    EXPECT_EQ(Expanded("{ratio}/{stem}"), "40x21/holiday");
    EXPECT_EQ(Expanded("a.b/.c/...d"), "a.b/.c/...d");
}

TEST(NameTemplate, BracesWithoutAFieldAreFaults)
{
    EXPECT_EQ(
        FaultOf("{stem}-{colour}"),
        "there is no field {colour}; there are {stem}, {extension}, {shape}, {ratio}, {rank}, "
        "{width} and {height}");
    EXPECT_NE(FaultOf("{}"), "none");
    EXPECT_NE(FaultOf("{Stem}"), "none");
    EXPECT_EQ(FaultOf("{stem"), "a { has no }");
    EXPECT_EQ(FaultOf("stem}"), "a } has no {");
    EXPECT_EQ(FaultOf("{stem}}"), "a } has no {");
}

TEST(NameTemplate, NeverLeavesTheFolder)
{
    EXPECT_EQ(FaultOf("/tmp/{stem}"), "a name must not begin with a slash");
    EXPECT_EQ(FaultOf(""), "a name is missing");
    EXPECT_EQ(FaultOf("{stem}/"), "a name is missing");
    for (const char* text :
         {"..", "../{stem}", "a/../{stem}", "a/./{stem}", "./{stem}", "{stem}/.."})
        EXPECT_EQ(FaultOf(text), "a name must not contain . or .. as a folder") << text;
}

} // namespace
} // namespace vistaTrim::cli
