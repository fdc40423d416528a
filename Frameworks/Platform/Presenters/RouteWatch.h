// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <system_error>
#include <vector>

#include "Platform/Presenters/FileAccess.h"
#include "Platform/Presenters/FolderWatch.h"

namespace QRVPlatform {

/// Watches all folders whose changes can make a path name another file, and the file itself, whose
/// changes give it other contents. Its folder reports nothing then of files that are created,
/// written and closed beside it, as every save does. Where the file cannot be watched, or there is
/// none, its folder is watched for that, too.
class RouteWatch {
  public:
    explicit RouteWatch(std::string absolutePath);

    /// Watches the folders that are on the way now. Every later change of the way or the file makes
    /// an event. An error when a folder that matters cannot be watched; the others are watched.
    std::error_code arm(FolderWatch& folders);
    void release(FolderWatch& folders);

    /// What an event concerns, in rising order of weight. Neighbour: something else in the file's
    /// folder, except the lock and temporary files of saving. Contents: the file that is watched.
    /// File: the file's own name, and `followFile` has to be called. Route: the path may lead to
    /// another file now, and `arm` has to be called.
    enum class Meaning { Nothing, Neighbour, Contents, File, Route };
    [[nodiscard]] Meaning meaningOf(const FolderWatch::Event& event) const;
    /// Watches the file that has the name now. False when `arm` has to be called instead.
    bool followFile(FolderWatch& folders);
    /// The watch of the file itself; -1 when it is not watched.
    [[nodiscard]] int fileWatch() const { return fileWatch_; }

    /// Whether the permissions or the owner of the file that is watched have changed since the last
    /// call, or since it is watched.
    bool hasAccessChanged();

    /// There is a symbolic link now where there was a file, or nothing, when the path was armed.
    [[nodiscard]] bool fileHasBecomeALink() const;

    [[nodiscard]] const std::string& path() const { return path_; }

    struct Step {
        int watch;  ///< -1 when it cannot be watched
        std::string name;
        bool isFile;

        bool operator==(const Step&) const = default;
    };
    /// Two equal routes lead through the same folders by the same names.
    [[nodiscard]] const std::vector<Step>& route() const { return route_; }

  private:
    [[nodiscard]] static Meaning meaningTo(const Step& step, const FolderWatch::Event& event);
    void releaseFolders(FolderWatch& folders, std::vector<Step> next);
    void watchFile(FolderWatch& folders);

    std::string path_;
    std::string filePath_;  ///< without links; empty when a folder on the way is missing
    std::vector<Step> route_;
    int fileWatch_ = -1;
    FileAccess access_;
    /// The interest in the file's folder is that of a file that is watched itself.
    bool isNarrow_ = false;
};

}  // namespace QRVPlatform
