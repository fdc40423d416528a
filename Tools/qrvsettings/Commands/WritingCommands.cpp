// SPDX-License-Identifier: MIT
#include "Commands/WritingCommands.h"

#include <cstdint>

#include "Process/InputFile.h"
#include "Process/StandardError.h"
#include "Process/StandardOutput.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Text/Differences.h"
#include "Text/JSON.h"
#include "Text/SettingsText.h"
#include "Text/StrictXML.h"
#include "Text/ValueText.h"

namespace Tool {

namespace {

NSDictionary objectOf(const Difference& difference) {
    return {{"keyPath", difference.keyPath},
            {"before", orNullMarker(difference.oldValue)},
            {"after", orNullMarker(difference.newValue)}};
}

}  // namespace

OptionList previewFlags(WritingOptions& writing, ChangeReport& report) {
    return {flag("--dry-run", writing.dryRun,
                 "Write nothing; print what would change in the file, a line each: key path, tab, "
                 "old -> new as JSON, null for not set"),
            {.name = "--check",
             .description = "As --dry-run, and exit with code 1 where something would change",
             .store = [&writing, &report](const auto&) { writing.dryRun = report.check = true; }}};
}

Option changesAsJSONFlag(ChangeReport& report) {
    return flag("--json", report.json,
                "Print one JSON object: file, changed (objects of keyPath, before and after, null "
                "for not set) and unchanged, the number of key paths that are as they were");
}

void remarkIfUnchanged(const Changes& changes, const std::string& what) {
    if (changes.isEmpty()) remark("nothing changed, " + what);
}

void printObject(const Changes& changes) {
    NSMutableArray changed;
    for (const Difference& difference : changes.changed) changed.addObject(objectOf(difference));
    print(jsonText(NSDictionary{
              {"file", QRVSettings::sharedSettings().location()},
              {"changed", changed},
              {"unchanged", static_cast<std::int64_t>(changes.unchanged)},
          }) +
          "\n");
}

ExitCode previewOf(const Changes& changes, const ChangeReport& report) {
    if (report.json)
        printObject(changes);
    else if (changes.isEmpty())
        remark("nothing would change");
    else
        print(differenceLines(changes.changed));
    return report.check && !changes.isEmpty() ? ExitCode::NotSet : ExitCode::Done;
}

void remarkWhatStrictXMLRefuses(const NSDictionary& settings) {
    for (const std::string& text : remarksOfStrictXML(settings)) remark(text);
}

Option keepDottedKeysFlag(DottedKeys& dottedKeys) {
    return {.name = "--keep-dotted-keys",
            .description =
                "Take keys of FILE that hold dots as they are, though no key path reaches them",
            .store = [&dottedKeys](const auto&) { dottedKeys = DottedKeys::Kept; }};
}

NSDictionary settingsOfInput(const std::string& file, const std::string& participle,
                             DottedKeys dottedKeys) {
    const std::string bytes = contentsOfInput(file);
    try {
        return settingsFromText(bytes, dottedKeys, "; --keep-dotted-keys takes it as it is");
    } catch (const Failure& failure) {
        throw Failure(failure.fault(),
                      "cannot be " + participle + ": " + failure.what() + ", " + nameOfInput(file));
    }
}

}  // namespace Tool
