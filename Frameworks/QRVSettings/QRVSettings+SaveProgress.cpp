// SPDX-License-Identifier: MIT
#include "QRVSettings/QRVSettings+SaveProgress.h"

namespace QRVInside {

namespace {

// A value that was saved has replaced whatever was below its key path.
void eraseAtAndBelow(const std::string& keyPath, std::map<std::string, std::string>& failures) {
    failures.erase(keyPath);
    const std::string start = keyPath + '.';
    for (auto below = failures.lower_bound(start);
         below != failures.end() && below->first.starts_with(start);)
        below = failures.erase(below);
}

}  // namespace

void SaveProgress::end(const SaveOutcome& outcome) {
    counts_.update([&outcome](Counts& counts) {
        ++counts.ended;
        if (outcome.wasWithoutTree) return;
        if (!outcome.failure.empty()) {
            counts.lastReason = outcome.failure;
            if (outcome.keyPaths.empty()) counts.failureOfTree = outcome.failure;
            for (const std::string& keyPath : outcome.keyPaths)
                counts.failures[keyPath] = outcome.failure;
        } else {
            counts.failureOfTree.clear();
            if (outcome.wasWholeTree) counts.failures.clear();
            for (const std::string& keyPath : outcome.keyPaths)
                eraseAtAndBelow(keyPath, counts.failures);
        }
        for (const RefusedWrite& refused : outcome.refused) {
            counts.lastReason = refused.reason;
            if (refused.keyPath.empty())
                counts.failureOfTree = refused.reason;
            else
                counts.failures[refused.keyPath] = refused.reason;
        }
    });
}

bool SaveProgress::waitUntil(std::chrono::steady_clock::time_point deadline) const {
    const std::uint64_t begun = counts_.read([](const Counts& counts) { return counts.begun; });
    return counts_.waitUntil(deadline, [begun](const Counts& counts) {
        return counts.ended >= begun || !counts.areOfThisProcess();
    });
}

SaveProgress::Failures SaveProgress::failures() const {
    return counts_.read([](const Counts& counts) {
        Failures result;
        for (const auto& [keyPath, reason] : counts.failures) result.keyPaths.push_back(keyPath);
        if (!counts.failures.empty() || !counts.failureOfTree.empty())
            result.reason = counts.lastReason;
        return result;
    });
}

}  // namespace QRVInside
