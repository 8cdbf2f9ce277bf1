// Who may include whom. The direction keeps each module readable without those above it.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

// Of each module under src/: the modules whose headers it may include besides its own.
const std::map<std::string, std::set<std::string>> kAllowed = {
    {"public", {"scoring", "candidates", "analysis", "numeric"}},
    {"scoring", {"candidates", "analysis", "numeric"}},
    {"analysis", {"numeric"}},
    {"candidates", {"numeric"}},
    {"numeric", {}},
};

// Single headers that reach further down than their module may.
const std::map<std::string, std::set<std::string>> kAllowedHeaders = {
    // One analysis for many uses: the one internal header that serves those outside.
    {"host", {"public/analysed_picture.h", "analysis/map_access.h"}},
    {"tools", {"public/analysed_picture.h"}},
    {"bindings", {"public/analysed_picture.h"}},
};

bool IsModule(const std::string& name)
{
    return kAllowed.count(name) != 0;
}

// May a file of `area` (a module of src/, "include", or a directory beside src/) write this?
bool MayInclude(const std::string& area, const std::string& header)
{
    const std::string owner = header.substr(0, header.find('/'));
    if (owner == "vistaTrim")
        return area != "numeric"; // the foundation knows nothing of the interface
    if (header.find('/') == std::string::npos || !IsModule(owner))
        return area != "include"; // a file's own neighbour, or a library's header
    if (owner == area)
        return true;
    const auto headers = kAllowedHeaders.find(area);
    if (headers != kAllowedHeaders.end() && headers->second.count(header) != 0)
        return true;
    const auto modules = kAllowed.find(area);
    return modules != kAllowed.end() && modules->second.count(owner) != 0;
}

// The header that a line includes in quotes, empty if it includes none so.
std::string QuotedInclude(const std::string& line)
{
    const char* const blank = " \t";
    size_t at = line.find_first_not_of(blank);
    if (at == std::string::npos || line[at] != '#')
        return std::string();
    at = line.find_first_not_of(blank, at + 1);
    if (at == std::string::npos || line.compare(at, 7, "include") != 0)
        return std::string();
    at = line.find_first_not_of(blank, at + 7);
    if (at == std::string::npos || line[at] != '"')
        return std::string();
    return line.substr(at + 1, line.find('"', at + 1) - at - 1);
}

std::vector<std::string> QuotedIncludes(const fs::path& file)
{
    std::vector<std::string> headers;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);) {
        const std::string header = QuotedInclude(line);
        if (!header.empty())
            headers.push_back(header);
    }
    return headers;
}

// Files looked at. Every include that points the wrong way is a failure.
int CheckTree(const fs::path& root, const std::string& area)
{
    int files = 0;
    if (!fs::exists(root))
        return files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
        const std::string extension = entry.path().extension().string();
        if (extension != ".h" && extension != ".cpp" && extension != ".inc")
            continue;
        ++files;
        for (const std::string& header : QuotedIncludes(entry.path()))
            EXPECT_TRUE(MayInclude(area, header)) << entry.path() << " includes " << header;
    }
    return files;
}

TEST(IncludeDirection, RuleTellsDownFromUp)
{
    EXPECT_TRUE(MayInclude("public", "scoring/crop_analyzer.h"));
    EXPECT_TRUE(MayInclude("scoring", "analysis/picture_analysis.h"));
    EXPECT_TRUE(MayInclude("tools", "public/analysed_picture.h"));
    EXPECT_TRUE(MayInclude("host", "vistaTrim/vistaTrim.h"));
    EXPECT_TRUE(MayInclude("host", "photo.h"));
    EXPECT_TRUE(MayInclude("public", "numeric/throw_text.h"));
    EXPECT_FALSE(MayInclude("analysis", "candidates/crop_grid.h"));
    EXPECT_FALSE(MayInclude("analysis", "scoring/selection.h"));
    EXPECT_FALSE(MayInclude("candidates", "scoring/crop_analyzer.h"));
    EXPECT_FALSE(MayInclude("numeric", "analysis/working_rect.h"));
    EXPECT_FALSE(MayInclude("numeric", "vistaTrim/records.h"));
    EXPECT_TRUE(MayInclude("host", "public/analysed_picture.h"));
    EXPECT_FALSE(MayInclude("scoring", "public/vista_trim.h"));
    EXPECT_FALSE(MayInclude("host", "analysis/picture_analysis.h"));
    EXPECT_FALSE(MayInclude("bindings", "public/vista_trim.h"));
    EXPECT_FALSE(MayInclude("tools", "scoring/crop_analyzer.h"));
    EXPECT_FALSE(MayInclude("include", "numeric/matrix.h"));
    EXPECT_FALSE(MayInclude("include", "neighbour.h"));
}

TEST(IncludeDirection, OnlyQuotedIncludesCount)
{
    EXPECT_EQ(QuotedInclude("#include \"a/b.h\""), "a/b.h");
    EXPECT_EQ(QuotedInclude("  #  include \"a/b.h\" // why"), "a/b.h");
    EXPECT_EQ(QuotedInclude("#include <vector>"), "");
    EXPECT_EQ(QuotedInclude("// #include \"a/b.h\""), "");
    EXPECT_EQ(QuotedInclude("#endif"), "");
    EXPECT_EQ(QuotedInclude(""), "");
}

TEST(IncludeDirection, EveryModuleLooksDownOnly)
{
    for (const auto& module : kAllowed)
        EXPECT_GT(CheckTree(fs::path(VISTATRIM_SOURCE_DIR) / "src" / module.first, module.first), 0)
            << module.first;
}

TEST(IncludeDirection, PublicHeadersNeedOnlyEachOther)
{
    EXPECT_GT(CheckTree(fs::path(VISTATRIM_SOURCE_DIR) / "include", "include"), 0);
}

TEST(PublicHeaders, EachIsCompiledAloneAndPartOfTheUmbrella)
{
    const fs::path directory = fs::path(VISTATRIM_SOURCE_DIR) / "include" / "vistaTrim";
    const std::string alone = VISTATRIM_HEADERS_ALONE;
    const std::vector<std::string> umbrella = QuotedIncludes(directory / "vistaTrim.h");
    for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
        const std::string name = entry.path().stem().string();
        EXPECT_NE(alone.find(" " + name + " "), std::string::npos) << name;
        const long times = std::count(umbrella.begin(), umbrella.end(), "vistaTrim/" + name + ".h");
        EXPECT_EQ(times, name == "vistaTrim" ? 0 : 1) << name;
    }
}

TEST(IncludeDirection, HostToolsAndBindingsSeeThePublicHeadersAndTheMaps)
{
    for (const char* area : {"host", "tools", "bindings"})
        CheckTree(fs::path(VISTATRIM_SOURCE_DIR) / area, area);
}

} // namespace
