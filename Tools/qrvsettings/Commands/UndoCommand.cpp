// SPDX-License-Identifier: MIT
// Takes back what saves of the history have changed, as one save.

#include <algorithm>
#include <optional>

#include "Commands/CommandTable.h"
#include "Edits/HistoryEdits.h"
#include "History/HistoryText.h"
#include "History/ToolHistory.h"
#include "Options/CommonOptions.h"
#include "Process/ExitCode.h"
#include "Process/StandardError.h"
#include "Process/StandardOutput.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Settings/PendingChanges.h"
#include "Text/Differences.h"
#include "Text/JSON.h"
#include "Text/KeyPaths.h"
#include "Text/PastTime.h"
#include "Text/ScalarText.h"

namespace Tool {
namespace {

struct Options {
    std::optional<std::string> id;
    bool last = false;
    std::optional<std::string> since;
    bool overwrites = false;
    WritingOptions writing;
};

std::vector<QRVHistorySave> chosenSaves(const Options& options) {
    QRVHistoryQuery query;
    if (options.id) query.ids = {integerFromText(*options.id).integerValue()};
    if (options.since) query.since = pastTimeFromText(*options.since, NSDate::now());
    std::vector<QRVHistorySave> saves =
        undoableSaves(savesInHistory(query), QRVSettingsStoredValues());
    if (!options.id && !options.since && saves.size() > 1) saves.resize(1);
    if (saves.empty())
        throw Failure(Fault::NotSet, "nothing to undo is in the history" +
                                         (options.id ? ", " + *options.id : "") +
                                         (options.since ? ", since " + *options.since : ""));
    return saves;
}

std::string conflictText(const QRVHistoryConflict& conflict,
                         const std::vector<QRVHistorySave>& undone) {
    std::string text = keyPathText(conflict.keyPath) + " was changed since: now " +
                       (conflict.now.isNull() ? "not set" : shortened(jsonText(conflict.now)));
    const auto change = lastChangeInHistory(conflict.keyPath);
    const bool isLater =
        change && std::all_of(undone.begin(), undone.end(),
                              [&change](const auto& save) { return save.order < change->order; });
    return isLater ? text + ", " + timeAndProgramText(*change) + " (save " +
                         std::to_string(change->id) + ")"
                   : text;
}

ExitCode refuse(const QRVHistoryInverse& inverse, const std::vector<QRVHistorySave>& saves) {
    for (const QRVHistoryConflict& conflict : inverse.conflicts) say(conflictText(conflict, saves));
    say("nothing is undone; --force overwrites what was changed since");
    return ExitCode::NotSet;
}

void writeAll(const QRVHistoryInverse& inverse, const Options& options, PendingChanges& changes) {
    for (const QRVHistoryWrite& write : inverse.writes) changes.set(write.value, write.keyPath);
    QRVSettings::sharedSettings().setChangeOrigin("undo");
    const Changes result = options.writing.dryRun ? changes.changes() : changes.save();
    if (result.isEmpty()) return remark("nothing to undo: the settings are as they were before");
    print(differenceLines(result.changed));
}

ExitCode undo(const Options& options) {
    openToWrite(options.writing);
    // What others have changed just now is a part of the history, too.
    waitForHistory();
    const std::vector<QRVHistorySave> saves = chosenSaves(options);
    PendingChanges changes;
    const QRVHistoryInverse inverse = inverseOfSaves(
        saves, QRVSettingsStoredValues(),
        options.overwrites ? QRVHistoryConflicts::Overwrite : QRVHistoryConflicts::LeaveOut);
    if (!inverse.conflicts.empty() && !options.overwrites) return refuse(inverse, saves);
    for (const QRVHistoryConflict& conflict : inverse.conflicts)
        remark(conflictText(conflict, saves));
    writeAll(inverse, options, changes);
    return ExitCode::Done;
}

std::string objectionToID(const std::string& text) {
    return isDecimalInteger(text) && !integerFromText(text).isNull()
               ? ""
               : "not the number of a save: " + text;
}

Option idArgument(std::optional<std::string>& id) {
    return {.name = "ID",
            .description = "The number of a save in the history; the latest without it",
            .takes = Takes::Text,
            .store = [&id](const auto& given) { id = given.front(); },
            .objection = objectionToID,
            .excludes = "--since"};
}

/// `--force` of the commands that write has one more meaning here.
OptionList withOverwriting(OptionList list, bool& overwrites) {
    for (Option& option : list)
        if (option.name == "--force") {
            option.description =
                "Overwrite what was changed since, and continue when the settings file is "
                "read-only, as after chmod 444";
            option.store = [store = option.store, &overwrites](const auto& given) {
                overwrites = true;
                store(given);
            };
        }
    return list;
}

OptionList declare(Options& options) {
    Option since = sinceOption(options.since, "Undo all that was saved at this time or later");
    since.excludes = "--last";
    Option last = flag("--last", options.last, "Undo the latest save, as without ID");
    last.excludes = "ID";
    return withOverwriting(
        withWritingOptions({idArgument(options.id), last, since,
                            flag("--dry-run", options.writing.dryRun,
                                 "Write nothing; print what would change in the file")},
                           options.writing),
        options.overwrites);
}

}  // namespace

Configuration configureUndo() {
    return configured(declare, undo);
}

}  // namespace Tool
