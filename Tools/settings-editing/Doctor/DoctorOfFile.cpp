// SPDX-License-Identifier: MIT
// The settings file itself and what lies around it: kind, rights, lock, backups, watching.

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <system_error>
#include <utility>

#include "Doctor/Doctor.h"
#include "Doctor/Owners.h"
#include "Platform/Files/Files.h"
#include "Platform/Files/NSFilePresenter.h"
#include "Platform/PropertyLists/NSPropertyListSerialization.h"
#include "QRVSettings/QRVSettings.h"
#include "Settings/FileFacts.h"
#include "Settings/SettingsFileCondition.h"
#include "Text/ShellCommands.h"

namespace Tool {
namespace {

using Kind = PathFacts::Kind;
using About = Finding::About;
using Level = Finding::Level;

constexpr unsigned othersMayRead = 044;
constexpr unsigned othersMayWrite = 022;

/// The library polls a file that it cannot watch.
std::string pollingText() {
    return "every " + std::to_string(QRVPlatform::filePollingInterval.count()) + " seconds";
}

void add(Diagnosis& diagnosis, const std::string& name, const std::string& text) {
    diagnosis.facts.push_back({name, text, text});
}

void addLimit(Diagnosis& diagnosis, const std::string& name, std::uint64_t limit) {
    if (limit > 0)
        diagnosis.facts.push_back({name, limit, "at most " + std::to_string(limit) + " per user"});
}

std::string kindText(Kind kind) {
    switch (kind) {
        case Kind::Missing:
            return "missing";
        case Kind::File:
            return "file";
        case Kind::Folder:
            return "folder";
        case Kind::Link:
            return "link";
        case Kind::Other:
            break;
    }
    return "neither file nor folder";
}

std::string formatText(PropertyListFormat format) {
    switch (format) {
        case PropertyListFormat::Binary:
            return "binary";
        case PropertyListFormat::XML:
            return "XML";
        case PropertyListFormat::OldStyle:
            break;
    }
    return "old-style";
}

std::string moveAway(const std::string& path, const std::string& suffix) {
    return "move it away: mv " + shellWord(path) + " " + shellWord(path + suffix);
}

std::string adviceForWatching(const std::error_code& error) {
    if (error == std::errc::permission_denied) return "make the folder readable for this user";
    const bool isOutOfWatches = error == std::errc::no_space_on_device;
    return std::string(
               "end programs that watch many files, or raise the limit: sysctl "
               "fs.inotify.") +
           (isOutOfWatches ? "max_user_watches" : "max_user_instances");
}

/// The nearest folder above that exists, or what lies in its place.
std::string nearestAbove(const std::string& path) {
    std::filesystem::path folder = std::filesystem::path(path).parent_path();
    std::error_code ignored;
    while (!std::filesystem::exists(folder, ignored) && folder != folder.parent_path())
        folder = folder.parent_path();
    return folder.string();
}

std::string unusableOwner(const std::string& path) {
    const auto fault = faultOfOwner(path);
    return fault ? "; it " + *fault : "";
}

class FileExamination {
  public:
    FileExamination(Diagnosis& diagnosis, std::string location)
        : diagnosis_(diagnosis),
          location_(std::move(location)),
          target_(QRVPlatform::resolvedPath(location_).path),
          beside_(QRVPlatform::filesBeside(target_)) {}

    NSDictionary run();

  private:
    void report(Level level, const std::string& message, const std::string& advice,
                About about = About::Other) {
        diagnosis_.findings.push_back({level, message, advice, "", about});
    }
    void examineKind(const PathFacts& facts);
    void examinePlace(const PathFacts& facts);
    void examineLink(const PathFacts& facts);
    void examineContents(const PathFacts& facts, const SettingsFileCondition& condition);
    void examineRights(const PathFacts& facts);
    void examineFolder();
    void examineRightsOfFolder(const std::string& folder);
    void examineLock();
    void examineHolders(const LockFacts& facts);
    void examineLeftOver();
    void examineBackups();
    void examineWatching();

