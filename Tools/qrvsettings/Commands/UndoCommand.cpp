// SPDX-License-Identifier: MIT
// Takes back what saves of the history have changed, as one save.

#include <algorithm>
#include <optional>

#include "Commands/CommandTable.h"
#include "History/HistoryText.h"
#include "History/ToolHistory.h"
#include "Options/CommonOptions.h"
#include "Process/ExitCode.h"
#include "Process/StandardError.h"
#include "Process/StandardOutput.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Settings/PendingChanges.h"
#include "Settings/Records.h"
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

/// In a save that migrated the settings, what that copied into the profile "default".
bool isCopiedByMigration(const QRVHistoryChange& change) {
    constexpr std::string_view profile = "Profiles.Settings.default.";
    if (!change.before.isNull() || !change.keyPath.starts_with(profile)) return false;
    const PropertyListValue plain =
        QRVSettingsStoredObjectForKeyPath(change.keyPath.substr(profile.size()));
    return !plain.isNull() && plain == change.after;
}

/// Leaves in what people have changed. Without the records of the migration, the next start would
/// migrate again and overwrite what is in the profile "default" by then; and the record of the
/// machine is that of this one.
void keepUndoable(std::vector<QRVHistorySave>& saves) {
    for (QRVHistorySave& save : saves) {
        const bool isMigration = std::any_of(
            save.changes.begin(), save.changes.end(), [](const QRVHistoryChange& change) {
                return isAtOrBelow(change.keyPath, "Migration") && change.before.isNull();
            });
        std::erase_if(save.changes, [isMigration](const QRVHistoryChange& change) {
            return isOfStoreAlone(change.keyPath, change.before, change.after) ||
                   (isMigration && isCopiedByMigration(change));
        });
    }
    std::erase_if(saves, [](const QRVHistorySave& save) { return save.changes.empty(); });
}

std::vector<QRVHistorySave> chosenSaves(const Options& options) {
    QRVHistoryQuery query;
    if (options.id) query.ids = {integerFromText(*options.id).integerValue()};
    if (options.since) query.since = pastTimeFromText(*options.since, NSDate::now());
    std::vector<QRVHistorySave> saves = savesInHistory(query);
    keepUndoable(saves);
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
