// SPDX-License-Identifier: MIT
// Several processes with merging saves, one command at a time in any order, beside a model with
// plain maps: the file holds the last saved write of each key path in the order of the saves, and
// each process receives exactly what its stored tree changed by others.
//
// RC_PARAMS=max_success=5000 in the environment runs more sequences of commands.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/gtest.h>
#include <sys/socket.h>

#include <array>
#include <future>
#include <optional>
#include <sstream>

#include "FlatSettings.h"
#include "Platform/Files/Files.h"
#include "Support/ChildProcess.h"
#include "Support/StoreSupport.h"

namespace {

namespace fs = std::filesystem;

constexpr std::size_t storeCount = 3;
constexpr std::array keyPaths{"A", "B", "A.x", "A.y", "A.x.k", "B.x", "C", "N.x"};
constexpr std::size_t keyPathWithDefault = 6;
constexpr int defaultValue = 3;
/// Where values are written that no file can hold. No other key path is above or below it, so that
/// each of them is refused or replaced at its own key path.
constexpr std::size_t keyPathOfRefused = 7;

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

void showValue(const Command& command, std::ostream& stream) {
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

std::ostream& operator<<(std::ostream& stream, const Answer& answer) {
    stream << (answer.isRefused ? "refused " : "") << (answer.isSaved ? "saved " : "");
    for (const std::string& keyPath : answer.received) stream << "received " << keyPath << ' ';
    if (!answer.stored) return stream << "no tree";
    for (const auto& [keyPath, value] : *answer.stored) stream << keyPath << "=" << value << ' ';
    return stream;
}

// --- A process with a store

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

// --- The model

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

void applyAll(const std::vector<ModelWrite>& writes, MaybeSettings& settings) {
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

// --- Both in step

class Comparison {
  public:
    Comparison() {
        static int number = 0;
        folder_ = fs::absolute("sequence-" + std::to_string(number++));
        setenv("XDG_CONFIG_HOME", folder_.c_str(), 1);
        for (std::size_t index = 0; index < storeCount; ++index) {
            hosts_.push_back(std::make_unique<HostProcess>());
            models_.emplace_back(file_);
        }
    }
    Comparison(const Comparison&) = delete;
    Comparison& operator=(const Comparison&) = delete;
    ~Comparison() {
        hosts_.clear();
        std::error_code ignored;
        fs::remove_all(folder_, ignored);
    }

    void run(const Command& command) {
        if (!runsOnTheFile(command)) {
            const Answer expected = models_.at(command.store).run(command);
            const Answer actual = hosts_.at(command.store)->run(command);
            std::ostringstream shown;
            showValue(command, shown);
            RC_LOG() << shown.str() << "\n  is " << actual << "\n  not " << expected << '\n';
            RC_ASSERT(actual == expected);
        }
        const NSDictionary tree = StoreSupport::fileTree();
        RC_ASSERT(tree.isNull() == !file_.settings);
        RC_ASSERT(leavesOf(tree) == file_.settings.value_or(FlatSettings()));
    }

    /// Everything is saved and published; then each stored tree is the file.
    void settle() {
        run({Kind::LetSavesSucceed});
        for (std::size_t store = 0; store < storeCount; ++store)
            for (const Kind kind : {Kind::ReleaseSaves, Kind::Write, Kind::CommitBatch})
                run({kind, store, keyPathWithDefault, 1});
        for (std::size_t store = 0; store < storeCount; ++store) {
            run({Kind::Reload, store});
            run({Kind::Drain, store});
            const Answer answer = hosts_.at(store)->run({Kind::Drain, store});
            RC_ASSERT(answer.stored.value_or(FlatSettings()) == leavesOf(StoreSupport::fileTree()));
            RC_ASSERT(answer.received.empty());
        }
    }

  private:
    bool runsOnTheFile(const Command& command) {
        const std::string obstacle =
            QRVPlatform::filesBeside(QRVSettingsLocation()).temporary + "/inside";
        if (command.kind == Kind::LetSavesFail) {
            fs::create_directories(obstacle);
            file_.refusesSaves = true;
        } else if (command.kind == Kind::LetSavesSucceed) {
            fs::remove_all(fs::path(obstacle).parent_path());
            file_.refusesSaves = false;
        } else if (command.kind == Kind::DeleteFile) {
            if (!fs::remove(QRVSettingsLocation())) return true;
            file_.settings.reset();
            ++file_.version;
        } else {
            return false;
        }
        return true;
    }

    fs::path folder_;
    ModelFile file_;
    std::vector<ModelStore> models_;
    std::vector<std::unique_ptr<HostProcess>> hosts_;
};

rc::Gen<Command> anyCommand() {
    const auto kind = rc::gen::weightedElement<Kind>({{12, Kind::Write},
                                                      {5, Kind::Remove},
                                                      {3, Kind::WriteDictionary},
                                                      {1, Kind::WriteWhatNoFileCanHold},
                                                      {3, Kind::OpenBatch},
                                                      {4, Kind::CommitBatch},
                                                      {4, Kind::HoldSaves},
                                                      {5, Kind::ReleaseSaves},
                                                      {5, Kind::Reload},
                                                      {6, Kind::Drain},
                                                      {1, Kind::SaveObject},
                                                      {1, Kind::Import},
                                                      {1, Kind::LetSavesFail},
                                                      {2, Kind::LetSavesSucceed},
                                                      {1, Kind::DeleteFile}});
    return rc::gen::build<Command>(
        rc::gen::set(&Command::kind, kind),
        rc::gen::set(&Command::store, rc::gen::inRange<std::size_t>(0, storeCount)),
        rc::gen::set(&Command::keyPath, rc::gen::inRange<std::size_t>(0, keyPaths.size())),
        rc::gen::set(&Command::number, rc::gen::inRange(0, 6)));
}

}  // namespace

RC_GTEST_PROP(MergingModel, AnySequenceInSeveralProcessesGivesWhatTheModelGives, ()) {
    const auto commands = *rc::gen::container<std::vector<Command>>(anyCommand());
    Comparison comparison;
    for (const Command& command : commands) comparison.run(command);
    comparison.settle();
}
