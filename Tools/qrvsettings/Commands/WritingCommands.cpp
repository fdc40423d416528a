// SPDX-License-Identifier: MIT
#include "Commands/WritingCommands.h"

#include <algorithm>

#include "Process/InputFile.h"
#include "Process/StandardError.h"
#include "Process/StandardOutput.h"
#include "Reporting/Failure.h"
#include "Text/Differences.h"
#include "Text/SettingsText.h"
#include "Text/StrictXML.h"

namespace Tool {

Option dryRunFlag(bool& dryRun) {
    return flag("--dry-run", dryRun,
                "Write nothing; print what would change in the file, a line each: key path, tab, "
                "old -> new as JSON, null for not set");
}

void printWhatWouldChange(const NSDictionary& oldTree, const NSDictionary& newTree) {
    const std::string lines = differenceLines(differencesBetween(oldTree, newTree));
    if (lines.empty())
        remark("nothing would change");
    else
        print(lines);
}

void remarkWhatStrictXMLRefuses(const NSDictionary& settings) {
    constexpr std::size_t mostNamed = 5;
    const std::vector<RefusedText> texts = textsRefusedByStrictXML(settings);
    for (std::size_t index = 0; index < std::min(texts.size(), mostNamed); ++index)
        remark(texts[index].refusal + ", " + texts[index].keyPath);
    if (texts.size() > mostNamed)
        remark("they refuse " + std::to_string(texts.size() - mostNamed) + " more settings");
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
