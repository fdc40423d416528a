// SPDX-License-Identifier: MIT
#include "DryRun.h"

#include <CLI/CLI.hpp>

#include "Failure.h"
#include "Output.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "SettingLines.h"

namespace Tool {

void addDryRun(CLI::App& command, bool& dryRun) {
    command.add_flag("--dry-run", dryRun,
                     "Write nothing; print what would change in the file, a line each: key path, "
                     "tab, old -> new as JSON, null for not set");
}

NSDictionary leavesByKeyPath(const NSDictionary& tree) {
    NSMutableDictionary leaves;
    NSDictionaryQRV::flatten(tree, leaves);
    return leaves;
}

void printWhatWouldChange(const NSDictionary& oldByKeyPath, const NSDictionary& newByKeyPath) {
    const std::string lines = changeLines(changesBetween(oldByKeyPath, newByKeyPath));
    if (lines.empty())
        remark("nothing would change");
    else
        print(lines);
}

}  // namespace Tool