    Diagnosis& diagnosis_;
    std::string location_;
    std::string target_;  ///< empty when links lead to themselves
    QRVPlatform::FilesBeside beside_;
};

NSDictionary FileExamination::run() {
    add(diagnosis_, "location", location_);
    const PathFacts facts = factsOfPath(location_);
    examineKind(facts);
    if (target_.empty()) return nullptr;
    const PathFacts targetFacts = factsOfPath(target_);
    const SettingsFileCondition condition = openSettingsFile();
    examinePlace(targetFacts);
    if (targetFacts.kind == Kind::File) {
        examineContents(targetFacts, condition);
        examineRights(targetFacts);
    }
    examineFolder();
    examineLock();
    examineLeftOver();
    examineBackups();
    examineWatching();
    return condition.error ? NSDictionary(nullptr) : condition.settings;
}

void FileExamination::examineKind(const PathFacts& facts) {
    add(diagnosis_, "kind", kindText(facts.kind));
    if (facts.error)
        report(Level::Error, "the path cannot be examined: " + facts.error.message(),
               "make the folders above it searchable for this user");
    if (facts.kind != Kind::Link) return;
    if (target_.empty())
        report(Level::Error, "the link leads to itself", "remove it: rm " + shellWord(location_));
    else
        examineLink(factsOfPath(target_));
}

void FileExamination::examineLink(const PathFacts& facts) {
    add(diagnosis_, "target", target_);
    if (facts.kind == Kind::Missing)
        report(Level::Warning, "the link leads nowhere: " + target_ + " is not there",
               "put the file there, or remove the link: rm " + shellWord(location_) +
                   "; the next save creates a file there",
               About::Missing);
}

void FileExamination::examinePlace(const PathFacts& facts) {
    if (facts.kind == Kind::Missing && !facts.error && target_ == location_)
        report(Level::Note, "there is no settings file: everything has its default",
               "nothing; the first change creates it", About::Missing);
    if (facts.kind == Kind::Folder)
        report(Level::Error, "a folder lies in the place of the settings file: " + target_,
               moveAway(target_, ".folder"));
    if (facts.kind == Kind::Other)
        report(Level::Error, "what lies in the place of the settings file is no file: " + target_,
               moveAway(target_, ".other"));
}

void FileExamination::examineContents(const PathFacts& facts,
                                      const SettingsFileCondition& condition) {
    if (condition.format)
        add(diagnosis_, "format", formatText(*condition.format));
    else if (facts.size == 0)
        add(diagnosis_, "format", "empty");
    diagnosis_.facts.push_back({"size", facts.size, std::to_string(facts.size) + " bytes"});
    if (condition.error)
        report(Level::Error, condition.fault(),
               facts.isOwnedByUser ? "make it readable: chmod u+r " + shellWord(target_)
                                   : adviceForOwner(target_, false),
               About::Unreadable);
    if (!condition.damage.empty())
        report(Level::Error, condition.fault(),
               "repair it by hand, or replace it, which leaves a backup beside the new file: "
               "qrvsettings import --replace-damaged FILE",
               About::Damaged);
}

void FileExamination::examineRights(const PathFacts& facts) {
    add(diagnosis_, "mode", modeText(facts.mode));
    add(diagnosis_, "owner", facts.owner);
    const bool isWritableForOthers = (facts.mode & othersMayWrite) != 0;
    if (isWritableForOthers || (facts.mode & othersMayRead) != 0)
        report(Level::Warning,
               std::string("other users may ") + (isWritableForOthers ? "change" : "read") +
                   " the settings: mode " + modeText(facts.mode),
               "make them private: chmod 600 " + shellWord(target_));
    if ((facts.mode & PathFacts::ownerMayWrite) == 0 && isReadableFile(target_))
        report(Level::Warning,
               "the file is read-only, and commands that write refuse it: mode " +
                   modeText(facts.mode),
               "make it writable: chmod u+w " + shellWord(target_) +
                   "; or overwrite it once with --force",
               About::NotSavable);
    if (const auto fault = faultOfOwner(target_))
        report(Level::Warning, "the file " + *fault, adviceForOwner(target_, false));
    else if (!facts.isOwnedByUser)
        report(
            Level::Note, "the settings belong to another user: " + facts.owner,
            "nothing; to run this as that user: sudo -H -u " + facts.owner + " qrvsettings doctor");
}

void FileExamination::examineFolder() {
    const std::string folder = nearestAbove(target_);
    std::error_code ignored;
    if (!std::filesystem::is_directory(folder, ignored))
        report(Level::Error, "no save can succeed, this is no folder: " + folder,
               moveAway(folder, ".other"), About::NotSavable);
    else
        examineRightsOfFolder(folder);
}

void FileExamination::examineRightsOfFolder(const std::string& folder) {
    const PathFacts facts = factsOfPath(folder);
    if (!isWritableFolder(folder))
        report(Level::Error,
               "no save can succeed, this user may not write into the folder " + folder +
                   (facts.isOwnedByUser ? "" : ", which belongs to another user: " + facts.owner),
               adviceToWriteInto(folder), About::NotSavable);
    if (const auto another = folderOfAnother(folder); another && isRoot())
        report(Level::Warning,
               "the folder " + another->path + " belongs to " + factsOfPath(another->path).owner +
                   ", and the one above it to " + factsOfPath(another->above).owner,
               "give it to the same user: chown -R --reference=" + shellWord(another->above) + " " +
                   shellWord(another->path));
    if (facts.kind == Kind::Folder && (facts.mode & othersMayWrite) != 0)
        report(Level::Warning,
               "other users may replace the settings: mode " + modeText(facts.mode) +
                   " of the folder " + folder,
               "keep them out: chmod go-w " + shellWord(folder));
}

void FileExamination::examineLock() {
    const std::string path = beside_.lock;
    const LockFacts facts = factsOfLock(path);
    switch (facts.state) {
        case LockFacts::State::Missing:
            add(diagnosis_, "lock", "none yet");
            break;
        case LockFacts::State::Free:
            add(diagnosis_, "lock", "free");
            break;
        case LockFacts::State::Held:
            examineHolders(facts);
            break;
        case LockFacts::State::NoFile:
            add(diagnosis_, "lock", "no file");
            report(Level::Error,
                   "no save can succeed, what lies in the place of the lock file is no file, but " +
                       kindName(factsOfPath(path).kind) + ": " + path,
                   moveAway(path, ".other"), About::NotSavable);
            break;
        case LockFacts::State::Unusable:
            add(diagnosis_, "lock", "unusable");
            report(Level::Error,
                   "no save can succeed, the lock file cannot be opened: " + facts.error.message() +
                       ", " + path + unusableOwner(path),
                   factsOfPath(path).isOwnedByUser
                       ? "make it usable for this user: chmod 600 " + shellWord(path)
                       : adviceForOwner(path, true),
                   About::NotSavable);
            break;
    }
    const bool isNamed =
        facts.state == LockFacts::State::NoFile || facts.state == LockFacts::State::Unusable;
    if (const auto fault = faultOfOwner(path); fault && !isNamed)
        report(Level::Warning, "the lock file " + *fault, adviceForOwner(path, true));
}

void FileExamination::examineHolders(const LockFacts& facts) {
    add(diagnosis_, "lock", "held");
    NSMutableArray processes;
    for (const LockFacts::Holder& holder : facts.holders) processes.addObject(holder.process);
    diagnosis_.facts.push_back({"holders", processes, holdersText(facts.holders)});
    bool isSomeoneStopped = false;
    for (const LockFacts::Holder& holder : facts.holders) {
        if (!holder.isStopped) continue;
        isSomeoneStopped = true;
        report(Level::Warning, "saves wait for a stopped process: " + holdersText({holder}),
               "continue or end it: kill -CONT " + std::to_string(holder.process));
    }
    if (!isSomeoneStopped)
        report(Level::Note, "another process is saving at this moment",
               "nothing; run doctor again when it has finished");
}

void FileExamination::examineLeftOver() {
    const std::string path = beside_.temporary;
    switch (factsOfPath(path).kind) {
        case Kind::Missing:
            break;
        case Kind::Folder:
            report(Level::Error, "no save can succeed, a folder lies where saves begin: " + path,
                   moveAway(path, ".other"), About::NotSavable);
            break;
        case Kind::Link:
        case Kind::Other:
            report(Level::Warning,
                   kindName(factsOfPath(path).kind) + " lies where saves begin: " + path,
                   "find out who put it there; the next save removes it");
            break;
        case Kind::File:
            report(Level::Note, "a save was interrupted, and left " + path,
                   "nothing; the next save removes it");
            break;
    }
}

void FileExamination::examineBackups() {
    std::set<std::string> copies;
    std::error_code error;
    const auto folder = std::filesystem::path(target_).parent_path();
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error))
        if (entry->path().string().starts_with(beside_.backupStart))
            copies.insert(entry->path().string());
    for (const std::string& copy : copies)
        report(Level::Warning,
               "the settings file could once not be read or parsed; its backup is " + copy + " (" +
                   std::to_string(factsOfPath(copy).size) + " bytes)",
               "recover from it what you need, then remove it: rm " + shellWord(copy));
}

