// SPDX-License-Identifier: MIT
#pragma once

// What the processes of MergingModelTests.cpp do, and the processes that do it.

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <future>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

#include "FlatSettings.h"
#include "Platform/Files/Files.h"
#include "Support/ChildProcess.h"
#include "Support/StoreSupport.h"

namespace MergingCommands {

inline constexpr std::array keyPaths{"A", "B", "A.x", "A.y", "A.x.k", "B.x", "C", "N.x"};
inline constexpr std::size_t keyPathWithDefault = 6;
inline constexpr int defaultValue = 3;
/// Where values are written that no file can hold. No other key path is above or below it, so that
/// each of them is refused or replaced at its own key path.
inline constexpr std::size_t keyPathOfRefused = 7;

struct Command {
    enum class Kind {
        Write,
        Remove,
        WriteDictionary,
        WriteWhatNoFileCanHold,
        OpenBatch,
        CommitBatch,
        HoldSaves,
        ReleaseSaves,
        Reload,
        Drain,
        SaveObject,
        Import,
        // Of the file itself, by nobody.
        LetSavesFail,
        LetSavesSucceed,
        DeleteFile,
    };
    Kind kind = Kind::Drain;
    std::size_t store = 0;
    std::size_t keyPath = 0;
    int number = 0;

    [[nodiscard]] std::string where() const {
        return keyPaths.at(kind == Kind::WriteWhatNoFileCanHold ? keyPathOfRefused : keyPath);
    }
    [[nodiscard]] PropertyListValue value() const {
        if (kind == Kind::Write) return number;
        if (kind == Kind::WriteDictionary) return NSDictionary{{"x", number}, {"z", number}};
        if (kind == Kind::WriteWhatNoFileCanHold) return NSNull{};
        return nullptr;
    }
    /// With the flags of both migrations, so that nothing is migrated.
    [[nodiscard]] NSDictionary tree() const {
        return {{"Migration", NSDictionary{{"CombinedPowerItems", 1}, {"Profiles", 1}}},
                {"A", NSDictionary{{"y", number}}},
                {"Whole", number}};
    }
};

using Kind = Command::Kind;

inline void showValue(const Command& command, std::ostream& stream) {
    constexpr std::array names{"Write",
                               "Remove",
                               "WriteDictionary",
                               "WriteWhatNoFileCanHold",
                               "Open",
                               "Commit",
                               "Hold",
                               "Release",
                               "Reload",
                               "Drain",
                               "SaveObject",
                               "Import",
                               "LetFail",
                               "LetSucceed",
                               "DeleteFile"};
    stream << '\n'
           << names.at(static_cast<std::size_t>(command.kind)) << " in " << command.store << ' '
           << command.where() << ' ' << command.number;
}

/// What a process says after a command.
struct Answer {
    bool isRefused = false;               ///< the write threw
    bool isSaved = true;                  ///< QRVSettingsWaitForSaves(0) says so
    std::multiset<std::string> received;  ///< by the change handler
    std::optional<FlatSettings> stored;   ///< the stored tree; empty when there is none

    bool operator==(const Answer& other) const = default;
};

inline std::ostream& operator<<(std::ostream& stream, const Answer& answer) {
    stream << (answer.isRefused ? "refused " : "") << (answer.isSaved ? "saved " : "");
    for (const std::string& keyPath : answer.received) stream << "received " << keyPath << ' ';
    if (!answer.stored) return stream << "no tree";
    for (const auto& [keyPath, value] : *answer.stored) stream << keyPath << "=" << value << ' ';
    return stream;
}

class Host {
  public:
    explicit Host(int commands) : commands_(commands) {
        store_.setMergesSaves(true);
        store_.setMonitorFileChanges(true);
        store_.setDefaults(NSMutableDictionary{{keyPaths[keyPathWithDefault], defaultValue}});
        store_.setOnChange([this](const NSArray& changes) {
            for (const PropertyListValue& keyPath : changes)
                received_.insert(keyPath.stringValue());
        });
    }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    /// Runs commands until the process is killed.
    bool run() {
        setNSLogSink([](const std::string&) {});
        for (Command command; recv(commands_, &command, sizeof command, 0) == sizeof command;) {
            const bool isRefused = !runs(command);
            if (!gate_) store_.queue().sync([] {});
            const std::string text = answer(isRefused);
            if (send(commands_, text.data(), text.size(), 0) < 0) return false;
        }
        return true;
    }

