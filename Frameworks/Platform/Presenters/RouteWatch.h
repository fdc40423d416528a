// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

#include "Platform/Presenters/FolderWatch.h"

namespace QRVPlatform {

/// Watches all folders that decide which file a path names and what is in it.
class RouteWatch {
  public:
    explicit RouteWatch(std::string absolutePath);

    /// Watches the folders that are on the way now. Whatever changes the way or the file from the
    /// return on makes an event. False when a folder that counts cannot be watched; those that can
    /// be are.
    bool arm(FolderWatch& folders);
    void release(FolderWatch& folders);

    /// What an event means to the path, in rising order of weight. Neighbour: it is about something
    /// else in the file's folder, but not about the names that coordinated saving uses there. File:
    /// about the file's own name. Route: the name may lead to another file now; `arm` has to be
    /// called.
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
    std::string filePath_;  ///< without links; empty when the way ends before
    std::vector<Step> route_;
};

}  // namespace QRVPlatform
