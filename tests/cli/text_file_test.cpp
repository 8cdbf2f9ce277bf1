// Text files that users name: read whole, or reported with the reason.
#include "options/text_file.h"

#include <cstdio>
#include <fstream>
#include <functional>

#include <gtest/gtest.h>

#include "options/option_files.h"
#include "options/program_error.h"

namespace vistaTrim::cli {
namespace {

std::string FaultOf(const std::string& file)
{
    try {
        ReadTextFile(file);
    } catch (const ProgramError& error) {
        return error.what();
    }
    return "";
}

TEST(TextFile, IsReadWhole)
{
    const std::string file = testing::TempDir() + "vistatrim_text_file_test.txt";
    std::string text = "first\r\nsecond\n\n";
    text += '\0';
    text += std::string(200000, 'x') + "no line feed at the end";
    std::ofstream(file, std::ios::binary) << text;
    EXPECT_EQ(ReadTextFile(file), text);
    EXPECT_EQ(FaultOfFile(file), "");
    std::remove(file.c_str());
    EXPECT_EQ(ReadTextFile("/dev/null"), "");
}

TEST(TextFile, AFaultNamesTheFileAndTheReason)
{
    EXPECT_EQ(FaultOf("no/such file"), "cannot read no/such file: No such file or directory");
    EXPECT_EQ(FaultOf("no\nsuch"), "cannot read $'no\\nsuch': No such file or directory");
    EXPECT_EQ(FaultOf("/"), "/ is a folder, not a file");
    for (const char* file : {"no/such file", "/"})
        EXPECT_EQ(FaultOfFile(file), FaultOf(file));
    // It opens, but the memory at address 0 cannot be read.
    EXPECT_EQ(FaultOf("/proc/self/mem"), "cannot read /proc/self/mem: Input/output error");
}

TEST(OptionFile, AFaultNamesTheOptionToo)
{
    const auto faultOf = [](const std::function<void(const char*, const char*)>& read) {
        try {
            read("--list", "none");
        } catch (const OptionFileError& error) {
            return std::string(error.what());
        }
        return std::string();
    };
    const std::string fault = "--list: cannot read none: No such file or directory";
    EXPECT_EQ(faultOf(CheckOptionFile), fault);
    EXPECT_EQ(faultOf(ReadOptionFile), fault);
}

} // namespace
} // namespace vistaTrim::cli