  private:
    bool runs(const Command& command) {
        switch (command.kind) {
            case Kind::OpenBatch:
                QRVSettingsPrepareBatchSave();
                return true;
            case Kind::CommitBatch:
                QRVSettingsCommitBatchSave();
                return true;
            case Kind::HoldSaves:
                holdSaves();
                return true;
            case Kind::ReleaseSaves:
                if (gate_) std::exchange(gate_, std::nullopt)->set_value();
                return true;
            case Kind::Reload:
                reload();
                return true;
            case Kind::Drain:
                DispatchMainQueue::shared().drain();
                return true;
            case Kind::SaveObject:
                DispatchMainQueue::shared().drain();
                QRVSettingsSaveObject(command.tree());
                return true;
            case Kind::Import:
                QRVSettingsClearCacheForKeyPath("Migration.CombinedPowerItems");
                QRVSettingsImport(command.tree());
                return true;
            default:
                return writes(command);
        }
    }

    static bool writes(const Command& command) {
        try {
            QRVSettingsSetObjectForKeyPath(command.value(), command.where());
            return true;
        } catch (const NSInvalidArgumentException&) {
            return false;
        }
    }
    void holdSaves() {
        if (gate_) return;
        gate_.emplace();
        store_.queue().async([open = gate_->get_future().share()] { open.wait(); });
    }
    void reload() {
        store_.setModificationDate(std::nullopt);
        store_.presentedItemDidChange();
        store_.readQueue().sync([] {});
    }

    std::string answer(bool isRefused) {
        std::ostringstream text;
        if (isRefused) text << "refused\n";
        const QRVSaveStatus status = QRVSettingsWaitForSaves(std::chrono::milliseconds(0));
        if (status.state != QRVSaveStatus::State::Saved) text << "unsaved\n";
        for (const std::string& keyPath : received_) text << "received " << keyPath << '\n';
        received_.clear();
        const NSDictionary tree = store_.storageCache();
        if (!tree.isNull()) text << "tree\n";
        for (const auto& [keyPath, value] : leavesOf(tree))
            text << "leaf " << keyPath << ' '
                 << (value.isNullMarker() ? "null" : std::to_string(value.integerValue())) << '\n';
        return text.str() + "end\n";
    }

    int commands_;
    QRVSettings& store_ = QRVSettings::sharedSettings();
    std::optional<std::promise<void>> gate_;
    std::multiset<std::string> received_;
};

/// A process that runs commands, seen from the test.
class HostProcess {
  public:
    HostProcess() : sockets_(), process_([this] { return Host(sockets_.ends[1]).run(); }) {}

    Answer run(const Command& command) const {
        std::array<char, 1U << 16U> text{};
        if (send(sockets_.ends[0], &command, sizeof command, 0) != sizeof command) return {};
        const ssize_t size = recv(sockets_.ends[0], text.data(), text.size(), 0);
        if (size <= 0) throw std::runtime_error("a process has died");
        return read(std::string(text.data(), static_cast<std::size_t>(size)));
    }

  private:
    struct Sockets {
        std::array<int, 2> ends{};
        Sockets() {
            if (socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends.data()) != 0)
                throw std::runtime_error("no sockets");
        }
        Sockets(const Sockets&) = delete;
        Sockets& operator=(const Sockets&) = delete;
        ~Sockets() {
            for (const int end : ends) close(end);
        }
    };

    static Answer read(const std::string& text) {
        Answer answer;
        std::istringstream words(text);
        for (std::string word; words >> word && word != "end";) {
            if (word == "refused") answer.isRefused = true;
            if (word == "unsaved") answer.isSaved = false;
            if (word == "tree") answer.stored.emplace();
            if (word == "received") words >> word, answer.received.insert(word);
            if (word != "leaf") continue;
            std::string keyPath;
            words >> keyPath >> word;
            (*answer.stored)[keyPath] =
                word == "null" ? PropertyListValue(NSNull{}) : PropertyListValue(std::stoi(word));
        }
        return answer;
    }

    Sockets sockets_;
    ChildProcess process_;
};

}  // namespace MergingCommands
