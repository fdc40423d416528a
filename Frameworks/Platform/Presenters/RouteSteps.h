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

/// The look-ups that decide what `path`, an absolute one, names: every folder and symbolic link on
/// the way, those of the links' targets, and the file itself. They end early at what is missing:
/// the last one is always in a folder that was there, under the name that would have led on.
std::vector<RouteStep> stepsToFile(const std::string& path);

}  // namespace QRVPlatform
