// SPDX-License-Identifier: MIT
// Makes the changes of a script in one save.

#include "Commands/CommandTable.h"
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
    WritingOptions writing;
    ChangeReport report;
};

void makeAll(const std::vector<Edit>& edits, const std::string& name, PendingChanges& changes) {
    for (const Edit& edit : edits) {
        try {
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

Changes preview(const std::vector<Edit>& edits, const std::string& name) {
    PendingChanges neverSaved;
    makeAll(edits, name, neverSaved);
    Changes changes = neverSaved.changes();
    if (!changes.isEmpty())
        for (const std::string& note : neverSaved.notes()) remark(note);
    return changes;
}

Changes saveAll(const std::vector<Edit>& edits, const std::string& name) {
    PendingChanges changes;
    makeAll(edits, name, changes);
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
    const Changes changes = options.writing.dryRun ? preview(edits, name) : saveAll(edits, name);
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
    return withWritingOptions(list, options.writing);
}

}  // namespace

Configuration configureApply() {
    return configured(declare, apply);
}

}  // namespace Tool
