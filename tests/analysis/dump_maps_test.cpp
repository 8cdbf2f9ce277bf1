// The tool as a user sees it: exit codes, files, and messages that name what is wrong.

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/wait.h>

#include <gtest/gtest.h>

#include "test_pictures.h"

namespace vistaTrim {
namespace {

namespace fs = std::filesystem;

class DumpMaps : public testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = (fs::temp_directory_path() / "dump_maps_XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        Folder = pattern;
    }
    void TearDown() override
    {
        fs::remove_all(Folder);
    }

    // Returns the exit code and leaves the error output in Errors.
    int Run(const std::string& arguments)
    {
        const std::string log = (Folder / "log").string();
        const std::string line = std::string(DUMP_MAPS_PROGRAM) + " " + arguments + " 2> " + log;
        const int status = std::system(line.c_str());
        std::ifstream in(log);
        Errors.assign(std::istreambuf_iterator<char>(in), {});
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    std::string WritePicture(int32_t cols, int32_t rows)
    {
        const testPictures::Picture picture = testPictures::Blobs(cols, rows, 1);
        const std::string path = (Folder / "picture.ppm").string();
        std::ofstream out(path, std::ios::binary);
        out << "P6\n" << cols << " " << rows << "\n255\n";
        out.write(reinterpret_cast<const char*>(picture.Bytes.data()),
                  std::streamsize(picture.Bytes.size()));
        return path;
    }

    fs::path Folder;
    std::string Errors;
};

TEST_F(DumpMaps, WritesEveryMapAndThePicture)
{
    const std::string picture = WritePicture(320, 200); // enlarged to 640
    const fs::path maps = Folder / "new" / "maps";
    EXPECT_EQ(Run(picture + " " + maps.string()), 0) << Errors;
    EXPECT_EQ(Errors, "");
    for (const char* name :
         {"input", "ContrastMap", "SaliencyMap", "ContrastMask", "ColorContrastMap", "PeakMap",
          "EdgeMap", "SideMapTop", "SideMapBottom", "SideMapLeft", "SideMapRight"}) {
        const fs::path file = maps / (std::string(name) + ".png");
        ASSERT_TRUE(fs::exists(file)) << name;
        // Bytes 16 to 23 of a PNG are its width and height, the most significant first.
        std::ifstream in(file, std::ios::binary);
        std::string head(24, '\0');
        in.read(head.data(), 24);
        EXPECT_EQ(head.substr(16), std::string("\0\0\x02\x80\0\0\x01\x90", 8)) << name;
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(maps), {}), 11);
}

TEST_F(DumpMaps, NamesTheFileThatIsMissing)
{
    EXPECT_EQ(Run("/no/such/picture.jpg " + Folder.string()), 1);
    EXPECT_EQ(Errors, "dump_maps: /no/such/picture.jpg: no such file\n");
}

TEST_F(DumpMaps, NamesTheFileThatIsNotAPicture)
{
    const std::string text = (Folder / "text.jpg").string();
    std::ofstream(text) << "no picture\n";
    EXPECT_EQ(Run(text + " " + Folder.string()), 1);
    EXPECT_EQ(Errors.find("dump_maps: " + text + ": cannot be read: "), 0u) << Errors;
}

TEST_F(DumpMaps, NamesTheFolderThatIsAFile)
{
    const std::string picture = WritePicture(64, 48);
    EXPECT_EQ(Run(picture + " " + picture), 1);
    EXPECT_EQ(Errors.find("dump_maps: " + picture + ": "), 0u) << Errors;
}

TEST_F(DumpMaps, NamesTheWrongOption)
{
    EXPECT_NE(Run(""), 0);
    EXPECT_NE(Errors.find("picture"), std::string::npos) << Errors;
    EXPECT_NE(Run("a b --no-such-option"), 0);
    EXPECT_NE(Errors.find("--no-such-option"), std::string::npos) << Errors;
}

} // namespace
} // namespace vistaTrim
