// SPDX-License-Identifier: MIT
#include "Commands/WritingCommands.h"

#include "Process/InputFile.h"
#include "Process/StandardError.h"
#include "Process/StandardOutput.h"
#include "Reporting/Failure.h"
#include "Text/Differences.h"
#include "Text/SettingsText.h"

namespace Tool {

Option dryRunFlag(bool& dryRun) {
    return flag("--dry-run", dryRun,
                "Write nothing; print what would change in the file, a line each: key path, tab, "
                "old -> new as JSON, null for not set");
}

void printWhatWouldChange(const NSDictionary& oldByKeyPath, const NSDictionary& newByKeyPath) {
    const std::string lines = differenceLines(differencesBetween(oldByKeyPath, newByKeyPath));
    if (lines.empty())
        remark("nothing would change");
    else
        print(lines);
}

NSDictionary settingsOfInput(const std::string& file, const std::string& participle) {
    const std::string bytes = contentsOfInput(file);
    try {
        return settingsFromText(bytes);
    } catch (const Failure& failure) {
        throw Failure(failure.fault(),
                      "cannot be " + participle + ": " + failure.what() + ", " + nameOfInput(file));
    }
}

}  // namespace Tool
