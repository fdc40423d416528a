// SPDX-License-Identifier: MIT
#pragma once

#include <string>

#include "Platform/Descriptors/FileDescriptor.h"
#include "Platform/Files/FileModel.h"

namespace QRVPlatform::FolderOwner {

/// Gives a file or folder that this process has just made to the owner of the folder that it is in,
/// where the system allows it: what root makes in somebody's home belongs to that user. `made` is
/// open, and `path` is where it was made. Nothing else is ever given away, whatever others do to
/// the path meanwhile.
void give(const FileDescriptor& made, const std::string& path);

/// The file that was made at `path`, open in `made`, is in one folder with `model`.
bool hasBoth(const FileDescriptor& made, const std::string& path, const FileModel& model);

}  // namespace QRVPlatform::FolderOwner
