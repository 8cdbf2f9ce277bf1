#include "batch/photo_list.h"

#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>

#include "photo/sample_pictures.h"

namespace vistaTrim::cli {
namespace {

using photo::TempFolder;
using photo::WriteText;
using Words = std::vector<std::string>;

std::vector<ListedPhoto> Listed(const Words& names, const ListOptions& options = {},
                                const std::string& input = "")
{
    std::istringstream stream(input);
    return ListPhotos(names, options, stream).Photos;
}

Words Paths(const std::vector<ListedPhoto>& photos)
{
    Words paths;
    for (const ListedPhoto& photo : photos) {
        EXPECT_EQ(photo.Error, "");
        paths.push_back(photo.Path);
    }
    return paths;
}

class PhotoNames : public testing::Test {
protected:
    void Put(const std::string& name)
    {
        const std::filesystem::path path = Folder.Path(name);
        std::filesystem::create_directories(path.parent_path());
        WriteText(path.string(), "");
    }

    TempFolder Folder;
};

TEST_F(PhotoNames, AFolderGivesItsPhotographsByNameWhateverTheCaseOfTheEnding)
{
    const Words endings = {"jpg",  "jpeg", "jpe",  "png", "webp", "tif", "tiff",
                           "heic", "heif", "avif", "gif", "jxl",  "ppm", "pgm"};
    Words expected;
    for (size_t i = 0; i < endings.size(); ++i) {
        const std::string name = std::string(1, static_cast<char>('a' + i)) + "." + endings[i];
        Put("in/" + name);
        expected.push_back(Folder.Path("in/" + name));
    }
    Put("in/z.JPG");
    expected.push_back(Folder.Path("in/z.JPG"));
    for (const char* other : {"in/.hidden.jpg", "in/a.txt", "in/a.jpg.bak", "in/jpg"})
        Put(other);
    EXPECT_EQ(Paths(Listed({Folder.Path("in")})), expected);
    // Skipped files are counted, except hidden ones.
    std::istringstream none;
    EXPECT_EQ(ListPhotos({Folder.Path("in")}, {}, none).Skipped, 3U);
}

TEST_F(PhotoNames, RecursiveDescendsAndRecordsTheSubfolder)
{
    Put("in/b.jpg");
    Put("in/a/c.jpg");
    Put("in/a/deep/d.jpg");
    Put("in/.hidden/e.jpg");
    std::filesystem::create_directory_symlink(Folder.Path("in"), Folder.Path("in/a/loop"));
    ListOptions options;
    EXPECT_EQ(Paths(Listed({Folder.Path("in")}, options)), (Words{Folder.Path("in/b.jpg")}));
    options.Recursive = true;
    const std::vector<ListedPhoto> photos = Listed({Folder.Path("in")}, options);
    EXPECT_EQ(Paths(photos), (Words{Folder.Path("in/a/c.jpg"), Folder.Path("in/a/deep/d.jpg"),
                                    Folder.Path("in/b.jpg")}));
    EXPECT_EQ(photos[0].Inside, "a");
    EXPECT_EQ(photos[1].Inside, "a/deep");
    EXPECT_EQ(photos[2].Inside, "");
}

TEST_F(PhotoNames, ANamedFileIsTakenAsItIs)
{
    const std::vector<ListedPhoto> photos = Listed({"no/such.txt", Folder.Path("none.jpg")});
    EXPECT_EQ(Paths(photos), (Words{"no/such.txt", Folder.Path("none.jpg")}));
    EXPECT_EQ(photos[0].Inside, "");
    EXPECT_EQ(photos[0].Bytes, nullptr);
}

TEST_F(PhotoNames, AFolderWithoutPhotographsSaysSo)
{
    std::filesystem::create_directories(Folder.Path("in/below"));
    ListOptions options;
    std::vector<ListedPhoto> photos = Listed({Folder.Path("in"), "a.jpg"}, options);
    ASSERT_EQ(photos.size(), 2U);
    EXPECT_EQ(photos[0].Path, Folder.Path("in"));
    EXPECT_EQ(photos[0].Error, "no photograph in this folder; --recursive searches its subfolders");
    EXPECT_EQ(photos[1].Error, "");
    options.Recursive = true;
    photos = Listed({Folder.Path("in")}, options);
    ASSERT_EQ(photos.size(), 1U);
    EXPECT_EQ(photos[0].Error, "no photograph in this folder or its subfolders");
}

TEST_F(PhotoNames, StandardInputIsAPhotographOrAList)
{
    const std::string bytes("\xFF\xD8\0\n", 4);
    const std::vector<ListedPhoto> photo = Listed({"-"}, {}, bytes);
    ASSERT_EQ(photo.size(), 1U);
    EXPECT_EQ(photo[0].Path, "-");
    ASSERT_NE(photo[0].Bytes, nullptr);
    EXPECT_EQ(*photo[0].Bytes, bytes);
    const std::vector<ListedPhoto> nothing = Listed({"-"});
    ASSERT_EQ(nothing.size(), 1U);
    EXPECT_EQ(nothing[0].Error, "there is nothing to read");
    EXPECT_EQ(nothing[0].Bytes, nullptr);

    ListOptions options;
    options.FilesFrom = {"-"};
    EXPECT_EQ(Paths(Listed({"x.jpg"}, options, "a.jpg\n\nb c.jpg\r\n-")),
              (Words{"x.jpg", "a.jpg", "b c.jpg", "-"}));
    options.NullSeparated = true;
    EXPECT_EQ(Paths(Listed({}, options, std::string("a\nb.jpg\0c.jpg\r\0", 15))),
              (Words{"a\nb.jpg", "c.jpg\r"}));
}

TEST_F(PhotoNames, AListIsReadAfterItsByteOrderMark)
{
    WriteText(Folder.Path("list"), "\xEF\xBB\xBF"
                                   "a.jpg\n\xEF\xBB\xBF"
                                   "b.jpg\n");
    ListOptions options;
    options.FilesFrom = {Folder.Path("list")};
    EXPECT_EQ(Paths(Listed({}, options)), (Words{"a.jpg", "\xEF\xBB\xBF"
                                                          "b.jpg"}));
}

TEST_F(PhotoNames, AnEmptyOrMissingListIsNamed)
{
    WriteText(Folder.Path("list"), "\n\r\n");
    ListOptions options;
    options.FilesFrom = {Folder.Path("list"), Folder.Path("none"), Folder.Path("")};
    const std::vector<ListedPhoto> photos = Listed({}, options);
    ASSERT_EQ(photos.size(), 3U);
    EXPECT_EQ(photos[0].Error, "the list names no photograph");
    EXPECT_EQ(photos[1].Path, Folder.Path("none"));
    EXPECT_EQ(photos[1].Error, "cannot read the list: No such file or directory");
    EXPECT_EQ(photos[2].Error, "is a folder, not a list of names");
}

TEST(ShownName, OfStandardInputIsInWords)
{
    EXPECT_EQ(ShownName("-"), "standard input");
    EXPECT_EQ(ShownName("./-"), "./-");
}

} // namespace
} // namespace vistaTrim::cli
