// SPDX-License-Identifier: MIT
#include "Settings/FileFacts.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <sstream>

namespace Tool {
namespace {

std::error_code lastError() {
    return {errno, std::generic_category()};
}

PathFacts::Kind kindOf(mode_t mode) {
    if (S_ISREG(mode)) return PathFacts::Kind::File;
    if (S_ISDIR(mode)) return PathFacts::Kind::Folder;
    return S_ISLNK(mode) ? PathFacts::Kind::Link : PathFacts::Kind::Other;
}

std::string nameOfUser(uid_t user) {
    const passwd* const entry = getpwuid(user);
    return entry == nullptr ? std::to_string(user) : entry->pw_name;
}

std::string firstLine(const std::string& path) {
    std::string line;
    std::getline(std::ifstream(path), line);
    return line;
}

/// The state is the letter after the name of the process. That name may hold anything.
bool isStopped(std::int64_t process) {
    const std::string line = firstLine("/proc/" + std::to_string(process) + "/stat");
    const std::size_t end = line.rfind(") ");
    return end != line.npos && line.substr(end + 2, 1) == "T";
}

std::string deviceText(dev_t device) {
    constexpr std::size_t size = 32;
    std::array<char, size> text{};
    const int length =
        std::snprintf(text.data(), text.size(), "%02x:%02x", major(device), minor(device));
    return {text.data(), static_cast<std::size_t>(std::max(length, 0))};
}

/// Holders of locks on the files whose name there, `device:inode`, `isMeant` accepts. Processes
/// that wait for a lock have an arrow in front of its kind, and are left out. The list may show a
/// lock twice when other locks change while it is read.
template <typename Predicate>
std::vector<LockFacts::Holder> holdersOf(const Predicate& isMeant) {
    std::vector<LockFacts::Holder> holders;
    std::ifstream locks("/proc/locks");
    for (std::string line; std::getline(locks, line);) {
        std::istringstream words(line);
        std::string number;
        std::string kind;
        std::string force;
        std::string access;
        std::string file;
        std::int64_t process = 0;
        words >> number >> kind >> force >> access >> process >> file;
        const bool isKnown =
            std::any_of(holders.begin(), holders.end(),
                        [process](const auto& one) { return one.process == process; });
        if (kind != "FLOCK" || !isMeant(file) || process <= 0 || isKnown) continue;
        holders.push_back({process, firstLine("/proc/" + std::to_string(process) + "/comm"),
                           isStopped(process), process == getpid()});
    }
    return holders;
}

class Descriptor {
  public:
    explicit Descriptor(int number) : number_(number) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (number_ >= 0) close(number_);
    }
    [[nodiscard]] int number() const { return number_; }

  private:
    int number_;
};

// As a save opens it: for writing, and never through a link.
int openedAsLock(const std::string& path) {
    return open(path.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

std::uint64_t limitOfWatching(const std::string& what) {
    std::uint64_t limit = 0;
    std::ifstream("/proc/sys/fs/inotify/max_user_" + what) >> limit;
    return limit;
}

bool isHeldByWriter(const Descriptor& lockFile) {
    return flock(lockFile.number(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

// With stacked file systems the device may differ between the list and the status of the file. If
// the lock is held, the entry with the same inode is the one.
LockFacts factsOfOpenLock(const Descriptor& lockFile, const struct stat& status) {
    const std::string inode = ":" + std::to_string(status.st_ino);
    const std::string name = deviceText(status.st_dev) + inode;
    LockFacts facts{LockFacts::State::Free, {}, holdersOf([&](const std::string& file) {
                        return file == name;
                    })};
    const bool isHeld = isHeldByWriter(lockFile);
    if (isHeld && facts.holders.empty())
        facts.holders = holdersOf([&](const std::string& file) { return file.ends_with(inode); });
    if (isHeld || !facts.holders.empty()) facts.state = LockFacts::State::Held;
    return facts;
}

}  // namespace

std::string modeText(unsigned mode) {
    std::string digits;
    for (; mode != 0 || digits.size() < 4; mode >>= 3U)
        digits.insert(digits.begin(), static_cast<char>('0' + (mode & 7U)));
    return digits;
}

PathFacts factsOfPath(const std::string& path) {
    struct stat status {};
    PathFacts facts;
    if (lstat(path.c_str(), &status) != 0) {
        if (errno != ENOENT && errno != ENOTDIR) facts.error = lastError();
        return facts;
    }
    constexpr mode_t permissionBits = 07777;
    facts.kind = kindOf(status.st_mode);
    facts.size = static_cast<std::uint64_t>(status.st_size);
    facts.mode = status.st_mode & permissionBits;
    facts.owner = nameOfUser(status.st_uid);
    facts.isOwnedByUser = status.st_uid == geteuid();
    facts.isOwnedByRoot = status.st_uid == 0;
    return facts;
}

bool isRoot() {
    return geteuid() == 0;
}

std::string nameOfThisUser() {
    return nameOfUser(geteuid());
}

bool isReadableFile(const std::string& path) {
    return faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS) == 0;
}

bool isWritableFolder(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           faccessat(AT_FDCWD, path.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

std::string kindName(PathFacts::Kind kind) {
    switch (kind) {
        case PathFacts::Kind::Missing:
            return "nothing";
        case PathFacts::Kind::File:
            return "a file";
        case PathFacts::Kind::Folder:
            return "a folder";
        case PathFacts::Kind::Link:
            return "a link";
        case PathFacts::Kind::Other:
            break;
    }
    return "what is neither file nor folder";
}

std::error_code errorOfOpeningLock(const std::string& path) {
    const Descriptor lockFile(openedAsLock(path));
    return lockFile.number() < 0 ? lastError() : std::error_code();
}

LockFacts factsOfLock(const std::string& path) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) return {};
    if (!S_ISREG(status.st_mode)) return {LockFacts::State::NoFile, {}, {}};
    const Descriptor lockFile(openedAsLock(path));
    if (lockFile.number() < 0) return {LockFacts::State::Unusable, lastError(), {}};
    return factsOfOpenLock(lockFile, status);
}

// Not opened for writing: whoever watches the file would take the closing for the end of a change.
std::vector<LockFacts::Holder> holdersOfFile(const std::string& path) {
    const Descriptor file(
        open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status {};
    if (file.number() < 0 || fstat(file.number(), &status) != 0) return {};
    return factsOfOpenLock(file, status).holders;
}

// A process may have ended and left the lock to another one, or may be hidden: it has no name.
std::string holdersText(const std::vector<LockFacts::Holder>& holders) {
    std::string text;
    for (const LockFacts::Holder& holder : holders) {
        text += (text.empty() ? "process " : ", process ") + std::to_string(holder.process);
        if (!holder.name.empty())
            text += " (" + holder.name + (holder.isStopped ? ", stopped)" : ")");
    }
    return text;
}

WatchFacts factsOfWatching(const std::string& folder) {
    WatchFacts facts{{}, limitOfWatching("instances"), limitOfWatching("watches")};
    const Descriptor watcher(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    if (watcher.number() < 0 ||
        inotify_add_watch(watcher.number(), folder.c_str(), IN_MOVED_TO) < 0)
        facts.error = lastError();
    return facts;
}

}  // namespace Tool
