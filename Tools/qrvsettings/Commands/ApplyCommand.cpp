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
    ChangeReport report;
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

Changes preview(const std::vector<Edit>& edits, const std::string& name, const Leniency& leniency) {
    PendingChanges neverSaved;
    makeAll(edits, name, leniency, neverSaved);
    Changes changes = neverSaved.changes();
    if (!changes.isEmpty())
        for (const std::string& note : neverSaved.notes()) remark(note);
    return changes;
}

Changes saveAll(const std::vector<Edit>& edits, const std::string& name, const Leniency& leniency) {
    PendingChanges changes;
    makeAll(edits, name, leniency, changes);
    return changes.save();
}

void remarkCounts(const Changes& changes) {
    remark(std::to_string(changes.changed.size()) + " changed, " +
           std::to_string(changes.unchanged) +
           (changes.unchanged == 1 ? " as it was" : " as they were"));
}

ExitCode report(const Changes& changes, const Options& options) {
    if (options.writing.dryRun) return previewOf(changes, options.report);
    if (options.report.json)
        printObject(changes);
    else
        remarkCounts(changes);
    return ExitCode::Done;
}

ExitCode apply(const Options& options) {
    const std::string name = nameOfInput(options.file);
    const std::vector<Edit> edits = editsFromScript(contentsOfInput(options.file), name);
    openToWrite(options.writing);
    if (edits.empty() && !options.report.json) {
        remark("no changes, " + name);
        return ExitCode::Done;
    }
    const Changes changes = options.writing.dryRun ? preview(edits, name, options.leniency)
                                                   : saveAll(edits, name, options.leniency);
    remarkWhatStrictXMLRefuses(valuesOf(edits));
    return report(changes, options);
}

OptionList declare(Options& options) {
    Option file =
        required(text("FILE", options.file, "Lines of changes, see below; - reads standard input"));
    file.takes = Takes::File;
    OptionList list = previewFlags(options.writing, options.report);
    list.insert(list.begin(), file);
    list.push_back(changesAsJSONFlag(options.report));
    return withWritingOptions(withLeniency(list, options.leniency), options.writing);
}

}  // namespace

Configuration configureApply() {
    return configured(declare, apply);
}

}  // namespace Tool
