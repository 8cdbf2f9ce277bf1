#include "batch/resume.h"

#include <vector>

#include <nlohmann/json.hpp>

#include "options/program_error.h"

namespace vistaTrim::cli {

namespace {

struct CsvRecord {
    std::string Text; // including its line feed
    std::vector<std::string> Fields;
};

// Reads the record at `start` and advances `start` past it. False at the end, or if the last line
// is incomplete.
bool NextRecord(const std::string& text, size_t& start, CsvRecord& record)
{
    record.Fields.assign(1, "");
    bool quoted = false;
    for (size_t i = start; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '"') {
            if (quoted && i + 1 < text.size() && text[i + 1] == '"')
                record.Fields.back() += text[++i];
            else
                quoted = !quoted;
        } else if (c == ',' && !quoted) {
            record.Fields.emplace_back();
        } else if (c == '\n' && !quoted) {
            record.Text = text.substr(start, i + 1 - start);
            start = i + 1;
            return true;
        } else {
            record.Fields.back() += c;
        }
    }
    return false;
}

} // namespace

std::string JsonFileKey(const std::string& file)
{
    using nlohmann::json;
    return json::parse(json(file).dump(-1, ' ', false, json::error_handler_t::replace))
        .get<std::string>();
}

EarlierOutput HeldByJson(const std::string& text)
{
    EarlierOutput held;
    size_t start = 0;
    for (size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n', start)) {
        const std::string line = text.substr(start, end + 1 - start);
        start = end + 1;
        const nlohmann::json json = nlohmann::json::parse(line, nullptr, false);
        if (!json.is_object() || !json.contains("file") || !json["file"].is_string())
            throw ProgramError("holds lines that are not results of this program");
        if (json.contains("crops")) {
            held.Kept += line;
            held.Files.insert(json["file"].get<std::string>());
        }
    }
    return held;
}

EarlierOutput HeldByCsv(const std::string& text, const std::string& header)
{
    EarlierOutput held;
    if (text.empty())
        return held;
    if (text.compare(0, header.size(), header) != 0)
        throw ProgramError("does not begin with this program's header line");
    held.Kept = header;

    // Columns: file, width, height, crops, rank. A photograph counts as done once the line
    // of its last crop is there.
    size_t start = header.size();
    std::string lines;
    CsvRecord record;
    while (NextRecord(text, start, record)) {
        const bool failed = record.Fields.size() < 5 || record.Fields[1].empty();
        if (failed) {
            lines.clear();
            continue;
        }
        if (record.Fields[4] == "1")
            lines.clear();
        lines += record.Text;
        if (record.Fields[3] == record.Fields[4]) {
            held.Kept += lines;
            held.Files.insert(record.Fields[0]);
            lines.clear();
        }
    }
    return held;
}

} // namespace vistaTrim::cli
