#include "options/read_option.h"

#include <charconv>

namespace vistaTrim::cli {

CLI::Option* AddRead(CLI::App& app, const std::string& name, const std::string& form,
                     const std::string& description, const Reader& read, bool repeatable)
{
    const std::string longName = name.substr(name.find("--"));
    CLI::Option* option = app.add_option_function<std::vector<std::string>>(
        name,
        [longName, form, read](const std::vector<std::string>& texts) {
            for (const std::string& text : texts)
                if (!read(text))
                    throw CLI::ValidationError(longName, "'" + text + "' is not " + form);
        },
        description);
    option->type_name(form)->expected(1)->allow_extra_args(false);
    option->multi_option_policy(repeatable ? CLI::MultiOptionPolicy::TakeAll
                                           : CLI::MultiOptionPolicy::Throw);
    return option;
}

CLI::Option* AddInteger(CLI::App& app, const std::string& name, int least, int most,
                        const std::string& description, const std::function<void(int)>& take)
{
    const auto read = [least, most, take](const std::string& text) {
        int value = 0;
        const char* end = text.data() + text.size();
        const std::from_chars_result parsed = std::from_chars(text.data(), end, value);
        if (parsed.ec != std::errc() || parsed.ptr != end || value < least || value > most)
            return false;
        take(value);
        return true;
    };
    return AddRead(app, name,
                   "an integer from " + std::to_string(least) + " to " + std::to_string(most),
                   description, read, false);
}

CLI::Validator NotEmpty()
{
    return CLI::Validator(
        [](const std::string& text) { return text.empty() ? "a name is missing" : std::string(); },
        "");
}

} // namespace vistaTrim::cli