void FileExamination::examineWatching() {
    const WatchFacts facts = factsOfWatching(nearestAbove(target_));
    add(diagnosis_, "watch", facts.error ? pollingText() : "at once");
    addLimit(diagnosis_, "watchers", facts.watchers);
    addLimit(diagnosis_, "watched", facts.folders);
    if (!facts.error) return;
    report(Level::Warning,
           "changes cannot be watched, and are looked for " + pollingText() + ": " +
               facts.error.message(),
           adviceForWatching(facts.error));
}

/// A relative path is ignored, and the file does not lie where the user expects it.
void examineEnvironment(Diagnosis& diagnosis) {
    const char* const folder = std::getenv("XDG_CONFIG_HOME");
    if (folder != nullptr && *folder != '\0' && *folder != '/')
        diagnosis.findings.push_back(
            {Level::Warning,
             std::string("XDG_CONFIG_HOME is no absolute path, and is ignored: ") + folder,
             "set it to an absolute path, or remove it: unset XDG_CONFIG_HOME"});
}

}  // namespace

NSDictionary examineFile(Diagnosis& diagnosis) {
    examineEnvironment(diagnosis);
    const std::string location = QRVSettingsLocation();
    if (!location.empty()) return FileExamination(diagnosis, location).run();
    diagnosis.findings.push_back({Level::Error, "there is no home folder, so no settings file",
                                  "set HOME to the path of one"});
    return nullptr;
}

}  // namespace Tool
