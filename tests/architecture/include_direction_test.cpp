// Checks that includes follow docs/include_rules.tsv. The direction lets each room be read without
// those above it.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

namespace fs = std::filesystem;

const fs::path kRoot = VISTATRIM_SOURCE_DIR;

// Headers are included relative to one of these, or to the including file's own folder.
constexpr const char* kIncludeFolders[] = {
    "include", "photo/include", "src", "photo", "cli", "tests", "tools", "benchmarks", "fuzzers"};

struct Room {
    std::string Folder;
    std::set<std::string> May;
    std::string MayText; // as written
    std::string Holds;
};

std::vector<std::string> LinesOf(const fs::path& file)
{
    std::vector<std::string> lines;
    std::ifstream stream(file);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

std::vector<Room> ReadRooms()
{
    std::vector<Room> rooms;
    for (const std::string& line : LinesOf(kRoot / "docs/include_rules.tsv")) {
        if (line.empty() || line[0] == '#')
            continue;
        std::istringstream cells(line);
        Room room;
        std::getline(cells, room.Folder, '\t');
        std::getline(cells, room.MayText, '\t');
        std::getline(cells, room.Holds, '\t');
        std::istringstream names(room.MayText);
        for (std::string name; names >> name;)
            if (name != "-")
                room.May.insert(name);
        rooms.push_back(room);
    }
    return rooms;
}

const std::vector<Room>& Rooms()
{
    static const std::vector<Room> rooms = ReadRooms();
    return rooms;
}

// The innermost room that holds the path, relative to the root; null if none does.
const Room* RoomAmong(const std::vector<Room>& rooms, const std::string& path)
{
    const Room* innermost = nullptr;
    for (const Room& room : rooms)
        if (path.compare(0, room.Folder.size() + 1, room.Folder + "/") == 0 &&
            (innermost == nullptr || room.Folder.size() > innermost->Folder.size()))
            innermost = &room;
    return innermost;
}

const Room* RoomOf(const std::string& path)
{
    return RoomAmong(Rooms(), path);
}

// "<vips/>" covers every header in its folder, "<cblas.h>" only itself.
bool Covers(const std::string& library, const std::string& header)
{
    const std::string name = library.substr(1, library.size() - 2);
    return name.back() == '/' ? header.compare(0, name.size(), name) == 0 : header == name;
}

bool MayIncludeLibrary(const Room& room, const std::string& header)
{
    bool isNamed = false;
    for (const Room& other : Rooms())
        for (const std::string& name : other.May)
            isNamed = isNamed || (name[0] == '<' && Covers(name, header));
    return !isNamed || std::any_of(room.May.begin(), room.May.end(), [&](const std::string& name) {
        return name[0] == '<' && Covers(name, header);
    });
}

// The header's path relative to the root, empty if there is no such header. A generated header
// belongs to its template's folder.
std::string Resolved(const std::string& includer, const std::string& header)
{
    std::vector<fs::path> folders = {fs::path(includer).parent_path()};
    folders.insert(folders.end(), std::begin(kIncludeFolders), std::end(kIncludeFolders));
    for (const fs::path& folder : folders) {
        const std::string path = (folder / header).lexically_normal().string();
        if (fs::exists(kRoot / path) || fs::exists(kRoot / (path + ".in")))
            return path;
    }
    return "";
}

// True if the file may include the quoted header.
bool MayInclude(const std::string& includer, const std::string& header)
{
    const std::string path = Resolved(includer, header);
    const Room* const from = RoomOf(includer);
    if (path.empty() || from == nullptr)
        return false;
    const Room* const to = RoomOf(path);
    const std::string room = to != nullptr ? to->Folder : path.substr(0, path.find('/'));
    return room == from->Folder || from->May.count(room) != 0 || from->May.count(path) != 0;
}

struct Include {
    std::string Header;
    bool IsQuoted = false;
};

// The header that a line includes, empty if it includes none.
Include IncludeOf(const std::string& line)
{
    const char* const blank = " \t";
    size_t at = line.find_first_not_of(blank);
    if (at == std::string::npos || line[at] != '#')
        return {};
    at = line.find_first_not_of(blank, at + 1);
    if (at == std::string::npos || line.compare(at, 7, "include") != 0)
        return {};
    at = line.find_first_not_of(blank, at + 7);
    if (at == std::string::npos || (line[at] != '"' && line[at] != '<'))
        return {};
    const char end = line[at] == '"' ? '"' : '>';
    return {line.substr(at + 1, line.find(end, at + 1) - at - 1), end == '"'};
}

std::vector<Include> IncludesOf(const fs::path& file)
{
    std::vector<Include> includes;
    for (const std::string& line : LinesOf(file)) {
        const Include include = IncludeOf(line);
        if (!include.Header.empty())
            includes.push_back(include);
    }
    return includes;
}

bool IsSource(const fs::path& file)
{
    const std::string extension = file.extension().string();
    return extension == ".h" || extension == ".cpp" || extension == ".inc";
}

// Sources and headers under a folder, relative to the root.
std::vector<std::string> SourcesUnder(const std::string& folder)
{
    std::vector<std::string> sources;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(kRoot / folder))
        if (IsSource(entry.path()))
            sources.push_back(entry.path().lexically_relative(kRoot).string());
    return sources;
}

