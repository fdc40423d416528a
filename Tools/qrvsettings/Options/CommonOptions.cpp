// SPDX-License-Identifier: MIT
#include "Options/CommonOptions.h"

#include <algorithm>
#include <charconv>

#include "History/ToolHistory.h"
#include "Settings/SettingsFileCondition.h"
#include "Text/PastTime.h"
#include "Text/ScalarText.h"

namespace Tool {
namespace {

/// Empty unless it is a number of seconds above 0; rounded up, and to years at the longest.
std::optional<std::chrono::milliseconds> timeFromText(const std::string& text) {
    constexpr double longest = 1e9;
    const auto seconds = realFromText(text);
    if (!seconds || !(*seconds > 0)) return std::nullopt;
    return std::chrono::ceil<std::chrono::milliseconds>(
        std::chrono::duration<double>(std::min(*seconds, longest)));
}

/// Empty unless it is a whole number above 0.
std::optional<std::size_t> countFromText(const std::string& text) {
    std::size_t count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    if (error != std::errc() || end != text.data() + text.size() || count == 0) return std::nullopt;
    return count;
}

}  // namespace

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
    static const auto& names =
        *new std::vector<std::string>{"effective", "stored", "site", "default"};
    return names;
}

Option layerOption(std::string& layer) {
    Option option =
        text("--layer", layer,
             "effective: stored values over the defaults, as the application sees them; "
             "stored: the settings file alone; site: the defaults of this machine's "
             "administrator alone; default: these over the built-in ones");
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
    option.withoutValue = "default";
    option.objection = [](const std::string& name) {
        return std::string(name.empty() ? "the name of the profile is empty" : "");
    };
    return option;
}

Option recordsFlag(bool& records) {
    return flag("--records", records,
                "Include what the store keeps for itself: the machine, what was migrated, the "
                "first profile's name, the appearance");
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

Option timeoutOption(std::optional<std::chrono::milliseconds>& timeout,
                     const std::string& description) {
    return {.name = "--timeout",
            .description = description,
            .takes = Takes::Text,
            .store =
                [&timeout](const std::vector<std::string>& given) {
                    timeout = timeFromText(given.front());
                },
            .valueName = "SECONDS",
            .objection =
                [](const std::string& text) {
                    return timeFromText(text) ? "" : "not a number of seconds above 0: " + text;
                }};
}

Option countOption(const std::string& name, std::optional<std::size_t>& count,
                   const std::string& description) {
    return {.name = name,
            .description = description,
            .takes = Takes::Text,
            .store = [&count](const auto& given) { count = countFromText(given.front()); },
            .valueName = "N",
            .objection =
                [](const std::string& text) {
                    return countFromText(text) ? "" : "not a whole number above 0: " + text;
                }};
}

Option sinceOption(std::optional<std::string>& since, const std::string& description) {
    return {.name = "--since",
            .description = description,
            .takes = Takes::Text,
            .store = [&since](const std::vector<std::string>& given) { since = given.front(); },
            .valueName = "TIME",
            .words = {"today", "yesterday"},
            .objection = objectionToPastTime};
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
    options.push_back(timeoutOption(
        writing.timeout,
        "End with exit code 6, and nothing written, when another process has kept the "
        "file locked for this time"));
    return options;
}

void openToWrite(const WritingOptions& writing) {
    if (!writing.dryRun) takePartInHistory();
    openToWrite(writing,
                {"; --replace-damaged backs it up and goes on", "; --force overwrites it"});
}

}  // namespace Tool
