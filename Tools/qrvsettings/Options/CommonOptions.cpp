// SPDX-License-Identifier: MIT
#include "Options/CommonOptions.h"

#include "Settings/SettingsFileCondition.h"

namespace Tool {

Option keyPathArgument(std::string& keyPath) {
    Option option = required(text("KEYPATH", keyPath, "Keys joined by dots"));
    option.takes = Takes::KeyPath;
    return option;
}

Option prefixArgument(std::optional<std::string>& prefix) {
    return {.name = "PREFIX",
            .description = "Only this key path and those that lead through it",
            .takes = Takes::KeyPath,
            .store = [&prefix](const std::vector<std::string>& given) { prefix = given.front(); }};
}

const std::vector<std::string>& layerNames() {
    static const auto& names = *new std::vector<std::string>{"effective", "stored", "default"};
    return names;
}

Option layerOption(std::string& layer) {
    Option option =
        text("--layer", layer,
             "effective: stored values over the defaults, as the application sees them; "
             "stored: the settings file alone; default: the built-in defaults alone");
    option.takes = Takes::Layer;
    option.valueName = "NAME";
    option.words = layerNames();
    option.takesOnlyWords = true;
    option.byDefault = layer;
    return option;
}

Option profileOption(std::string& profile) {
    Option option =
        text("--profile", profile,
             "Work on the settings of this profile: what is not stored there has its default, "
             "whatever is stored elsewhere");
    option.takes = Takes::Profile;
    option.valueName = "NAME";
    option.objection = [](const std::string& name) {
        return std::string(name.empty() ? "the name of the profile is empty" : "");
    };
    return option;
}

Option jsonFlag(bool& json, const std::string& description) {
    return flag("--json", json, description);
}

Option jsonForm(Form& form, const std::string& description) {
    return {.name = "--json", .description = description, .store = [&form](const auto&) {
                form = Form::JSON;
            }};
}

Option commandsForm(Form& form, const std::string& description) {
    return {.name = "--as-commands",
            .description = description,
            .store = [&form](const auto&) { form = Form::Commands; },
            .excludes = "--json"};
}

OptionList withWritingOptions(OptionList options, WritingOptions& writing) {
    options.push_back(
        {.name = "--replace-damaged",
         .description = "Continue when the settings file is damaged: it counts as empty, and a "
                        "backup of it stays beside the new file",
         .store = [&writing](const auto&) { writing.damagedFile = DamagedFile::Replaced; }});
    options.push_back(
        {.name = "--force",
         .description = "Continue when the settings file is read-only, as after chmod 444",
         .store = [&writing](const auto&) { writing.readOnlyFile = ReadOnlyFile::Replaced; }});
    return options;
}

void openToWrite(const WritingOptions& writing) {
    openToWrite(writing,
                {"; --replace-damaged backs it up and goes on", "; --force overwrites it"});
}

}  // namespace Tool
