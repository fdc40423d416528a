// SPDX-License-Identifier: MIT
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>
#include <system_error>
#include <utility>

#include "Doctor.h"
#include "FileFacts.h"
#include "LockFile.h"
#include "QRVSettings/QRVSettings.h"
#include "SettingsFile.h"
#include "ShellCommands.h"

namespace Tool {
namespace {

using Kind = PathFacts::Kind;
using Level = Finding::Level;

constexpr unsigned othersMayRead = 044;
constexpr unsigned othersMayWrite = 022;

void add(Diagnosis& diagnosis, const std::string& name, const std::string& text) {
    diagnosis.facts.push_back({name, text, text});
}

void addLimit(Diagnosis& diagnosis, const std::string& name, std::uint64_t limit) {
    if (limit > 0)
        diagnosis.facts.push_back({name, limit, "at most " + std::to_string(limit) + " per user"});
}

std::string octal(unsigned mode) {
    std::string digits;
    for (; mode != 0 || digits.size() < 4; mode >>= 3U)
        digits.insert(digits.begin(), static_cast<char>('0' + (mode & 7U)));
    return digits;
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

/// The nearest folder above that is there, or what lies in its place.
std::string nearestAbove(const std::string& path) {
    std::filesystem::path folder = std::filesystem::path(path).parent_path();
    std::error_code ignored;
    while (!std::filesystem::exists(folder, ignored) && folder != folder.parent_path())
        folder = folder.parent_path();
    return folder.string();
}

class FileExamination {
  public:
    FileExamination(Diagnosis& diagnosis, std::string location)
        : diagnosis_(diagnosis), location_(std::move(location)), target_(followed(location_)) {}

    NSDictionary run();

  private:
    void find(Level level, const std::string& message, const std::string& advice) {
        diagnosis_.findings.push_back({level, message, advice});
    }
    void examineKind(const PathFacts& facts);
    void examinePlace(const PathFacts& facts);
    void examineLink(const PathFacts& facts);
    void examineContents(const PathFacts& facts, const SettingsFileCondition& condition);
    void examineRights(const PathFacts& facts);
    void examineFolder();
    void examineLock();
    void examineHolders(const LockFacts& facts);
    void examineLeftOver();
    void examineDamagedCopies();
    void examineWatching();

    Diagnosis& diagnosis_;
    std::string location_;
    std::string target_;
};

NSDictionary FileExamination::run() {
    add(diagnosis_, "location", location_);
    const PathFacts facts = factsOfPath(location_);
    examineKind(facts);
    if (target_.empty()) return nullptr;
    const PathFacts targetFacts = factsOfPath(target_);
    const SettingsFileCondition condition = conditionOfSettingsFile();
    examinePlace(targetFacts);
    if (targetFacts.kind == Kind::File) {
        examineContents(targetFacts, condition);
        examineRights(targetFacts);
    }
    examineFolder();
    examineLock();
    examineLeftOver();
    examineDamagedCopies();
    examineWatching();
    return condition.error ? NSDictionary(nullptr) : condition.settings;
}

void FileExamination::examineKind(const PathFacts& facts) {
    add(diagnosis_, "kind", kindText(facts.kind));
    if (facts.error)
        find(Level::Error, "it cannot be told what is there: " + facts.error.message(),
             "make the folders above it searchable for this user");
    if (facts.kind != Kind::Link) return;
    if (target_.empty())
        find(Level::Error, "the link leads to itself", "remove it: rm " + shellWord(location_));
    else
        examineLink(factsOfPath(target_));
}

void FileExamination::examineLink(const PathFacts& facts) {
    add(diagnosis_, "target", target_);
    if (facts.kind == Kind::Missing)
        find(Level::Warning, "the link leads nowhere: " + target_ + " is not there",
             "put the file there, or remove the link: rm " + shellWord(location_) +
                 "; the next save makes a new file where the link leads");
}

void FileExamination::examinePlace(const PathFacts& facts) {
    if (facts.kind == Kind::Missing && !facts.error && target_ == location_)
        find(Level::Note, "there is no settings file: everything has its default",
             "nothing; the first change makes it");
    if (facts.kind == Kind::Folder)
        find(Level::Error, "a folder lies in the place of the settings file: " + target_,
             "move it away: mv " + shellWord(target_) + " " + shellWord(target_ + ".folder"));
    if (facts.kind == Kind::Other)
        find(Level::Error, "what lies in the place of the settings file is no file: " + target_,
             "move it away: mv " + shellWord(target_) + " " + shellWord(target_ + ".other"));
}

void FileExamination::examineContents(const PathFacts& facts,
                                      const SettingsFileCondition& condition) {
    if (condition.format)
        add(diagnosis_, "format", formatText(*condition.format));
    else if (facts.size == 0)
        add(diagnosis_, "format", "empty");
    diagnosis_.facts.push_back({"size", facts.size, std::to_string(facts.size) + " bytes"});
    if (condition.error)
        find(Level::Error, condition.fault(), "make it readable: chmod u+r " + shellWord(target_));
    if (!condition.damage.empty())
        find(Level::Error, condition.fault(),
             "mend it by hand, or replace it by a copy, which keeps its bytes beside the new file: "
             "qrvsettings import --replace-damaged FILE");
}

void FileExamination::examineRights(const PathFacts& facts) {
    add(diagnosis_, "mode", octal(facts.mode));
    add(diagnosis_, "owner", facts.owner);
    const bool isWritableForOthers = (facts.mode & othersMayWrite) != 0;
    if (isWritableForOthers || (facts.mode & othersMayRead) != 0)
        find(Level::Warning,
             std::string("other users may ") + (isWritableForOthers ? "change" : "read") +
                 " the settings: mode " + octal(facts.mode),
             "keep them to yourself: chmod 600 " + shellWord(target_));
    if (!facts.isOwnedByUser)
        find(Level::Warning, "the file belongs to another user: " + facts.owner,
             "run this as that user, or take the file over with chown");
}

void FileExamination::examineFolder() {
    const std::string folder = nearestAbove(target_);
    std::error_code ignored;
    if (!std::filesystem::is_directory(folder, ignored))
        find(Level::Error, "no save can succeed, this is no folder: " + folder,
             "move it away: mv " + shellWord(folder) + " " + shellWord(folder + ".other"));
    else if (!isWritableFolder(folder))
        find(Level::Error, "no save can succeed, this user may not write into the folder " + folder,
             "make it writable: chmod u+wx " + shellWord(folder));
}

void FileExamination::examineLock() {
    const std::string path = hiddenBeside(target_, ".lock");
    const LockFacts facts = factsOfLock(path);
    switch (facts.state) {
        case LockFacts::State::Missing:
            return add(diagnosis_, "lock", "none yet");
        case LockFacts::State::Free:
            return add(diagnosis_, "lock", "free");
        case LockFacts::State::Held:
            return examineHolders(facts);
        case LockFacts::State::NoFile:
            add(diagnosis_, "lock", "no file");
            return find(
                Level::Error,
                "no save can succeed, what lies in the place of the lock file is no file: " + path,
                "move it away: mv " + shellWord(path) + " " + shellWord(path + ".other"));
        case LockFacts::State::Unusable:
            add(diagnosis_, "lock", "unusable");
            return find(Level::Error,
                        "no save can succeed, the lock file cannot be opened: " +
                            facts.error.message() + ", " + path,
                        "make it usable for this user: chmod 600 " + shellWord(path));
    }
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
        find(Level::Warning, "saves wait for a stopped process: " + holdersText({holder}),
             "let it go on, or end it: kill -CONT " + std::to_string(holder.process));
    }
    if (!isSomeoneStopped)
        find(Level::Note, "another process is reading or saving at this moment",
             "nothing; look again when it is through");
}

void FileExamination::examineLeftOver() {
    const std::string path = hiddenBeside(target_, ".tmp");
    switch (factsOfPath(path).kind) {
        case Kind::Missing:
            return;
        case Kind::Folder:
            return find(Level::Error,
                        "no save can succeed, a folder lies where saves begin: " + path,
                        "move it away: mv " + shellWord(path) + " " + shellWord(path + ".other"));
        case Kind::File:
        case Kind::Link:
        case Kind::Other:
            return find(Level::Note, "a save has not come to its end, and has left " + path,
                        "nothing; the next save removes it");
    }
}

void FileExamination::examineDamagedCopies() {
    const std::filesystem::path target = target_;
    const std::string start = target.filename().string() + ".damaged-";
    std::set<std::string> copies;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(target.parent_path(), error), end;
         !error && entry != end; entry.increment(error))
        if (entry->path().filename().string().starts_with(start))
            copies.insert(entry->path().string());
    for (const std::string& copy : copies)
        find(Level::Warning,
             "the settings file was damaged once; its bytes are kept in " + copy + " (" +
                 std::to_string(factsOfPath(copy).size) + " bytes)",
             "take from it what you need, then remove it: rm " + shellWord(copy));
}

void FileExamination::examineWatching() {
    const WatchFacts facts = factsOfWatching(nearestAbove(target_));
    add(diagnosis_, "watch", facts.error ? "every 2 seconds" : "at once");
    addLimit(diagnosis_, "watchers", facts.watchers);
    addLimit(diagnosis_, "watched", facts.folders);
    if (!facts.error) return;
    const std::string message =
        "changes cannot be watched, and are looked for every 2 seconds: " + facts.error.message();
    if (facts.error == std::errc::permission_denied)
        return find(Level::Warning, message, "make the folder readable for this user");
    const bool isOutOfWatches = facts.error == std::errc::no_space_on_device;
    find(Level::Warning, message,
         std::string("end programs that watch many files, or raise the limit: sysctl "
                     "fs.inotify.") +
             (isOutOfWatches ? "max_user_watches" : "max_user_instances"));
}

/// Then the file lies where nobody expects it.
void examineEnvironment(Diagnosis& diagnosis) {
    const char* const folder = std::getenv("XDG_CONFIG_HOME");
    if (folder != nullptr && *folder != '\0' && *folder != '/')
        diagnosis.findings.push_back(
            {Level::Warning,
             std::string("XDG_CONFIG_HOME is no absolute path, so it counts for nothing: ") +
                 folder,
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
