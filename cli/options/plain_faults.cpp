#include "options/plain_faults.h"

#include "options/options.h"

namespace vistaTrim::cli {

namespace {

// "A" and "B" of "A" + between + "B" + after; false if the text is not of this form.
bool Split(const std::string& text, const std::string& between, const std::string& after,
           std::string& a, std::string& b)
{
    const size_t at = text.find(between);
    if (at == std::string::npos || text.size() < at + between.size() + after.size() ||
        text.compare(text.size() - after.size(), after.size(), after) != 0)
        return false;
    a = text.substr(0, at);
    b = text.substr(at + between.size(), text.size() - after.size() - at - between.size());
    return true;
}

// "--output DIR"
std::string WithForm(const CLI::App& app, const std::string& name)
{
    for (const CLI::App* command : app.get_subcommands()) {
        const CLI::Option* option = command->get_option_no_throw(name);
        if (option != nullptr)
            return name + " " + option->get_type_name();
    }
    return name;
}

} // namespace

std::string InPlainWords(const CLI::App& app, const CLI::ParseError& fault)
{
    std::string text = fault.what();
    std::string a;
    std::string b;
    if (text == "A subcommand is required")
        return std::string("a command is missing; there are ") + kCommandNames;
    if (Split(text, ": At Most 1 required but received ", "", a, b))
        return a + " is given more than once";
    if (Split(text, ": 1 required ", " missing", a, b))
        return a + ": " + b + " is missing";
    if (Split(text, " was given a disallowed flag override", "", a, b))
        return a + " takes no value";
    if (Split(text, "not expected: ", "", a, b)) { // the first one is named last
        const size_t last = b.rfind(" -");
        return "there is no option " + (last == std::string::npos ? b : b.substr(last + 1));
    }
    if (fault.get_name() == "RequiredError" && Split(text, " is required", "", a, b))
        return WithForm(app, a) + " is missing";
    if (fault.get_name() == "RequiresError" && Split(text, " requires ", "", a, b))
        return a + " needs " + b;
    if (fault.get_name() == "ExcludesError" && Split(text, " excludes ", "", a, b))
        return a + " and " + b + " cannot be given together";
    return text;
}

} // namespace vistaTrim::cli
