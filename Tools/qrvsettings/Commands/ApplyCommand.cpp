// SPDX-License-Identifier: MIT
// Makes the changes of a script in one save.

#include "Commands/CommandTable.h"
#include "Commands/Leniency.h"
#include "Commands/WritingCommands.h"
#include "Options/CommonOptions.h"
#include "Process/ExitCode.h"
#include "Process/InputFile.h"
#include "Process/StandardError.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Settings/PendingChanges.h"
#include "Settings/ProfileScope.h"
#include "Settings/SettingsFileCondition.h"
#include "Text/EditScript.h"
#include "Text/KeyPaths.h"

namespace Tool {
namespace {

struct Options {
    std::string file;
    Leniency leniency;
    WritingOptions writing;
};

void requireUsual(const SettingObjections& objections, const Edit& edit, const Leniency& leniency) {
    if (edit.value.isNull()) return;
    requireUsual(objections, edit.keyPath, edit.value, ProfileScope(edit.profile),
                 {leniency.takesTypos || edit.isNew, leniency.takesAnyKind || edit.isOfAnyKind});
}

void makeAll(const std::vector<Edit>& edits, const std::string& name, const Leniency& leniency,
             PendingChanges& changes) {
    const SettingObjections objections;
    for (const Edit& edit : edits) {
        try {
            requireUsual(objections, edit, leniency);
            changes.set(edit.value, edit.keyPath, ProfileScope(edit.profile));
        } catch (const Failure& failure) {
            throw Failure(failure.fault(), atLine(name, edit.line, failure.what()));
        }
    }
}

NSDictionary valuesOf(const std::vector<Edit>& edits) {
    NSMutableDictionary values;
    for (const Edit& edit : edits) values.setObjectForKey(edit.value, edit.keyPath);
    return values;
}

void preview(const std::vector<Edit>& edits, const std::string& name, const Leniency& leniency) {
    PendingChanges neverSaved;
    const NSDictionary before = snapshotOf(QRVSettingsStoredValues());
    makeAll(edits, name, leniency, neverSaved);
    for (const std::string& note : neverSaved.notes()) remark(note);
    printWhatWouldChange(before, QRVSettingsStoredValues());
}

void saveAll(const std::vector<Edit>& edits, const std::string& name, const Leniency& leniency) {
    PendingChanges changes;
    makeAll(edits, name, leniency, changes);
    changes.save();
}

ExitCode apply(const Options& options) {
    const std::string name = nameOfInput(options.file);
    const std::vector<Edit> edits = editsFromScript(contentsOfInput(options.file), name);
    openToWrite(options.writing);
    if (edits.empty())
        remark("no changes, " + name);
    else if (options.writing.dryRun)
        preview(edits, name, options.leniency);
    else
        saveAll(edits, name, options.leniency);
    remarkWhatStrictXMLRefuses(valuesOf(edits));
    return ExitCode::Done;
}

OptionList declare(Options& options) {
    Option file =
        required(text("FILE", options.file, "Lines of changes, see below; - reads standard input"));
    file.takes = Takes::File;
    return withWritingOptions(
        withLeniency({file, dryRunFlag(options.writing.dryRun)}, options.leniency),
        options.writing);
}

}  // namespace

Configuration configureApply() {
    return configured(declare, apply);
}

}  // namespace Tool