// Every top-level folder that may hold sources, except builds and tests.
std::vector<std::string> TopFolders()
{
    std::vector<std::string> folders;
    for (const fs::directory_entry& entry : fs::directory_iterator(kRoot)) {
        const std::string name = entry.path().filename().string();
        if (entry.is_directory() && name[0] != '.' && name != "build" && name != "tests" &&
            name != "out" && name != "shared")
            folders.push_back(name);
    }
    return folders;
}

TEST(IncludeDirection, EveryIncludePointsWhereTheTableAllows)
{
    for (const std::string& folder : TopFolders())
        for (const std::string& source : SourcesUnder(folder)) {
            const Room* const room = RoomOf(source);
            ASSERT_NE(room, nullptr) << source << " is in no room of the table";
            for (const Include& include : IncludesOf(kRoot / source))
                EXPECT_TRUE(include.IsQuoted ? MayInclude(source, include.Header)
                                             : MayIncludeLibrary(*room, include.Header))
                    << source << " includes " << include.Header;
        }
}

TEST(IncludeDirection, EveryRoomOfTheTableHoldsSources)
{
    EXPECT_GT(Rooms().size(), 15U);
    for (const Room& room : Rooms()) {
        ASSERT_TRUE(fs::is_directory(kRoot / room.Folder)) << room.Folder;
        EXPECT_FALSE(SourcesUnder(room.Folder).empty()) << room.Folder;
        EXPECT_FALSE(room.Holds.empty()) << room.Folder;
        for (const std::string& name : room.May)
            EXPECT_TRUE(name[0] == '<' || fs::exists(kRoot / name)) << room.Folder << ": " << name;
    }
}

// True if two rooms may include each other, directly or through others. A header stands for its
// room.
bool HasCycle(const std::vector<Room>& rooms)
{
    std::set<const Room*> settled;
    for (size_t round = 0; round < rooms.size(); ++round)
        for (const Room& room : rooms)
            if (std::all_of(room.May.begin(), room.May.end(), [&](const std::string& name) {
                    const Room* const to = RoomAmong(rooms, name + "/");
                    return to == nullptr || settled.count(to) != 0;
                }))
                settled.insert(&room);
    return settled.size() != rooms.size();
}

TEST(IncludeDirection, TableHasNoCycle)
{
    EXPECT_FALSE(HasCycle(Rooms()));
}

TEST(IncludeDirection, CyclesAreFoundThroughRoomsAndThroughHeaders)
{
    const auto row = [](const char* folder, const std::set<std::string>& may) {
        return Room{folder, may, "", ""};
    };
    EXPECT_FALSE(HasCycle({row("a", {"b"}), row("b", {"c", "<x.h>", "tests"}), row("c", {})}));
    EXPECT_TRUE(HasCycle({row("a", {"b"}), row("b", {"c"}), row("c", {"a"})}));
    EXPECT_FALSE(HasCycle({row("a", {"b/x.h"}), row("b", {})}));
    EXPECT_TRUE(HasCycle({row("a", {"b/x.h"}), row("b", {"a"})}));
    EXPECT_TRUE(HasCycle({row("a", {"b/x.h"}), row("b", {"a/y.h"})}));
}

TEST(IncludeDirection, AllowsDownwardIncludesAndRejectsUpwardOnes)
{
    EXPECT_TRUE(MayInclude("src/public/x.cpp", "scoring/crop_analyzer.h"));
    EXPECT_TRUE(MayInclude("src/scoring/x.cpp", "analysis/picture_analysis.h"));
    EXPECT_TRUE(MayInclude("src/analysis/x.cpp", "analysis/picture_analysis.h"));
    EXPECT_FALSE(MayInclude("src/analysis/x.cpp", "candidates/crop_grid.h"));
    EXPECT_TRUE(MayInclude("photo/suggest/x.cpp", "public/analysed_picture.h"));
    EXPECT_TRUE(MayInclude("photo/suggest/x.cpp", "vistaTrimPhoto/analysis.h"));
    EXPECT_TRUE(MayInclude("cli/report/report_page.cpp", "report/page_assets.h"));
    EXPECT_TRUE(MayInclude("tools/x.cpp", "public/analysed_picture.h"));
    EXPECT_FALSE(MayInclude("src/analysis/x.cpp", "scoring/selection.h"));
    EXPECT_FALSE(MayInclude("src/numeric/x.cpp", "vistaTrim/records.h"));
    EXPECT_FALSE(MayInclude("include/vistaTrim/x.h", "numeric/matrix.h"));
    EXPECT_FALSE(MayInclude("photo/include/vistaTrimPhoto/x.h", "vistaTrim/records.h"));
    EXPECT_FALSE(MayInclude("photo/suggest/x.cpp", "public/vista_trim.h"));
    EXPECT_FALSE(MayInclude("photo/picture/x.cpp", "suggest/way_back.h"));
    EXPECT_FALSE(MayInclude("cli/commands/x.cpp", "picture/save.h"));
    EXPECT_FALSE(MayInclude("cli/commands/x.cpp", "vistaTrim/vistaTrim.h"));
    EXPECT_FALSE(MayInclude("cli/batch/x.cpp", "output/result_text.h"));
    EXPECT_FALSE(MayInclude("cli/batch/x.cpp", "no_such_header.h"));
}

