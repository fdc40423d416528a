// SPDX-License-Identifier: MIT
#pragma once

// What stores that merge saves make of commands, with plain maps.

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "FlatSettings.h"
#include "MergingCommands.h"

namespace MergingCommands {

using MaybeSettings = std::optional<FlatSettings>;

struct ModelFile {
    MaybeSettings settings;
    int version = 0;
    bool refusesSaves = false;
};

/// A write, or another tree for the whole file.
struct ModelWrite {
    std::string keyPath;
    PropertyListValue value;
    MaybeSettings tree;
};

inline void applyAll(const std::vector<ModelWrite>& writes, MaybeSettings& settings) {
    for (const ModelWrite& write : writes) {
        if (!settings) settings.emplace();
        if (write.tree)
            settings = write.tree;
        else
            applyWrite(*settings, write.keyPath, write.value);
    }
}

class ModelStore {
  public:
    explicit ModelStore(ModelFile& file) : file_(file) {}

    Answer run(const Command& command) {
        answer_ = {};
        switch (command.kind) {
            case Kind::OpenBatch:
                isInBatch_ = true;
                break;
            case Kind::CommitBatch:
                commit();
                break;
            case Kind::HoldSaves:
                isHeld_ = true;
                break;
            case Kind::ReleaseSaves:
                isHeld_ = false;
                break;
            case Kind::Reload:
                look();
                isFound_ = true;
                break;
            case Kind::Drain:
                publish();
                break;
            case Kind::SaveObject:
                publish();
                if (!isInBatch_) replace(command.tree());
                break;
            case Kind::Import:
                stored_ = leavesOf(command.tree());
                isInBatch_ = false;
                replace(command.tree());
                break;
            default:
                write(command);
        }
        if (!isHeld_ && std::exchange(isSaveQueued_, false)) save();
        isNothingQueued_ = isNothingQueued_ && isHeld_;
        answer_.stored = stored_;
        answer_.isSaved =
            !isSaveQueued_ && !isNothingQueued_ && !isAnythingMissing() && !hasOpenBatch();
        return answer_;
    }

  private:
    // Of others: the file is another one than that of this process's last look.
    bool look() {
        const bool isStillMissing = knownVersion_ >= 0 && !known_ && !file_.settings;
        const bool isOther = knownVersion_ != file_.version && !isStillMissing;
        knownVersion_ = file_.version;
        if (isOther) known_ = file_.settings;
        return isOther;
    }

    void readTheFileUnlessRead() {
        if (stored_) return;
        if (wasAbsent_ && file_.settings) {
            foundByReading_.clear();
            for (const auto& [keyPath, value] : *file_.settings) foundByReading_.insert(keyPath);
        }
        wasAbsent_ = !file_.settings;
        look();
        stored_ = file_.settings;
        applyAll(waiting_, stored_);
    }

    void write(const Command& command) {
        readTheFileUnlessRead();
        PropertyListValue value = command.value();
        if (command.keyPath == keyPathWithDefault && value == defaultValue) value = nullptr;
        answer_.isRefused = stored_ && leadsThroughALeaf(*stored_, command.where());
        if (answer_.isRefused) return;
        const std::vector<ModelWrite> writes{{command.where(), value, std::nullopt}};
        applyAll(writes, stored_);
        (isInBatch_ ? ofBatch_ : waiting_).push_back(writes.front());
        isSaveQueued_ = isSaveQueued_ || !isInBatch_;
        hasRecordsOfBatch_ = hasRecordsOfBatch_ || isInBatch_;
    }

    void commit() {
        isInBatch_ = false;
        hasRecordsOfBatch_ = false;
        isSaveQueued_ = isSaveQueued_ || stored_;
        isNothingQueued_ = isNothingQueued_ || !stored_;
        if (stored_) waiting_.insert(waiting_.end(), ofBatch_.begin(), ofBatch_.end());
        ofBatch_.clear();
    }

    void replace(const NSDictionary& tree) {
        waiting_ = {{"", nullptr, leavesOf(tree)}};
        ofBatch_.clear();
        isSaveQueued_ = true;
    }

    void save() {
        isFound_ = look() || isFound_;
        const std::set<std::string> refused = leaveOutRefused();
        hasFailed_ = file_.refusesSaves;
        if (hasFailed_) return;
        if (std::any_of(waiting_.begin(), waiting_.end(),
                        [](const ModelWrite& write) { return write.tree.has_value(); }))
            missing_ = refused;
        applyAll(waiting_, file_.settings);
        if (!file_.settings) file_.settings.emplace();
        waiting_.clear();
        known_ = file_.settings;
        knownVersion_ = ++file_.version;
    }

    // The last write of a key path decides.
    std::set<std::string> leaveOutRefused() {
        std::map<std::string, bool> refused;
        for (const ModelWrite& write : waiting_)
            refused[write.keyPath] = write.value.isNullMarker();
        std::erase_if(waiting_,
                      [&refused](const ModelWrite& write) { return refused[write.keyPath]; });
        for (const auto& [keyPath, isRefused] : refused) {
            missing_.erase(keyPath);
            if (isRefused) missing_.insert(keyPath);
        }
        std::erase_if(refused, [](const auto& entry) { return !entry.second; });
        std::set<std::string> result;
        for (const auto& [keyPath, isRefused] : refused) result.insert(keyPath);
        return result;
    }

    void publish() {
        if (!std::exchange(isFound_, false)) return;
        MaybeSettings found = known_;
        applyAll(waiting_, found);
        applyAll(ofBatch_, found);
        std::set<std::string> changed =
            differences(stored_.value_or(FlatSettings()), found.value_or(FlatSettings()));
        changed.merge(foundByReading_);
        foundByReading_.clear();
        answer_.received.insert(changed.begin(), changed.end());
        if (changed.empty()) return;
        stored_ = found;
        wasAbsent_ = !found;
    }

    [[nodiscard]] bool isAnythingMissing() const { return hasFailed_ || !missing_.empty(); }
    [[nodiscard]] bool hasOpenBatch() const { return isInBatch_ && hasRecordsOfBatch_; }

    ModelFile& file_;
    Answer answer_;
    MaybeSettings stored_;
    MaybeSettings known_;
    int knownVersion_ = -1;
    std::vector<ModelWrite> waiting_;
    std::vector<ModelWrite> ofBatch_;
    std::set<std::string> missing_;
    std::set<std::string> foundByReading_;
    bool wasAbsent_ = false;
    bool isInBatch_ = false;
    bool hasRecordsOfBatch_ = false;
    bool isHeld_ = false;
    bool isSaveQueued_ = false;
    bool isNothingQueued_ = false;  ///< a save without a tree
    bool isFound_ = false;
    bool hasFailed_ = false;
};

}  // namespace MergingCommands
