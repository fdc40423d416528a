// SPDX-License-Identifier: MIT
#include "Platform/Files/ExtendedAttributes.h"

#include <sys/xattr.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <functional>
#include <string_view>

namespace QRVPlatform {

namespace {

constexpr const char* posixAccessList = "system.posix_acl_access";
// The second one is what network file systems of version 4 have instead of the first.
constexpr std::array<const char*, 2> accessLists = {posixAccessList, "system.nfs4_acl"};
// These belong to the bytes of a file, or give rights to a program.
constexpr std::array<std::string_view, 3> ofTheBytes = {"security.ima", "security.evm",
                                                        "security.capability"};

bool isAbsent(int error) {
    return error == ENODATA || error == EOPNOTSUPP;
}

/// `get` is a system call that gives the size for an empty buffer, and fails with ERANGE for one
/// that is too small. Empty with `errno` set when it fails.
std::optional<std::string> whole(
    const std::function<ssize_t(char* buffer, std::size_t size)>& get) {
    for (;;) {
        const ssize_t size = get(nullptr, 0);
        if (size < 0) return std::nullopt;
        std::string bytes(static_cast<std::size_t>(size), '\0');
        const ssize_t count = bytes.empty() ? 0 : get(bytes.data(), bytes.size());
        if (count >= 0) return bytes.substr(0, static_cast<std::size_t>(count));
        if (errno != ERANGE) return std::nullopt;
    }
}

std::optional<std::string> attribute(const std::string& path, const char* name) {
    return whole([&](char* buffer, std::size_t size) {
        return lgetxattr(path.c_str(), name, buffer, size);
    });
}

bool setAttribute(const FileDescriptor& file, const char* name, const std::string& value) {
    return fsetxattr(file.number(), name, value.data(), value.size(), 0) == 0;
}

bool isOrdinary(std::string_view name) {
    const bool isOfTheBytes =
        std::find(ofTheBytes.begin(), ofTheBytes.end(), name) != ofTheBytes.end();
    return name.starts_with("user.") || (name.starts_with("security.") && !isOfTheBytes);
}

}  // namespace

// What the new file has already is not set again: a security module logs each attempt that it
// refuses.
void ExtendedAttributes::copyOrdinary(const std::string& modelPath, const FileDescriptor& file,
                                      const std::string& path) {
    const std::string names = whole([&](char* buffer, std::size_t size) {
                                  return llistxattr(modelPath.c_str(), buffer, size);
                              }).value_or("");
    for (std::size_t start = 0; start < names.size();) {
        const std::string name = names.c_str() + start;
        start += name.size() + 1;
        if (!isOrdinary(name)) continue;
        const std::optional<std::string> value = attribute(modelPath, name.c_str());
        if (value && attribute(path, name.c_str()) != value)
            setAttribute(file, name.c_str(), *value);
    }
}

ExtendedAttributes::AccessList ExtendedAttributes::accessListOf(const std::string& path) {
    for (const char* name : accessLists) {
        const std::optional<std::string> bytes = attribute(path, name);
        if (bytes || !isAbsent(errno)) return {name, bytes};
        if (errno == ENODATA) break;  // No file system has both kinds.
    }
    return {};
}

bool ExtendedAttributes::setAccessList(const FileDescriptor& file, const AccessList& list) {
    return list.bytes && setAttribute(file, list.name, *list.bytes);
}

bool ExtendedAttributes::removeAccessList(const FileDescriptor& file) {
    if (fgetxattr(file.number(), posixAccessList, nullptr, 0) < 0 && isAbsent(errno)) return true;
    return fremovexattr(file.number(), posixAccessList) == 0;
}

}  // namespace QRVPlatform
