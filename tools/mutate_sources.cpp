// Generates small faults in source files, one per patch, so that a script can check which of them
// the tests notice.
//
// usage: mutate_sources SEED COUNT OUT_DIR FILE...
//   Writes OUT_DIR/0001.patch and so on, at most COUNT, for `patch -p1` in the current directory.
//   The same seed, count and files give the same patches. A patched file may not compile.
#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

// Files of fitted coefficients would get most of the faults and test the same thing repeatedly.
constexpr size_t kMostFaultsOfATable = 6;
constexpr size_t kSitesOfATable = 600;

struct Fault {
    std::string File;
    size_t Line; // from 0
    size_t Column;
    size_t Length;
    std::string Replacement;
    std::string Kind;
};

struct Source {
    std::string File;
    std::vector<std::string> Lines;
    std::vector<std::string> Code; // the same, with everything except code blanked
};

bool IsWord(char c)
{
    return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_';
}

bool IsDigit(char c)
{
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

std::string Stripped(const std::string& text)
{
    const size_t first = text.find_first_not_of(' ');
    if (first == std::string::npos)
        return "";
    return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

// Replaces comments, string and character literals, and preprocessor lines with blanks.
std::vector<std::string> CodeOf(const std::vector<std::string>& lines)
{
    std::vector<std::string> code = lines;
    bool inBlock = false;
    bool continued = false; // a directive that continues on the next line
    bool asserting = false; // static_assert: a fault in it never compiles
    for (std::string& line : code) {
        const std::string whole = line;
        const size_t first = whole.find_first_not_of(' ');
        const bool directive = continued || (first != std::string::npos && whole[first] == '#');
        continued = directive && !whole.empty() && whole.back() == '\\';
        if (directive) {
            line.assign(line.size(), ' ');
            continue;
        }
        char quote = 0;
        for (size_t i = 0; i < line.size(); ++i) {
            const bool pair = i + 1 < whole.size();
            if (inBlock) {
                if (whole[i] == '*' && pair && whole[i + 1] == '/') {
                    inBlock = false;
                    line[++i] = ' ';
                    line[i - 1] = ' ';
                    continue;
                }
                line[i] = ' ';
            } else if (quote != 0) {
                const bool escaped = whole[i] == '\\' && pair;
                if (whole[i] == quote)
                    quote = 0;
                line[i] = ' ';
                if (escaped)
                    line[++i] = ' ';
            } else if (whole[i] == '"' || (whole[i] == '\'' && (i == 0 || !IsWord(whole[i - 1])))) {
                quote = whole[i];
                line[i] = ' ';
            } else if (whole[i] == '/' && pair && whole[i + 1] == '/') {
                std::fill(line.begin() + static_cast<std::ptrdiff_t>(i), line.end(), ' ');
                break;
            } else if (whole[i] == '/' && pair && whole[i + 1] == '*') {
                inBlock = true;
                line[i] = ' ';
            }
        }
        asserting = asserting || line.find("static_assert") != std::string::npos;
        if (asserting) {
            asserting = line.find(';') == std::string::npos;
            line.assign(line.size(), ' ');
        }
    }
    return code;
}

// True if `text` is at `column` as a whole token between blanks (or at the end of the line).
bool StandsApart(const std::string& code, size_t column, const std::string& text)
{
    if (code.compare(column, text.size(), text) != 0 || column == 0 || code[column - 1] != ' ')
        return false;
    const size_t end = column + text.size();
    return end == code.size() || code[end] == ' ';
}

bool IsWordAt(const std::string& code, size_t column, const std::string& text)
{
    if (code.compare(column, text.size(), text) != 0)
        return false;
    const size_t end = column + text.size();
    return (column == 0 || !IsWord(code[column - 1])) && (end == code.size() || !IsWord(code[end]));
}

// The end of the product that starts at `column`: names, calls, members and indices joined by *
// and /. npos if the line ends first.
size_t EndOfTerm(const std::string& code, size_t column)
{
    int depth = 0;
    for (size_t i = column; i < code.size(); ++i) {
        const char c = code[i];
        if (c == '(' || c == '[' || c == '{')
            ++depth;
        if (c == ')' || c == ']' || c == '}')
            if (--depth < 0)
                return i;
        if (depth > 0)
            continue;
        if (c == ';' || c == ',' || c == '?' || c == ':') {
            const bool scope = c == ':' && ((i + 1 < code.size() && code[i + 1] == ':') ||
                                            (i > 0 && code[i - 1] == ':'));
            if (!scope)
                return i;
        }
        if (c == ' ' && i + 1 < code.size() && code[i + 1] != '*' && code[i + 1] != '/' &&
            (i == column || (code[i - 1] != '*' && code[i - 1] != '/')))
            return i;
    }
    return std::string::npos;
}

std::string Nudged(const std::string& literal)
{
    const bool single = literal.back() == 'f';
    const double value = std::strtod(literal.c_str(), nullptr);
    std::ostringstream text;
    text.precision(10);
    text << (value == 0.0 ? 0.02 : value * 1.02);
    std::string result = text.str();
    if (result.find_first_of(".e") == std::string::npos)
        result += ".0";
    return single ? result + "f" : result;
}

class FaultFinder {
public:
    FaultFinder(const Source& ofSource, std::mt19937_64& withRandom, std::vector<Fault>& into)
        : source(ofSource), random(withRandom), faults(into)
    {
    }

    void FindAll()
    {
        for (line = 0; line < source.Code.size(); ++line) {
            const std::string& code = source.Code[line];
            for (size_t column = 0; column < code.size(); ++column) {
                FindOperators(code, column);
                FindWords(code, column);
                FindNumber(code, column);
            }
            FindStatement(code);
        }
    }

private:
    void Add(size_t column, size_t length, const std::string& replacement, const char* kind)
    {
        faults.push_back({source.File, line, column, length, replacement, kind});
    }

    void FindOperators(const std::string& code, size_t column)
    {
        static const std::vector<std::pair<std::string, std::string>> comparisons = {
            {"<", "<="}, {"<=", "<"}, {">", ">="}, {">=", ">"}, {"==", "!="}, {"!=", "=="}};
        static const std::vector<std::pair<std::string, std::string>> reversals = {
            {"<", ">"}, {">", "<"}, {"<=", ">="}, {">=", "<="}};
        static const std::vector<std::pair<std::string, std::string>> sums = {
            {"+", "-"},   {"-", "+"},   {"*", "/"},  {"/", "*"},
            {"+=", "-="}, {"-=", "+="}, {"*=", "/="}};
        static const std::vector<std::pair<std::string, std::string>> logic = {{"&&", "||"},
                                                                               {"||", "&&"}};
        const auto addAll = [&](const std::vector<std::pair<std::string, std::string>>& swaps,
                                const char* kind) {
            for (const auto& swap : swaps)
                if (StandsApart(code, column, swap.first))
                    Add(column, swap.first.size(), swap.second, kind);
        };
        addAll(comparisons, "comparison");
        // In a for statement this only ends the loop at once, which any test would notice.
        if (Stripped(code).compare(0, 5, "for (") != 0)
            addAll(reversals, "comparison reversed");
        addAll(sums, "arithmetic");
        addAll(logic, "logic");

        if (StandsApart(code, column, "+") || StandsApart(code, column, "-")) {
            const size_t end = EndOfTerm(code, column + 2);
            if (column + 2 < code.size() && end != std::string::npos && end > column + 2)
                Add(column - 1, end - (column - 1), "", "term dropped");
        }
    }

    void FindWords(const std::string& code, size_t column)
    {
        static const std::vector<std::pair<std::string, std::string>> words = {
            {"true", "false"}, {"false", "true"}, {"min", "max"}, {"max", "min"}};
        for (const auto& word : words) {
            if (!IsWordAt(code, column, word.first))
                continue;
            // Only the functions, not numeric_limits.
            const bool isExtreme = word.first.size() == 3;
            if (isExtreme && (column < 5 || code.compare(column - 5, 5, "std::") != 0))
                continue;
            Add(column, word.first.size(), word.second, "word swapped");
        }
    }

    void FindNumber(const std::string& code, size_t column)
    {
        if (!IsDigit(code[column]) ||
            (column > 0 && (IsWord(code[column - 1]) || code[column - 1] == '.')))
            return;
        size_t end = column;
        bool real = false;
        while (end < code.size() &&
               (IsWord(code[end]) || code[end] == '.' ||
                ((code[end] == '-' || code[end] == '+') && real && code[end - 1] == 'e'))) {
            real = real || code[end] == '.' || code[end] == 'e';
            ++end;
        }
        const std::string literal = code.substr(column, end - column);
        if (literal.find_first_of("xX'") != std::string::npos)
            return;
        if (real) {
            Add(column, literal.size(), Nudged(literal), "constant nudged");
            return;
        }
        size_t digits = 0;
        while (digits < literal.size() && IsDigit(literal[digits]))
            ++digits;
        if (digits > 9)
            return;
        const long value = std::strtol(literal.c_str(), nullptr, 10);
        const bool up = value == 0 || random() % 2 == 0;
        Add(column, literal.size(),
            std::to_string(up ? value + 1 : value - 1) + literal.substr(digits), "off by one");
    }

    // A line that is exactly one call or assignment, not a declaration.
    void FindStatement(const std::string& code)
    {
        const std::string text = Stripped(code);
        if (text.size() < 3 || text.back() != ';' || text.compare(0, 6, "return") == 0 ||
            text.compare(0, 5, "using") == 0 || text.compare(0, 5, "throw") == 0)
            return;
        size_t above = line;
        std::string before;
        while (above > 0 && before.empty())
            before = Stripped(source.Code[--above]);
        if (before.empty() || std::string(";{})").find(before.back()) == std::string::npos)
            return;

        size_t i = 0;
        int depth = 0;
        while (i < text.size() && (depth > 0 || text[i] != ' ')) {
            if (text[i] == '(' || text[i] == '[')
                ++depth;
            if (text[i] == ')' || text[i] == ']')
                --depth;
            ++i;
        }
        const bool call = i == text.size() && text[i - 2] == ')' && text.find('(') > 0;
        const bool assignment = text.compare(i, 3, " = ") == 0 || text.compare(i, 4, " += ") == 0 ||
                                text.compare(i, 4, " -= ") == 0 || text.compare(i, 4, " *= ") == 0;
        if (depth != 0 || !(call || assignment))
            return;
        Add(code.find_first_not_of(' '), text.size(), ";", "statement dropped");
    }

    const Source& source;
    std::mt19937_64& random;
    std::vector<Fault>& faults;
    size_t line = 0;
};

Source ReadSource(const std::string& file)
{
    Source source;
    source.File = file;
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);)
        source.Lines.push_back(line);
    source.Code = CodeOf(source.Lines);
    return source;
}

