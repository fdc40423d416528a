// SPDX-License-Identifier: MIT
#include "Settings/LockedSettings.h"

#include <optional>

#include "Platform/Files/Files.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "Reporting/Failure.h"
#include "Text/Differences.h"
#include "Text/KeyPaths.h"

namespace Tool {
namespace {

Failure lockedBy(const std::string& file, const std::string& keyPath) {
    return {Fault::WrongValue, "the site has locked it, in " + file + ": " + keyPathText(keyPath)};
}

bool hasValues(const PropertyListValue& value) {
    return value.isDictionary() ? NSDictionaryQRV::hasValues(value.dictionary()) : !value.isNull();
}

/// The first write that the store refuses during its life.
class RefusedWrite {
  public:
    RefusedWrite() {
        QRVPlatform::setFileFailureHandler([this](const QRVPlatform::FileFailure& failure) {
            if (!first_ && failure.operation == "write locked setting") first_ = failure;
        });
    }
    RefusedWrite(const RefusedWrite&) = delete;
    RefusedWrite& operator=(const RefusedWrite&) = delete;
    ~RefusedWrite() { QRVPlatform::setFileFailureHandler(nullptr); }
    void require() const {
        if (first_) throw lockedBy(first_->path, first_->keyPath);
    }

  private:
    std::optional<QRVPlatform::FileFailure> first_;
};

}  // namespace

void changeUnlocked(const std::function<void()>& change) {
    const RefusedWrite refused;
    change();
    refused.require();
}

NSDictionary withLockedSettingsOf(const NSDictionary& stored, const NSDictionary& settings) {
    const NSMutableDictionary result = snapshotOf(settings).mutableCopy();
    for (const Difference& leaf : differencesBetween(stored, settings)) {
        if (!leaf.isReached) continue;
        const std::string file = QRVSettingsLockFileForKeyPath(leaf.keyPath);
        if (file.empty()) continue;
        const bool isLockedValue = leaf.newValue == QRVSettingsObjectForKeyPath(leaf.keyPath);
        if (hasValues(leaf.newValue) && !isLockedValue) throw lockedBy(file, leaf.keyPath);
        try {
            NSDictionaryQRV::setObjectAtKeyPath(result, leaf.oldValue, leaf.keyPath);
        } catch (const NSInvalidArgumentException&) {  // A value is in its way.
            throw lockedBy(file, leaf.keyPath);
        }
    }
    return result.copy();
}

}  // namespace Tool
