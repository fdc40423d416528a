// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <system_error>

#include "Platform/Descriptors/FileDescriptor.h"
#include "Platform/Files/FileModel.h"

/// Who may do what with a new file. `file` is open, empty and of mode 0600 or less, and `path` is
/// where it is.
///
/// A file system that has no modes of files, and refuses to set them, is no error: the failure
/// handler is called, once for each path. It is one where the file would have more permissions than
/// its model.
namespace QRVPlatform::FileRights {

/// Nobody but its owner may read or write the file, whatever the folder gives to new files.
std::error_code makePrivate(const FileDescriptor& file, const std::string& path);

/// Gives it the owner, the group, the access list, the mode and the other attributes of `model`, as
/// far as the system allows. Nobody may do more with the file than with the model, at any moment:
/// what the model allows to a group or by a list that cannot be kept is allowed to nobody but the
/// owner.
std::error_code copyFrom(const FileModel& model, const FileDescriptor& file,
                         const std::string& path);

}  // namespace QRVPlatform::FileRights
