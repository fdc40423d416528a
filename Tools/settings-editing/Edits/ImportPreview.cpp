// SPDX-License-Identifier: MIT
// What an import would change, as edits.

#include <utility>

#include "Edits/Comparison.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Settings/MachineSettings.h"
#include "Settings/PendingChanges.h"
#include "Settings/Preparation.h"
#include "Settings/Records.h"
#include "Settings/SettingObjections.h"
#include "Settings/StoredTree.h"
#include "Text/FileForm.h"
#include "Text/KeyPaths.h"
#include "Text/SettingsText.h"
#include "Text/StrictXML.h"

namespace Tool {
namespace {

/// Gives the store back what it had in memory.
class Restoration {
  public:
    explicit Restoration(NSDictionary stored) : stored_(std::move(stored)) {}
    Restoration(const Restoration&) = delete;
    Restoration& operator=(const Restoration&) = delete;
    ~Restoration() { static_cast<void>(snapshotOfSettings(stored_)); }

  private:
    NSDictionary stored_;
};

NSDictionary settingsOf(const std::string& bytes, const std::string& name) {
    try {
        return settingsFromText(bytes, DottedKeys::Refused,
                                "; qrvsettings import --keep-dotted-keys takes it as it is");
    } catch (const Failure& failure) {
        throw Failure(failure.fault(),
                      std::string("cannot be imported: ") + failure.what() + ", " + name);
    }
}

Changes changesOfImport(const NSDictionary& settings, const std::string& name) {
    try {
        return importInMemory(settings);
    } catch (const NSInvalidArgumentException& exception) {
        throw Failure(Fault::WrongValue,
                      std::string("cannot be migrated: ") + exception.what() + ", " + name);
    }
}

void append(std::vector<std::string>& lines, const std::vector<std::string>& more) {
    lines.insert(lines.end(), more.begin(), more.end());
}

}  // namespace

ImportPreview previewOfImport(const std::string& bytes, const std::string& name,
                              const SettingsSnapshot& snapshot) {
    const NSDictionary settings = withMachineSettingsOf(snapshot.stored, settingsOf(bytes, name));
    const Restoration restoration(snapshot.stored);
    replaceStoredTree(snapshot.stored);
    const Changes changes = changesOfImport(settings, name);

    ImportPreview preview;
    for (const Difference& one : changes.changed) {
        if (isOfStoreAlone(one.keyPath, one.oldValue, one.newValue)) continue;
        if (!one.isReached) {
            preview.remarks.push_back("left out, as no key path reaches this key: " +
                                      keyPathText(one.keyPath));
            continue;
        }
        const SettingPlace place = placeOfStored(one.keyPath);
        const PropertyListValue byDefault = valueAt(snapshot.defaults, place.keyPath);
        const bool isDefault = areSameInKind(one.newValue, byDefault);
        if (isDefault && one.oldValue.isNull()) continue;
        preview.requests.push_back({place, one.newValue, byDefault});
    }
    if (!changes.isEmpty() && needMigration(settings)) preview.remarks.emplace_back(migrationNote);
    append(preview.remarks, remarksOnTree(settings));
    append(preview.remarks, remarksOfStrictXML(settings));
    if (hasFractionsOfSeconds(settings))
        preview.remarks.push_back("fractions of seconds are not kept, " + name);
    return preview;
}

}  // namespace Tool
