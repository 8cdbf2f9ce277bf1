// The tool as a user sees it, on a synthetic picture and tables whose answers are known.

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/wait.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace vistaTrim {
namespace {

namespace fs = std::filesystem;

// Areas of boxes here are integers below 2^24; a quotient of two is exact except for its last bits.
constexpr double kRounding = 1e-12;

class EvaluateCrops : public testing::Test {
protected:
    void SetUp() override
    {
        std::string pattern = (fs::temp_directory_path() / "evaluate_crops_XXXXXX").string();
        ASSERT_NE(mkdtemp(pattern.data()), nullptr);
        Folder = pattern;
        fs::create_directory(Folder / "photos");
        // One colour throughout.
        std::ofstream picture(Folder / "photos" / "flat.ppm", std::ios::binary);
        picture << "P6\n640 480\n255\n" << std::string(size_t{640} * 480 * 3, '\x60');
    }
    void TearDown() override
    {
        fs::remove_all(Folder);
    }

    std::string Write(const std::string& name, const std::string& text) const
    {
        const fs::path path = Folder / name;
        std::ofstream(path) << text;
        return path.string();
    }

    // The table of one chosen crop: x, y, w, h.
    void WriteChosen(const std::string& box) const
    {
        Write("boxes.tsv", "split\tfile\twidth\theight\tx\ty\tw\th\n"
                           "dev\tflat.ppm\t640\t480\t" +
                               box + "\n");
    }

    // A stand-in for vistatrim.
    std::string WriteProgram(const std::string& body) const
    {
        std::string path = Write("program.sh", "#!/bin/sh\n" + body + "\n");
        fs::permissions(path, fs::perms::owner_all);
        return path;
    }

    // Returns the exit code and leaves the error output in Errors and the figures in Figures.
    int Run(const std::string& program, const std::string& more = "")
    {
        const std::string line =
            std::string(EVALUATE_CROPS_PROGRAM) + " --photos " + (Folder / "photos").string() +
            " --boxes " + (Folder / "boxes.tsv").string() + " --program " + program +
            " --resamples 20 --json " + (Folder / "figures.json").string() + " " + more + " > " +
            (Folder / "out").string() + " 2> " + (Folder / "log").string();
        const int status = std::system(line.c_str());
        std::ifstream log(Folder / "log");
        Errors.assign(std::istreambuf_iterator<char>(log), {});
        std::ifstream figures(Folder / "figures.json");
        Figures = nlohmann::json::parse(figures, nullptr, false);
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

    double Value(const std::string& figure, const std::string& method) const
    {
        return Figures.at(figure).at(method).at("value");
    }

    fs::path Folder;
    std::string Errors;
    nlohmann::json Figures;
};

// The stand-in's crops. Without a ratio: one that covers half of the chosen box, then the box
// itself. With a ratio: one that covers three quarters of the box.
const char* const kKnownCrops = R"(echo "$@" >> "$(dirname "$0")/calls"
last=; ratio=
for word in "$@"; do
    [ "$last" = --aspect ] && ratio=$word
    last=$word
done
if [ -n "$ratio" ]; then
    echo "{\"file\":\"$last\",\"crops\":[{\"x\":0,\"y\":0,\"width\":300,\"height\":200}]}"
else
    echo "{\"file\":\"$last\",\"crops\":[{\"x\":0,\"y\":0,\"width\":200,\"height\":200},"\
"{\"x\":0,\"y\":0,\"width\":400,\"height\":200}]}"
fi)";

TEST_F(EvaluateCrops, MeasuresWhatTheProgramPrints)
{
    WriteChosen("0\t0\t400\t200");
    ASSERT_EQ(Run(WriteProgram(kKnownCrops)), 0) << Errors;

    EXPECT_NEAR(Value("IoU free, first", "vistatrim"), 0.5, kRounding);
    EXPECT_NEAR(Value("IoU free, best of 5", "vistatrim"), 1.0, kRounding);
    EXPECT_NEAR(Value("IoU at the chosen ratio", "vistatrim"), 0.75, kRounding);
    // The frame of 90 % is 576 x 432 from (32, 24).
    const double common = (400 - 32) * (200 - 24);
    EXPECT_NEAR(Value("IoU free, first", "centred frame of 90 %"),
                common / (576 * 432 + 400 * 200 - common), kRounding);
    // The largest crop of 2:1 is 640 x 320 from (0, 80).
    const double shared = 400 * (200 - 80);
    EXPECT_NEAR(Value("IoU at the chosen ratio", "largest centred crop"),
                shared / (640 * 320 + 400 * 200 - shared), kRounding);
    // libvips may place its 640 x 320 crop at any height, so they share 0 to 200 rows.
    EXPECT_LE(Value("IoU at the chosen ratio", "libvips attention crop"),
              400 * 200 / (640.0 * 320) + kRounding);
}

TEST_F(EvaluateCrops, RequestsTheChosenRatioWithFourDecimals)
{
    WriteChosen("10\t10\t400\t300");
    ASSERT_EQ(Run(WriteProgram(kKnownCrops), "--program-args '--faces off'"), 0) << Errors;

    std::ifstream calls(Folder / "calls");
    std::string free;
    std::string atRatio;
    std::getline(calls, free);
    std::getline(calls, atRatio);
    const std::string photo = (Folder / "photos" / "flat.ppm").string();
    EXPECT_EQ(free, "suggest --json --quiet --top 5 --jobs 1 --faces off -- " + photo);
    EXPECT_EQ(atRatio,
              "suggest --json --quiet --top 1 --jobs 1 --aspect 1.3333 --faces off -- " + photo);
}

TEST_F(EvaluateCrops, CountsFacesCutOrLost)
{
    WriteChosen("0\t0\t400\t200");
    // The stand-in's 300 x 200 crop holds the first face to the last pixel, cuts the second and
    // misses the third. The fourth reaches outside the picture: the crop holds all of it that is
    // inside, the centred square nothing.
    struct Case {
        const char* Face;
        double Ours, Centred;
    };
    for (const Case& c : {Case{"250\t150\t50\t50", 0, 0}, Case{"251\t150\t50\t50", 1, 0},
                          Case{"400\t400\t50\t50", 1, 0}, Case{"-20\t0\t40\t40", 0, 1}}) {
        SCOPED_TRACE(c.Face);
        const std::string list = Write("faces.tsv", std::string("flat.ppm\t") + c.Face + "\n");
        ASSERT_EQ(Run(WriteProgram(kKnownCrops), "--faces-list " + list), 0) << Errors;
        EXPECT_EQ(Value("faces cut or lost, 1:1", "vistatrim"), c.Ours);
        EXPECT_EQ(Value("faces cut or lost, 1:1", "largest centred crop"), c.Centred);
        EXPECT_EQ(Value("faces cut or lost, 1:1", "no crop holds them all"), 0);
        EXPECT_EQ(Value("faces cut or lost, all four ratios", "vistatrim"), c.Ours);
    }
}

TEST_F(EvaluateCrops, SaysWhereNoCropCanHoldTheFaces)
{
    WriteChosen("0\t0\t400\t200");
    // 500 pixels apart: too far for 1:1, 4:5 and 9:16, but not for 16:9.
    const std::string list =
        Write("faces.tsv", "flat.ppm\t20\t200\t40\t40\nflat.ppm\t520\t200\t40\t40\n");
    ASSERT_EQ(Run(WriteProgram(kKnownCrops), "--faces-list " + list), 0) << Errors;
    EXPECT_EQ(Value("faces cut or lost, 1:1", "no crop holds them all"), 1);
    EXPECT_EQ(Value("faces cut or lost, 16:9", "no crop holds them all"), 0);
    EXPECT_EQ(Value("faces cut or lost, all four ratios", "no crop holds them all"), 0.75);
}

// For a picture of one colour vistatrim suggests the largest crop: the whole picture at its own
// ratio.
TEST_F(EvaluateCrops, RunsVistatrimItself)
{
    WriteChosen("0\t0\t640\t480");
    ASSERT_EQ(Run(VISTATRIM_PROGRAM), 0) << Errors;
    EXPECT_EQ(Value("IoU at the chosen ratio", "largest centred crop"), 1);
    EXPECT_EQ(Value("IoU at the chosen ratio", "vistatrim"), 1);
}

TEST_F(EvaluateCrops, NamesTheProgramThatFails)
{
    WriteChosen("0\t0\t400\t200");
    EXPECT_EQ(Run("/no/such/program"), 1);
    EXPECT_EQ(Errors,
              "evaluate_crops: /no/such/program: cannot be started: No such file or directory\n");

    const std::string failing = WriteProgram("exit 3");
    EXPECT_EQ(Run(failing), 1);
    EXPECT_EQ(Errors, "evaluate_crops: " + failing + ": failed with exit status 3\n");

    const std::string killed = WriteProgram("kill -9 $$");
    EXPECT_EQ(Run(killed), 1);
    EXPECT_EQ(Errors, "evaluate_crops: " + killed + ": ended by signal 9\n");

    const std::string silent = WriteProgram("exit 0");
    EXPECT_EQ(Run(silent), 1);
    EXPECT_EQ(Errors, "evaluate_crops: " + silent + ": holds no line for flat.ppm\n");
}

TEST_F(EvaluateCrops, NamesTheFaultyLineOfTheFacesList)
{
    WriteChosen("0\t0\t400\t200");
    const std::string list = Write("faces.tsv", "flat.ppm\t1\t2\t3\t4\nflat.ppm\t1\t2\t3\n");
    EXPECT_EQ(Run(VISTATRIM_PROGRAM, "--faces-list " + list), 1);
    EXPECT_EQ(Errors, "evaluate_crops: " + list + ":2: is not file, x, y, w, h between tabs\n");
}

} // namespace
} // namespace vistaTrim
