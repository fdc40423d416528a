// SPDX-License-Identifier: MIT
#pragma once

// A session on the files of the test, whose edits a real process applies.

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "QRVSettings/NSDictionary+QRV.h"
#include "QRVSettings/QRVSettings.h"
#include "Session/Applier.h"
#include "Session/Session.h"
#include "Tool/ToolSupport.h"
#include "Window/WindowSupport.h"

namespace SessionSupport {

using QRVWindow::FileState;
using QRVWindow::LiveChange;
using QRVWindow::Session;
using State = Tool::ApplyOutcome::State;

/// What the settings file holds; null when it holds nothing.
inline NSDictionary fileTree() {
    return NSPropertyListSerialization::propertyListWithData(
               ToolSupport::contentsOf(QRVSettingsLocation()))
        .value.dictionary();
}
inline PropertyListValue inFile(const std::string& keyPath) {
    return NSDictionaryQRV::objectAtKeyPath(fileTree(), keyPath);
}

/// A session that has read the file.
class RunningSession {
  public:
    RunningSession() {
        QRVWindow::Applier::setProgram(QStringLiteral(QRV_APPLY_PROGRAM));
        QObject::connect(
            &session_, &Session::applied, &session_,
            [this](const Tool::ApplyOutcome& outcome) { outcomes_.push_back(outcome); });
        QObject::connect(&session_, &Session::applyWaits, &session_,
                         [this](const QString& text) { waits_.push_back(text.toStdString()); });
        session_.start();
        EXPECT_TRUE(WindowSupport::waitUntil(
            [this] { return session_.fileState().kind != FileState::Kind::NotRead; }));
    }

    Session* operator->() { return &session_; }
    Session& operator*() { return session_; }

    [[nodiscard]] PropertyListValue stored(const std::string& keyPath) const {
        return NSDictionaryQRV::objectAtKeyPath(session_.stored(), keyPath);
    }
    [[nodiscard]] PropertyListValue effective(const std::string& keyPath) const {
        const Tool::SettingRow* const row = session_.table().at(keyPath);
        return row == nullptr ? PropertyListValue() : row->effective;
    }
    /// Waits until the table shows the value.
    [[nodiscard]] bool shows(const std::string& keyPath, const PropertyListValue& value) {
        return WindowSupport::waitUntil([&] { return effective(keyPath) == value; });
    }

    /// What the apply waits for, as it was said.
    [[nodiscard]] const std::vector<std::string>& waits() const { return waits_; }
    /// Waits until an apply that has begun is over.
    Tool::ApplyOutcome outcome() {
        EXPECT_TRUE(WindowSupport::waitUntil([this] { return outcomes_.size() > taken_; }));
        return outcomes_.size() > taken_ ? outcomes_[taken_++] : Tool::ApplyOutcome{};
    }
    Tool::ApplyOutcome apply(const Session::ApplyOptions& options = {}) {
        session_.apply(options);
        EXPECT_TRUE(session_.isApplying());
        return outcome();
    }

  private:
    Session session_;
    std::vector<Tool::ApplyOutcome> outcomes_;
    std::size_t taken_ = 0;
    std::vector<std::string> waits_;
};

}  // namespace SessionSupport