// std::shuffle may differ from one library to the next.
void Shuffle(std::vector<Fault>& faults, std::mt19937_64& random)
{
    for (size_t i = faults.size(); i > 1; --i)
        std::swap(faults[i - 1], faults[random() % i]);
}

// Takes the kinds in turn, since some occur far more often than others, and at most one fault of
// a kind per line.
std::vector<Fault> Choose(const std::vector<Fault>& shuffled, size_t count)
{
    std::map<std::string, std::vector<Fault>> byKind;
    std::set<std::string> taken;
    for (const Fault& fault : shuffled)
        if (taken.insert(fault.File + ":" + std::to_string(fault.Line) + fault.Kind).second)
            byKind[fault.Kind].push_back(fault);
    std::vector<Fault> chosen;
    for (size_t turn = 0; turn < shuffled.size(); ++turn)
        for (const auto& kind : byKind)
            if (turn < kind.second.size() && chosen.size() < count)
                chosen.push_back(kind.second[turn]);
    return chosen;
}

void WritePatch(const Fault& fault, const Source& source, const std::string& path)
{
    const std::string& before = source.Lines[fault.Line];
    std::string after = before;
    after.replace(fault.Column, fault.Length, fault.Replacement);
    std::ofstream out(path);
    out << "# " << fault.Kind << ": " << fault.File << ":" << fault.Line + 1 << "\n"
        << "--- a/" << fault.File << "\n+++ b/" << fault.File << "\n@@ -" << fault.Line + 1
        << ",1 +" << fault.Line + 1 << ",1 @@\n-" << before << "\n+" << after << "\n";
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 5) {
        std::cerr << "usage: mutate_sources SEED COUNT OUT_DIR FILE...\n";
        return 2;
    }
    std::mt19937_64 random(std::strtoull(argv[1], nullptr, 10));
    const size_t count = std::strtoull(argv[2], nullptr, 10);
    const std::filesystem::path outDir = argv[3];

    std::vector<Source> sources;
    std::vector<Fault> faults;
    for (int i = 4; i < argc; ++i) {
        sources.push_back(ReadSource(argv[i]));
        std::vector<Fault> found;
        FaultFinder(sources.back(), random, found).FindAll();
        const std::string& file = sources.back().File;
        if (found.size() > kSitesOfATable && (file.find("coefficients") != std::string::npos ||
                                              file.find("default_choice") != std::string::npos)) {
            Shuffle(found, random);
            found.resize(kMostFaultsOfATable);
        }
        faults.insert(faults.end(), found.begin(), found.end());
    }
    Shuffle(faults, random);

    std::vector<Fault> chosen = Choose(faults, count);
    // Sorted by file, so that consecutive faults rebuild as little as possible.
    std::sort(chosen.begin(), chosen.end(), [](const Fault& a, const Fault& b) {
        return a.File != b.File   ? a.File < b.File
               : a.Line != b.Line ? a.Line < b.Line
                                  : a.Column < b.Column;
    });

    std::filesystem::create_directories(outDir);
    for (size_t i = 0; i < chosen.size(); ++i) {
        char name[32];
        std::snprintf(name, sizeof name, "%04zu.patch", i + 1);
        const auto source = std::find_if(sources.begin(), sources.end(),
                                         [&](const Source& s) { return s.File == chosen[i].File; });
        WritePatch(chosen[i], *source, (outDir / name).string());
    }
    std::cout << chosen.size() << " faults chosen from " << faults.size() << " places\n";
    return 0;
}
