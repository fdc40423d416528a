// SPDX-License-Identifier: MIT
#pragma once

// Reads the files of the site: its defaults, and its locks.

#include <string>
#include <string_view>
#include <vector>

#include "Platform/Values/PropertyListValue.h"
#include "QRVSettings/QRVSettings.h"

namespace QRVInside {

/// What follows the name of a list in that of the file of its locks.
inline constexpr std::string_view endingOfLocks = ".locks";
/// Bytes of a file of locks.
inline constexpr std::size_t maximumSizeOfLocks = std::size_t{1} * 1024 * 1024;

using SiteFault = QRVSiteDefaults::Fault;

/// A value of a list that is no dictionary.
struct SiteValue {
    std::string keyPath;
    PropertyListValue value;
};
/// The values of the list's root. What is left out is added to the faults.
std::vector<SiteValue> siteValues(const NSDictionary& root, const std::string& file,
                                  std::vector<SiteFault>& faults);

/// The key paths that a file of locks with these bytes locks with all below them. Lines that are
/// left out are added to the faults.
std::vector<std::string> siteLocks(std::string_view bytes, const std::string& file,
                                   std::vector<SiteFault>& faults);

/// A file of the site that was read.
struct SiteFile {
    std::string path;
    std::vector<SiteValue> values;   ///< of a list
    std::vector<std::string> locks;  ///< of a file of locks
};
struct SiteFiles {
    std::vector<SiteFile> files;  ///< those of the first folder first
    std::vector<SiteFault> faults;
};
/// Those of the folders that exist, but for the file at `settings` itself. `name` is that of a
/// list.
SiteFiles readSiteFiles(const std::vector<std::string>& folders, const std::string& name,
                        const std::string& settings);

}  // namespace QRVInside
