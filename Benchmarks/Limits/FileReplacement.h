// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <functional>
#include <string_view>

/// Writes a new file beside `path`, syncs it, renames it to `path` and syncs the folder. Ends the
/// program on failure.
void replaceFileBarely(const std::filesystem::path& path, std::string_view bytes);

/// Calls `changed` each time a file has been renamed into the folder; does not return.
void watchFolderBarely(const std::filesystem::path& folder, const std::function<void()>& ready,
                       const std::function<void()>& changed);
