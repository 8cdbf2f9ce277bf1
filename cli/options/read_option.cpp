#include "options/read_option.h"

namespace vistaTrim::cli {

CLI::Option* AddRead(CLI::App& app, const std::string& name, const std::string& form,
                     const std::string& description, const Reader& read, bool repeatable)
{
    CLI::Option* option = app.add_option_function<std::vector<std::string>>(
        name,
        [name, form, read](const std::vector<std::string>& texts) {
            for (const std::string& text : texts)
                if (!read(text))
                    throw CLI::ValidationError(name, "'" + text + "' is not " + form);
        },
        description);
    option->type_name(form)->expected(1)->allow_extra_args(false);
    option->multi_option_policy(repeatable ? CLI::MultiOptionPolicy::TakeAll
                                           : CLI::MultiOptionPolicy::Throw);
    return option;
}

CLI::Validator NotEmpty()
{
    return CLI::Validator(
        [](const std::string& text) { return text.empty() ? "a name is missing" : std::string(); },
        "");
}

} // namespace vistaTrim::cli
