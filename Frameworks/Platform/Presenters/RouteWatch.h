// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <system_error>
#include <vector>

#include "Platform/Presenters/FolderWatch.h"

namespace QRVPlatform {

/// Watches all folders whose changes can make a path name another file, or other contents.
class RouteWatch {
  public:
    explicit RouteWatch(std::string absolutePath);

    /// Watches the folders that are on the way now. Every later change of the way or the file makes
    /// an event. An error when a folder that matters cannot be watched; the others are watched.
    std::error_code arm(FolderWatch& folders);
    void release(FolderWatch& folders);

    /// What an event concerns, in rising order of weight. Neighbour: something else in the file's
    /// folder, except the lock and temporary files of saving. File: the file's own name. Route: the
    /// path may lead to another file now, and `arm` has to be called.
    enum class Meaning { Nothing, Neighbour, File, Route };
    [[nodiscard]] Meaning meaningOf(const FolderWatch::Event& event) const;

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
    [[nodiscard]] Meaning meaningTo(const Step& step, const FolderWatch::Event& event) const;

    std::string path_;
    std::string filePath_;  ///< without links; empty when a folder on the way is missing
    std::vector<Step> route_;
};

}  // namespace QRVPlatform
