#include "commands/commands.h"

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "batch/output_place.h"
#include "batch/run_photos.h"
#include "batch/whole_file.h"
#include "commands/suggest_crops.h"
#include "options/program_error.h"
#include "report/report_page.h"
#include "text/shown_name.h"
#include "vistaTrimPhoto/image_format.h"
#include "vistaTrimPhoto/stopwatch.h"

namespace vistaTrim::cli {

namespace {

// Writes the page section by section, since all of them together can be large, and renames it at
// the end. An interrupted run still gets a page of the photographs that it finished.
class PageFile {
public:
    PageFile(const std::string& path, bool replace)
        : File(path, replace), Stream(File.TemporaryPath(), std::ios::binary)
    {
        Put(ReportBeginning());
    }

    void Put(const std::string& html)
    {
        Stream.write(html.data(), static_cast<std::streamsize>(html.size()));
        Stream.flush();
        if (!Stream)
            throw ProgramError("cannot write " + Shown(File.Target()) + ": " +
                               std::generic_category().message(errno));
    }

    void Finish(const std::string& html)
    {
        Put(html);
        Stream.close();
        File.Appear();
    }

private:
    WholeFile File;
    std::ofstream Stream;
};

// Catches a picture's file name given by mistake.
void CheckEnding(const std::string& file)
{
    const std::string ending = std::filesystem::path(file).extension().string();
    if (!ending.empty() && photo::FormatOfEnding(ending.substr(1)))
        throw ProgramError(Shown(file) + ": a report is a page, whose name ends in .html; "
                                         "contact-sheet makes a picture");
}

} // namespace

int RunReport(const Options& options, const std::vector<ListedPhoto>& photos)
{
    Options explained = options;
    explained.Request.Explain = true; // to explain why a photograph got no crop
    try {
        CheckOutputFile(options.Output);
        CheckEnding(options.Output);
        PageFile page(options.Output, options.Force);
        size_t emitted = 0;
        size_t failed = 0;
        PhotoSteps steps;
        steps.Work = [&](const ListedPhoto& photo, PhotoResult& result) {
            const photo::Photograph photograph = OpenPhoto(options, photo);
            const photo::Analysis analysis =
                AnalyseFor(options.Request, photograph, RegionsFor(options, photo, photos.size()));
            SuggestCrops(analysis, explained, result);
            const photo::Stopwatch writing;
            const ReportPictures pictures = MakeReportPictures(
                photograph, options.ReportMaps ? analysis.Maps() : std::vector<photo::Map>());
            const auto index = static_cast<size_t>(&photo - photos.data());
            result.ReportSection = ReportSection(result, pictures, index);
            result.WriteMilliseconds = writing.Milliseconds();
        };
        steps.Emit = [&](const PhotoResult& result) {
            failed += result.Error.empty() ? 0 : 1;
            page.Put(result.Error.empty() ? result.ReportSection : ReportFailure(result, emitted));
            ++emitted;
        };
        const int status = RunPhotos(options, photos, steps);
        page.Finish(ReportEnd(emitted, failed));
        return status;
    } catch (const ProgramError& error) {
        Complain(error.what());
        return 1;
    }
}

} // namespace vistaTrim::cli
