// SPDX-License-Identifier: MIT
#pragma once

/// Whole-file operations. A path is bytes, absolute or relative to the working folder. Every
/// function may be called on any thread; none throws but std::bad_alloc. Symbolic links are
/// followed: the functions work on the target, and never change a link.
///
/// These functions take no lock. Of two processes that replace or back up one file at a time, one
/// may fail; NSFileCoordinator keeps them apart.
///
/// Sources: `Platform/Files/`, named as the sections below; `replaceFile` is implemented in
/// `Platform/Coordination/FileReplacementLinux.cpp`, because it works with the coordinator.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>

#include "Platform/Export.h"
#include "Platform/Values/PropertyListValue.h"

namespace QRVPlatform {

// UserFolders

/// The folder for a user's settings: `$XDG_CONFIG_HOME` when that is an absolute path, else
/// `.config` in the home folder, which is `$HOME` when that is an absolute path, else the one in
/// the password database. A privileged program (set-user-id, set-group-id, file capabilities) has
/// the folder of its effective user in the password database, whatever the environment says. Empty
/// when there is no home folder. Never ends in a slash. The folder need not exist.
QRV_EXPORT std::string userLibraryFolder();

/// The folder for what programs keep between their runs, and a user does not carry to another
/// machine: `$XDG_STATE_HOME`, else `.local/state` in the home folder, under the same rules.
QRV_EXPORT std::string userStateFolder();

// FilePaths

/// How many symbolic links in a row are followed; one more is taken for a loop.
inline constexpr int maximumSymbolicLinks = 40;

/// A path with the symbolic links of its last component followed.
struct ResolvedPath {
    std::string path;       ///< empty on error
    std::error_code error;  ///< std::errc::too_many_symbolic_link_levels
};
/// The target need not exist. A link that cannot be read counts as a file.
QRV_EXPORT ResolvedPath resolvedPath(std::string path);

/// What coordination, replacement and backups name beside a file, in its folder.
struct FilesBeside {
    std::string lock;         ///< the lock file of its writers; never deleted
    std::string temporary;    ///< the new contents while they are written
    std::string backupStart;  ///< a backup of a damaged file: this and a number from 1
};
/// `resolvedPath` is the path of the file itself, not of a link to it. `lock` and `temporary` are
/// empty when it ends in no file name.
QRV_EXPORT FilesBeside filesBeside(const std::string& resolvedPath);

// FileStatus

/// There is something at `path`: a file of any content, or a folder. False for a link to nothing,
/// and where a folder above may not be searched.
QRV_EXPORT bool fileExistsAtPath(const std::string& path);

struct FileAttributes {
    std::uint64_t size;  ///< bytes
    NSDate modificationDate;
    unsigned mode;  ///< permission bits, at most 07777
    bool isRegularFile;
};
/// Empty when there is nothing there, or where a folder above may not be searched.
QRV_EXPORT std::optional<FileAttributes> attributesOfItemAtPath(const std::string& path);
/// The same, with a modification date that no later change of the file repeats, unless somebody
/// sets it. All changes within the timestamp granularity (some milliseconds) have the same date, so
/// this waits until a later change would get another one. After a second of changes it gives up.
QRV_EXPORT std::optional<FileAttributes> settledAttributesOfItemAtPath(const std::string& path);

/// Tells one state of a file from another: two equal identities mean the same file, unchanged. Not
/// noticed are changes within the timestamp granularity of the file system (some milliseconds) that
/// keep the size: a write in place always, a replacement in the case of inode reuse.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t inode = 0;
    std::uint64_t size = 0;
    std::int64_t modificationTime = 0;  ///< nanoseconds since 1970
    std::int64_t changeTime = 0;        ///< nanoseconds since 1970

    bool operator==(const FileIdentity&) const = default;
    /// No file at all.
    [[nodiscard]] bool isMissing() const { return *this == FileIdentity{}; }
};
/// Missing also where a folder above may not be searched.
QRV_EXPORT FileIdentity identityOfFileAtPath(const std::string& path);

// FileReading

struct FileContents {
    std::string bytes;        ///< empty on error
    std::error_code error;    ///< why it could not be read
    FileIdentity identity{};  ///< of the file read, taken before its first byte

    /// There is no such file, as opposed to one that cannot be read.
    [[nodiscard]] bool isMissing() const {
        return error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
    }
};
/// All of a regular file; never waits for a pipe or device, which gives an error. A file of more
/// than `maximumSize` bytes gives std::errc::file_too_large. One that is changed in place meanwhile
/// gives a mix of old and new bytes.
QRV_EXPORT FileContents contentsOfFile(const std::string& path, std::size_t maximumSize);

// FileReplacement

/// Makes `bytes` the contents of the file. Whoever opens it, at any moment and after a crash of
/// this process, gets the old contents or the new ones, whole. Any error leaves the old file as it
/// was.
///
/// The new contents have the permission bits and the access list of the old file and, where the
/// system allows it, its owner, group, attributes of users (`user.*`) and labels of security
/// modules (`security.*`). Where the group or the list cannot be kept, nobody gets what it allowed.
/// So nobody may do more than with the old file, at any moment. A file system that sets no modes is
/// reported to the failure handler once for each path, and no error, unless the new file would have
/// more permissions than the old one.
///
/// A new file is of mode 0600, whatever access list the folder has for new files. It belongs to the
/// owner of the folder, where the system allows that: the files that root makes in somebody's home
/// are that user's.
///
/// The bytes are written to `filesBeside(...).temporary`; what an earlier process has left there is
/// removed, and nothing stays behind.
///
/// The bytes and their name in the folder have reached the disk on return; in the accessor of a
/// coordinated write of the file, the name has when that write returns. Where the folder cannot be
/// synced, a crash of the system may bring back the old file, whole; that is no error.
QRV_EXPORT std::error_code replaceFile(const std::string& path, std::string_view bytes);

// FileBackup

struct FileBackup {
    std::string path;  ///< of the backup; empty on error
    std::error_code error;
};
/// Backs up a regular file under the first free name that begins with
/// `filesBeside(...).backupStart`: nothing is overwritten. The file itself stays, and may be
/// replaced afterwards. The backup is a hard link where the file system has them, else a copy with
/// the owner, permissions and attributes that `replaceFile` would keep.
QRV_EXPORT FileBackup backUpFile(const std::string& path);

// FileFailures

/// Something that could not be done to a file.
struct FileFailure {
    std::string operation;  ///< what was attempted, such as "replace file"
    std::string path;
    std::error_code error;
    /// Of the value in the file that could not be written; empty when it is about the whole file.
    std::string keyPath{};
};
/// Called on the thread at work whenever coordinating, replacing or backing up a file fails, before
/// the function concerned returns the same error, and whenever the store cannot save a setting,
/// refuses to write one, or leaves out a file of the site or a part of it.
/// "set mode of file" alone does not make another operation fail (see `replaceFile`). Also, with an
/// empty path, when a queue or the watch of files cannot get what it needs from the system
/// (Dispatch.h, NSFilePresenter.h). Null, as at the start, for none. A call under way on another
/// thread may still use the previous handler after this returns.
QRV_EXPORT void setFileFailureHandler(std::function<void(const FileFailure&)> handler);

/// Calls the handler, if there is one: for libraries that build on this one.
QRV_EXPORT void reportFileFailure(const FileFailure& failure);

}  // namespace QRVPlatform