TEST(IncludeDirection, LibrariesStayInTheRoomsThatNameThem)
{
    const auto may = [](const char* folder, const char* header) {
        return MayIncludeLibrary(*RoomOf(std::string(folder) + "/x.cpp"), header);
    };
    EXPECT_TRUE(may("photo/picture", "vips/vips8"));
    EXPECT_TRUE(may("cli/options", "CLI/CLI.hpp"));
    EXPECT_TRUE(may("photo/suggest", "vector"));
    EXPECT_TRUE(may("cli/batch", "sys/stat.h"));
    EXPECT_FALSE(may("photo/suggest", "vips/vips8"));
    EXPECT_FALSE(may("photo/include", "vips/vips8"));
    EXPECT_FALSE(may("cli/report", "vips/vips8"));
    EXPECT_FALSE(may("photo/suggest", "nlohmann/json.hpp"));
    EXPECT_FALSE(may("photo/suggest", "cblas.h"));
}

TEST(IncludeDirection, IncludeLinesAreParsed)
{
    EXPECT_EQ(IncludeOf("#include \"a/b.h\"").Header, "a/b.h");
    EXPECT_TRUE(IncludeOf("  #  include \"a/b.h\" // why").IsQuoted);
    EXPECT_EQ(IncludeOf("#include <a/b.h>").Header, "a/b.h");
    EXPECT_FALSE(IncludeOf("#include <vector>").IsQuoted);
    EXPECT_EQ(IncludeOf("// #include \"a/b.h\"").Header, "");
    EXPECT_EQ(IncludeOf("#endif").Header, "");
    EXPECT_EQ(IncludeOf("").Header, "");
}

// The page shows the table, row for row.
TEST(IncludeDirection, ArchitecturePageShowsTheTableUnchanged)
{
    const std::vector<std::string> page = LinesOf(kRoot / "docs/architecture.md");
    const std::string heading = "| room | holds | may include |";
    auto line = std::find(page.begin(), page.end(), heading);
    ASSERT_NE(line, page.end());
    line += 2;
    const auto coded = [](const std::string& names) {
        std::istringstream words(names);
        std::string text;
        for (std::string word; words >> word;)
            text += (text.empty() ? "" : ", ") + (word == "-" ? word : "`" + word + "`");
        return text;
    };
    for (const Room& room : Rooms()) {
        ASSERT_NE(line, page.end());
        EXPECT_EQ(*line++, "| " + coded(room.Folder) + " | " + room.Holds + " | " +
                               coded(room.MayText) + " |");
    }
    EXPECT_TRUE(line == page.end() || line->empty() || (*line)[0] != '|') << *line;
}

// The headers of the engine and of the photograph library.
TEST(PublicHeaders, AreEachCompiledAlone)
{
    const std::string alone = VISTATRIM_HEADERS_ALONE;
    for (const char* folder : {"include/vistaTrim", "photo/include/vistaTrimPhoto"})
        for (const fs::directory_entry& entry : fs::directory_iterator(kRoot / folder)) {
            const std::string name = entry.path().stem().string();
            EXPECT_NE(alone.find(" " + name + " "), std::string::npos) << folder << " " << name;
        }
}

TEST(PublicHeaders, OfTheEngineAreInTheUmbrellaHeaderOnce)
{
    const fs::path directory = kRoot / "include" / "vistaTrim";
    std::vector<std::string> umbrella;
    for (const Include& include : IncludesOf(directory / "vistaTrim.h"))
        umbrella.push_back(include.Header);
    for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
        const std::string name = entry.path().stem().string();
        const long times = std::count(umbrella.begin(), umbrella.end(), "vistaTrim/" + name + ".h");
        EXPECT_EQ(times, name == "vistaTrim" ? 0 : 1) << name;
    }
}

} // namespace
