// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace QRVPlatform {

/// A name looked up in a folder on the way to a file.
struct RouteStep {
    std::string folder;  ///< without links
    std::string name;
    bool isFile;  ///< what the name means is the file itself; else a folder, a link, or nothing yet

    bool operator==(const RouteStep&) const = default;
};

/// The look-ups by which `path`, an absolute one, leads to a file: every folder and symbolic link
/// on the way, those of the links' targets, and the file itself. They end early where something is
/// missing: the last one is always in a folder that exists, and has the name that is missing there.
std::vector<RouteStep> stepsToFile(const std::string& path);

}  // namespace QRVPlatform
