// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

#include "Platform/Descriptors/FileDescriptor.h"

/// Extended attributes, among them access lists.
namespace QRVPlatform::ExtendedAttributes {

/// Copies those of users (`user.*`) and the labels of security modules (`security.*`), each where
/// the system allows it. `file` is open, and `path` is where it is.
void copyOrdinary(const std::string& modelPath, const FileDescriptor& file,
                  const std::string& path);

/// An access list gives permissions to more users and groups than the mode can.
struct AccessList {
    const char* name = nullptr;          ///< of the attribute; null when there is no list
    std::optional<std::string> bytes{};  ///< empty when it cannot be read
};
AccessList accessListOf(const std::string& path);
/// Sets the mode, too. False when the system does not allow it.
bool setAccessList(const FileDescriptor& file, const AccessList& list);
/// False when there is one and it stays.
bool removeAccessList(const FileDescriptor& file);

}  // namespace QRVPlatform::ExtendedAttributes
