// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <future>
#include <string>
#include <vector>

#include "Platform/Files/Files.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "Support/StoreSupport.h"

namespace MergingSupport {

/// The settings of the file, changed and replaced by somebody else.
inline void otherSets(const PropertyListValue& value, const std::string& key) {
    const NSDictionary stored = StoreSupport::fileTree();
    const NSMutableDictionary tree = stored.isNull() ? NSMutableDictionary() : stored.mutableCopy();
    tree.setObjectForKey(value, key);
    EXPECT_FALSE(QRVPlatform::replaceFile(
        QRVSettingsLocation(), NSPropertyListSerialization::dataWithPropertyList(tree).bytes));
}

/// This process as a host that merges saves, and what its change handler received.
class MergingHost {
  public:
    MergingHost() {
        QRVSettings& store = QRVSettings::sharedSettings();
        store.setMergesSaves(true);
        store.setMonitorFileChanges(true);
        store.setOnChange([this](const NSArray& changes) {
            std::vector<std::string> keyPaths;
            for (const PropertyListValue& keyPath : changes)
                keyPaths.push_back(keyPath.stringValue());
            calls_.push_back(keyPaths);
        });
    }
    MergingHost(const MergingHost&) = delete;
    MergingHost& operator=(const MergingHost&) = delete;
    ~MergingHost() { QRVSettings::sharedSettings().setOnChange(nullptr); }

    static void drain() {
        StoreSupport::finishSaves();
        QRVSettings::sharedSettings().readQueue().sync([] {});
        DispatchMainQueue::shared().drain();
    }
    static void notify() {
        QRVSettings::sharedSettings().presentedItemDidChange();
        drain();
    }
    [[nodiscard]] const std::vector<std::vector<std::string>>& calls() const { return calls_; }

  private:
    std::vector<std::vector<std::string>> calls_;
};

/// Holds the saves up until its end.
class HeldQueue {
  public:
    HeldQueue() {
        QRVSettings::sharedSettings().queue().async(
            [passed = gate_.get_future().share()] { passed.wait(); });
    }
    HeldQueue(const HeldQueue&) = delete;
    HeldQueue& operator=(const HeldQueue&) = delete;
    ~HeldQueue() { gate_.set_value(); }

  private:
    std::promise<void> gate_;
};

}  // namespace MergingSupport
