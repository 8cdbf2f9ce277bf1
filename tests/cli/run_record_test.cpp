// What counts as a record of the options of an earlier run.
#include "batch/run_record.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

#include <gtest/gtest.h>

#include "options/program_error.h"

namespace vistaTrim::cli {
namespace {

class RunRecordTest : public testing::Test {
protected:
    ~RunRecordTest() override
    {
        std::remove(Record.c_str());
    }

    bool IsRecord(const std::string& text)
    {
        std::ofstream(Record, std::ios::binary) << text;
        return RunRecord::OfFile(List, {{}, {{"--top", "5"}}}).CheckResumed();
    }

    const std::string Name = std::string("vistatrim_run_record_") +
                             testing::UnitTest::GetInstance()->current_test_info()->name();
    const std::string List = testing::TempDir() + Name;
    const std::string Record = testing::TempDir() + "." + Name + ".options";
};

TEST_F(RunRecordTest, OfTheSameOptionsIsAccepted)
{
    EXPECT_FALSE(RunRecord::OfFile(List, {}).CheckResumed()); // there is none
    EXPECT_TRUE(IsRecord(R"({"format": "vistatrim-options", "version": 1, "runs": []})"));
    EXPECT_TRUE(IsRecord(R"({"format": "vistatrim-options", "version": 1,
                             "runs": [{"names": [], "options": {"--top": "5"}}]})"));
    EXPECT_THROW(IsRecord(R"({"format": "vistatrim-options", "version": 1,
                              "runs": [{"names": [], "options": {"--top": "6"}}]})"),
                 ProgramError);
}

TEST_F(RunRecordTest, ReadsBackWhatItWrites)
{
    const std::vector<RecordedRun> runs = {
        {{"{stem}.jpg", "a \"b\"\n"}, {{"--top", "5"}, {"--strip", "given"}}}, {{}, {}}};
    const auto read = RecordedRuns(RecordText(runs));
    ASSERT_TRUE(read);
    ASSERT_EQ(read->size(), runs.size());
    for (size_t i = 0; i < runs.size(); ++i) {
        EXPECT_EQ((*read)[i].Names, runs[i].Names);
        EXPECT_EQ((*read)[i].Options, runs[i].Options);
    }
}

TEST_F(RunRecordTest, AnyOtherTextCountsAsNoRecord)
{
    for (const char* text :
         {"", "{", "[]", "5", R"({"runs": []})", R"({"format": 5})",
          R"({"format": ["vistatrim-options"], "runs": []})", R"({"format": null, "runs": []})",
          R"({"format": "other", "runs": []})", R"({"format": "vistatrim-options"})",
          R"({"format": "vistatrim-options", "runs": null})",
          R"({"format": "vistatrim-options", "runs": {}})",
          R"({"format": "vistatrim-options", "runs": [5]})",
          R"({"format": "vistatrim-options", "runs": [{"names": [5], "options": {}}]})",
          R"({"format": "vistatrim-options", "runs": [{"names": [], "options": {"--top": 5}}]})",
          R"({"format": "vistatrim-options", "runs": [{"names": []}]})"}) {
        SCOPED_TRACE(text);
        EXPECT_FALSE(IsRecord(text));
    }
}

// Taken for none, it would be replaced.
TEST_F(RunRecordTest, ThatCannotBeReadIsAFault)
{
    ASSERT_TRUE(std::filesystem::create_directory(Record));
    const RunRecord record = RunRecord::OfFile(List, {});
    EXPECT_THROW(record.CheckResumed(), ProgramError);
    EXPECT_THROW(record.Begin(false), ProgramError);
    EXPECT_TRUE(std::filesystem::is_directory(Record));
}

} // namespace
} // namespace vistaTrim::cli
