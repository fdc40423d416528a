// SPDX-License-Identifier: MIT
#pragma once

// Several hosts on one settings file, each in a process of its own: how one starts, what it has
// been notified of, and numbers that all of them share.

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "QRVSettings/NSDictionary+QRV.h"
#include "Support/ChildProcess.h"
#include "Support/MachineSupport.h"
#include "Support/StoreSupport.h"

namespace HostProcess {

/// The size of a test, from the environment or small.
inline int sizeFromEnvironment(const char* name, int otherwise) {
    const char* const text = std::getenv(name);
    return text == nullptr ? otherwise : std::stoi(text);
}

enum class Mode { WholeTrees, Merging };

/// Starts this process as a host. The machine is what the parent made it, because processes that
/// write its files at once may read them empty.
inline void start(Mode mode, bool watches) {
    QRVSettings& store = QRVSettings::sharedSettings();
    store.setMergesSaves(mode == Mode::Merging);
    store.setMonitorFileChanges(watches);
    store.loadDefaults();
    store.prepare();
}

inline bool allIsSaved() {
    return QRVSettingsWaitForSaves(testDeadline).state == QRVSaveStatus::State::Saved;
}

using Settings = std::map<std::string, PropertyListValue>;

/// The values of a tree by key path.
inline Settings settingsOf(const NSDictionary& tree) {
    Settings settings;
    if (tree.isNull()) return settings;
    const NSMutableDictionary flat;
    NSDictionaryQRV::flatten(tree, flat);
    for (const auto& [keyPath, value] : flat) settings.emplace(keyPath, value);
    return settings;
}

/// What a host knows that only listens: its own writes, and the values at the key paths that its
/// change handler received.
class Mirror {
  public:
    Mirror() : settings_(settingsOf(QRVSettingsStoredValues())) {
        QRVSettings::sharedSettings().setOnChange(
            [this](const NSArray& keyPaths) { receive(keyPaths); });
    }
    Mirror(const Mirror&) = delete;
    Mirror& operator=(const Mirror&) = delete;
    ~Mirror() { QRVSettings::sharedSettings().setOnChange(nullptr); }

    void write(const std::string& keyPath, const PropertyListValue& value) {
        QRVSettingsSetObjectForKeyPath(value, keyPath);
        enter(keyPath, value);
    }
    [[nodiscard]] const Settings& settings() const { return settings_; }
    /// Key paths received although the host knew their value already.
    [[nodiscard]] int superfluous() const { return superfluous_; }
    [[nodiscard]] int received() const { return received_; }

  private:
    void enter(const std::string& keyPath, const PropertyListValue& value) {
        if (value.isNull())
            settings_.erase(keyPath);
        else
            settings_[keyPath] = value;
    }
    void receive(const NSArray& keyPaths) {
        for (const PropertyListValue& element : keyPaths) {
            const std::string keyPath = element.stringValue();
            const PropertyListValue value = QRVSettingsStoredObjectForKeyPath(keyPath);
            const auto known = settings_.find(keyPath);
            ++received_;
            if (known == settings_.end() ? value.isNull() : known->second == value) ++superfluous_;
            enter(keyPath, value);
        }
    }
    Settings settings_;
    int received_ = 0;
    int superfluous_ = 0;
};

/// Made before the forks; every process sees the same numbers, 0 at the start.
class SharedNumbers {
  public:
    explicit SharedNumbers(std::size_t count)
        : bytes_(count * sizeof(Number)),
          numbers_(static_cast<Number*>(
              mmap(nullptr, bytes_, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0))) {
        if (numbers_ == MAP_FAILED) throw std::runtime_error("no shared memory");
    }
    SharedNumbers(const SharedNumbers&) = delete;
    SharedNumbers& operator=(const SharedNumbers&) = delete;
    ~SharedNumbers() { munmap(numbers_, bytes_); }

    std::atomic<std::int64_t>& operator[](std::size_t index) const { return numbers_[index]; }

  private:
    using Number = std::atomic<std::int64_t>;
    std::size_t bytes_;
    Number* numbers_;
};

/// Hosts in processes of their own that wait for each other.
class Hosts {
  public:
    explicit Hosts(std::size_t count) : arrived_(count) { MachineSupport::beMachine("1", "M"); }

    void add(const std::function<bool()>& life) {
        processes_.push_back(std::make_unique<ChildProcess>(life));
    }
    /// In each process: waits until all have arrived. To be called once.
    [[nodiscard]] bool meet(std::size_t self) const {
        arrived_.at(self).open();
        return allHaveArrived_.wait();
    }
    /// In the parent: lets them go on when all have arrived, for which they take at least `work`.
    [[nodiscard]] bool letMeet(std::chrono::seconds work = {}) const {
        for (const Gate& gate : arrived_)
            if (!gate.wait(work + testDeadline)) return false;
        allHaveArrived_.open();
        return true;
    }
    void expectSuccess() {
        for (std::size_t index = 0; index < processes_.size(); ++index)
            EXPECT_TRUE(processes_[index]->succeeded()) << "host " << index;
    }

  private:
    std::vector<Gate> arrived_;
    Gate allHaveArrived_;
    std::vector<std::unique_ptr<ChildProcess>> processes_;  // destroyed first
};

}  // namespace HostProcess
