// SPDX-License-Identifier: MIT
#include "Rows/SettingsSnapshot.h"

#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Settings/Preparation.h"
#include "Settings/StoredTree.h"

namespace Tool {
namespace {

/// The tree with immutable levels alone: the tree itself where it has no others.
NSDictionary frozen(const NSDictionary& tree) {
    NSMutableDictionary changed(nullptr);
    for (const auto& [key, value] : tree) {
        if (!value.isDictionary()) continue;
        const NSDictionary level = value.dictionary();
        const NSDictionary frozenLevel = frozen(level);
        if (frozenLevel.isIdenticalTo(level)) continue;
        if (changed.isNull()) changed = tree.mutableCopy();
        changed.setObjectForKey(frozenLevel, key);
    }
    return changed.isNull() ? tree.copy() : changed.copy();
}

/// As after the start of a process: what an earlier snapshot has written is gone.
void becomeStored(const NSDictionary& tree) {
    QRVSettings& store = QRVSettings::sharedSettings();
    replaceStoredTree(tree);
    store.cache().removeAllObjects();
    store.batchLogChanges().removeAllObjects();
}

/// Without a stored value nothing is in the way of the preparation, which loads the defaults.
void prepareDefaultsAlone(const NSDictionary& stored) {
    becomeStored(nullptr);
    static_cast<void>(prepareStore());
    becomeStored(stored);
}

}  // namespace

SettingsSnapshot snapshotOfSettings(const NSDictionary& stored) {
    SettingsSnapshot snapshot;
    snapshot.stored = frozen(stored);
    QRVSettingsPrepareBatchSave();
    becomeStored(snapshot.stored);
    try {
        snapshot.notes = prepareStore();
        snapshot.prepared = frozen(QRVSettingsStoredValues());
    } catch (const Failure& failure) {
        snapshot.obstacle = failure.what();
        prepareDefaultsAlone(snapshot.stored);
        snapshot.prepared = snapshot.stored;
    }
    const QRVSiteDefaults site = QRVSettingsSiteDefaults();
    snapshot.builtIn = site.builtIn;
    snapshot.site = site.values;
    snapshot.defaults = QRVSettings::sharedSettings().defaults().copy();
    return snapshot;
}

}  // namespace Tool
