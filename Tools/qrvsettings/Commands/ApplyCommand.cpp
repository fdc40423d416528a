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
    const NSMutableDictionary values;
    for (const Edit& edit : edits) values.setObjectForKey(edit.value, edit.keyPath);
    return values;
}

void preview(const std::vector<Edit>& edits, const std::string& name) {
    PendingChanges neverSaved;
    const NSDictionary before = snapshotOf(QRVSettingsStoredValues());
    makeAll(edits, name, neverSaved);
    for (const std::string& note : neverSaved.notes()) remark(note);
    printWhatWouldChange(before, QRVSettingsStoredValues());
}

void saveAll(const std::vector<Edit>& edits, const std::string& name) {
    PendingChanges changes;
    makeAll(edits, name, changes);
    changes.save();
}

ExitCode apply(const Options& options) {
    const std::string name = nameOfInput(options.file);
    const std::vector<Edit> edits = editsFromScript(contentsOfInput(options.file), name);
    openToWrite(options.writing);
    if (edits.empty())
        remark("no changes, " + name);
    else if (options.writing.dryRun)
        preview(edits, name);
    else
        saveAll(edits, name);
    remarkWhatStrictXMLRefuses(valuesOf(edits));
    return ExitCode::Done;
}

OptionList declare(Options& options) {
    Option file =
        required(text("FILE", options.file, "Lines of changes, see below; - reads standard input"));
    file.takes = Takes::File;
    return withWritingOptions({file, dryRunFlag(options.writing.dryRun)}, options.writing);
}

}  // namespace

Configuration configureApply() {
    return configured(declare, apply);
}

}  // namespace Tool
