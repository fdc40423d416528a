// SPDX-License-Identifier: MIT
#include "HistoryFile.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string_view>

#include "Platform/Files/Files.h"

namespace QRVHistoryInside {

namespace {

constexpr mode_t folderMode = 0700;
constexpr mode_t fileMode = 0600;

std::error_code lastError() {
    return {errno, std::generic_category()};
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
    [[nodiscard]] bool isOpen() const { return number_ >= 0; }

  private:
    int number_;
};

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == 0 || slash == std::string::npos ? "/" : path.substr(0, slash);
}

// Only what this process has just made, and only as root.
void giveToOwnerOfFolder(int made, const std::string& path) {
    struct stat folder {};
    struct stat status {};
    if (geteuid() != 0 || stat(folderOf(path).c_str(), &folder) != 0 || folder.st_uid == 0) return;
    if (fstat(made, &status) != 0 || status.st_uid != 0) return;
    const nlink_t linksWhenEmpty = S_ISDIR(status.st_mode) ? 2 : 1;
    if (status.st_nlink > linksWhenEmpty) return;
    [[maybe_unused]] const int result = fchown(made, folder.st_uid, folder.st_gid);
}

std::error_code makeFolder(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) == 0)
        return S_ISDIR(status.st_mode) ? std::error_code()
                                       : make_error_code(std::errc::not_a_directory);
    if (path != "/")
        if (const std::error_code error = makeFolder(folderOf(path))) return error;
    if (mkdir(path.c_str(), folderMode) != 0)
        return errno == EEXIST ? std::error_code() : lastError();
    const Descriptor made(open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (made.isOpen()) giveToOwnerOfFolder(made.number(), path);
    return {};
}

}  // namespace

std::string databasePath() {
    const std::string folder = QRVPlatform::userStateFolder();
    if (folder.empty()) return {};
    return folder + "/" + QRV_APPLICATION_IDENTIFIER + "/history.sqlite";
}

// The file must not be opened, and so closed, when it is there: that would release the locks of a
// connection of this process. Root does not follow somebody's link: that could lead to any file of
// the system.
std::error_code makeDatabaseFile(const std::string& path) {
    struct stat link {};
    const bool isLink = lstat(path.c_str(), &link) == 0 && S_ISLNK(link.st_mode);
    if (isLink && geteuid() == 0 && link.st_uid != 0)
        return make_error_code(std::errc::operation_not_permitted);
    struct stat status {};
    if (stat(path.c_str(), &status) == 0) {
        if (!S_ISREG(status.st_mode)) return make_error_code(std::errc::not_supported);
        if ((status.st_mode & 07777U) != fileMode && status.st_uid == geteuid() &&
            fchmodat(AT_FDCWD, path.c_str(), fileMode, isLink ? 0 : AT_SYMLINK_NOFOLLOW) != 0)
            return lastError();
        return {};
    }
    if (const std::error_code error = makeFolder(folderOf(path))) return error;
    const Descriptor made(open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, fileMode));
    if (!made.isOpen()) return errno == EEXIST ? std::error_code() : lastError();
    giveToOwnerOfFolder(made.number(), path);
    return {};
}

std::uint64_t inodeAt(const std::string& path) {
    struct stat status {};
    return stat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

// The lock of the folder keeps out others who do the same: of two who find the damage, the second
// must not rename the new database of the first.
std::string renameDamaged(const std::string& path, std::uint64_t inode, std::error_code& error) {
    const Descriptor folder(open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder.isOpen()) flock(folder.number(), LOCK_EX);
    if (inodeAt(path) != inode || inode == 0) return {};
    std::string name;
    for (int number = 1; name.empty() || inodeAt(name) != 0; ++number)
        name = path + ".damaged-" + std::to_string(number);
    // A journal that stayed would be applied to the new database.
    for (const std::string_view ending : {"-journal", "-wal", "-shm"}) {
        const std::string from = path + std::string(ending);
        // Mostly there is none.
        [[maybe_unused]] const int result =
            rename(from.c_str(), (name + std::string(ending)).c_str());
    }
    if (rename(path.c_str(), name.c_str()) == 0) return name;
    error = lastError();
    return {};
}

std::int64_t processIdentifier() {
    return getpid();
}

std::string programName() {
    return program_invocation_short_name;
}

bool isSwitchedOff() {
    const char* const value = secure_getenv("QRVSETTINGS_HISTORY");
    return value != nullptr && std::string_view(value) == "0";
}

}  // namespace QRVHistoryInside
