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

void SaveProgress::Counts::noteFailed(const SaveOutcome& outcome) {
    lastReason = outcome.failure;
    if (outcome.keyPaths.empty()) failureOfTree = outcome.failure;
    for (const std::string& keyPath : outcome.keyPaths) failures[keyPath] = outcome.failure;
}

void SaveProgress::Counts::noteSaved(const SaveOutcome& outcome) {
    failureOfTree.clear();
    if (outcome.wasWholeTree) failures.clear();
    for (const std::string& keyPath : outcome.keyPaths) eraseAtAndBelow(keyPath, failures);
}

void SaveProgress::Counts::noteRefused(const RefusedWrite& refused) {
    lastReason = refused.reason;
    if (refused.keyPath.empty())
        failureOfTree = refused.reason;
    else
        failures[refused.keyPath] = refused.reason;
}

void SaveProgress::end(const SaveOutcome& outcome) {
    counts_.update([&outcome](Counts& counts) {
        ++counts.ended;
        if (outcome.wasWithoutTree) return;
        if (outcome.failure.empty())
            counts.noteSaved(outcome);
        else
            counts.noteFailed(outcome);
        for (const RefusedWrite& refused : outcome.refused) counts.noteRefused(refused);
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
