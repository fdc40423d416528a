// SPDX-License-Identifier: MIT
#include "Platform/Coordination/WriteAccess.h"

#include <utility>

#include "Platform/Files/FilePaths.h"

namespace QRVPlatform {

namespace {

thread_local WriteAccess* innermost = nullptr;

}  // namespace

WriteAccess::WriteAccess(const NSFilePresenter* performer, const std::string& path)
    : performer_(performer), path_(path), folder_(FilePaths::folderOf(path)), outer_(innermost) {
    innermost = this;
}

WriteAccess::~WriteAccess() {
    innermost = outer_;
    if (isReplaced_) FilePaths::syncFolder(folder_);
}

void WriteAccess::noteReplacement(FileDescriptor oldFile) {
    isReplaced_ = true;
    oldFile_ = std::move(oldFile);
}

WriteAccess* WriteAccess::to(const std::string& path) {
    for (WriteAccess* access = innermost; access != nullptr; access = access->outer_)
        if (access->path_ == path) return access;
    return nullptr;
}

}  // namespace QRVPlatform
