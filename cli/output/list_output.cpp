#include "output/list_output.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <iterator>
#include <system_error>

#include <unistd.h>

#include "batch/output_place.h"
#include "batch/resume.h"
#include "batch/run_photos.h"
#include "batch/run_record.h"
#include "batch/temporary_files.h"
#include "batch/whole_file.h"
#include "options/program_error.h"
#include "options/text_file.h"
#include "output/result_text.h"
#include "text/shown_name.h"

namespace vistaTrim::cli {

namespace {

[[noreturn]] void FailToWrite(const std::string& path)
{
    throw ProgramError("cannot write " + (path.empty() ? "standard output" : Shown(path)) + ": " +
                       std::generic_category().message(errno));
}

// What an interrupted run left in its file. Throws ProgramError.
EarlierOutput HeldBy(const std::string& text, ListFormat format)
{
    switch (format) {
    case ListFormat::Text: break;
    case ListFormat::Json: return HeldByJson(text);
    case ListFormat::Csv: return HeldByCsv(text, CsvHeader());
    }
    throw ProgramError("cannot be resumed; choose --json or --csv");
}

// The photograph's name as the file shows it.
std::string FileKey(const std::string& path, ListFormat format)
{
    switch (format) {
    case ListFormat::Json: return JsonFileKey(path);
    case ListFormat::Text:
    case ListFormat::Csv: break;
    }
    return path;
}

} // namespace

ListOutput::ListOutput(const Options& options)
    : Format(options.Format), Path(options.Output), Stream(stdout)
{
    const bool isResumable = Format != ListFormat::Text;
    const RunRecord record = RunRecord::OfFile(Path, {{}, options.ResultOptions});
    bool isNew = true;
    if (!Path.empty()) {
        CheckOutputFile(Path);
        ClearAbandoned(FolderOf(Path));
        const bool exists = access(Path.c_str(), F_OK) == 0;
        if (exists && !options.Force && !options.Resume)
            throw ProgramError(Shown(Path) + " exists already; --force replaces it" +
                               (Format == ListFormat::Text ? "" : ", --resume goes on"));
        if (exists && options.Resume) {
            const std::string text = ReadTextFile(Path);
            const bool isRecorded = text.empty() || record.CheckResumed();
            EarlierOutput earlier;
            try {
                earlier = HeldBy(text, Format);
            } catch (const ProgramError& error) {
                throw ProgramError(Shown(Path) + " " + error.what());
            }
            if (!isRecorded)
                Complain(Shown(Path) + " does not say with which options it was made; they are "
                                       "taken to be those of this run");
            if (earlier.Kept != text)
                WriteWholeFile(Path, true, earlier.Kept);
            Held = earlier.Files;
            isNew = earlier.Kept.empty();
        }
        Stream = std::fopen(Path.c_str(), options.Resume ? "ab" : "wb");
        if (Stream == nullptr)
            FailToWrite(Path);
        // No record beside a device or a pipe.
        if (isResumable && std::filesystem::is_regular_file(Path))
            record.Begin(isNew);
    }
    if (isNew && Format == ListFormat::Csv)
        Put(CsvHeader());
}

ListOutput::~ListOutput()
{
    if (!Path.empty())
        std::fclose(Stream);
}

std::vector<ListedPhoto> ListOutput::StillToDo(const std::vector<ListedPhoto>& photos) const
{
    std::vector<ListedPhoto> left;
    std::copy_if(
        photos.begin(), photos.end(), std::back_inserter(left),
        [this](const ListedPhoto& photo) { return Held.count(FileKey(photo.Path, Format)) == 0; });
    return left;
}

void ListOutput::Write(const PhotoResult& result)
{
    switch (Format) {
    case ListFormat::Text: Put(PeopleText(result)); break;
    case ListFormat::Json: Put(JsonLine(result)); break;
    case ListFormat::Csv: Put(CsvLines(result)); break;
    }
}

void ListOutput::Put(const std::string& text)
{
    if (std::fwrite(text.data(), 1, text.size(), Stream) != text.size() || std::fflush(Stream) != 0)
        FailToWrite(Path);
}

} // namespace vistaTrim::cli
