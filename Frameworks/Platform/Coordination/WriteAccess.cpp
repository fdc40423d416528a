// SPDX-License-Identifier: MIT
#include "Platform/Coordination/WriteAccess.h"

#include <utility>

#include "Platform/Files/FilePaths.h"
#include "Platform/Files/Files.h"

namespace QRVPlatform {

namespace {

thread_local WriteAccess::OnThisThread* innermost = nullptr;

}  // namespace

WriteAccess::WriteAccess(const NSFilePresenter* performer, const std::string& path)
    : performer_(performer), path_(path) {}

WriteAccess::~WriteAccess() {
    if (isReplaced_) FilePaths::syncFolder(FilePaths::folderOf(path_));
}

void WriteAccess::noteReplacement(FileDescriptor oldFile, HeldFile newFile) {
    isReplaced_ = true;
    oldFile_ = std::move(oldFile);
    newFile_ = std::move(newFile);
}

WriteAccess* WriteAccess::onThisThreadTo(const std::string& path) {
    if (innermost == nullptr) return nullptr;
    const OnThisThread::Place place(path);
    for (const OnThisThread* entry = innermost; entry != nullptr; entry = entry->outer_)
        if (entry->place_ == place) return &entry->access_;
    return nullptr;
}

// The identity of the file itself would not do: it may not exist yet, and every replacement makes
// another one.
WriteAccess::OnThisThread::Place::Place(const std::string& path)
    : name(path.substr(path.rfind('/') + 1)) {
    const FileIdentity folder = identityOfFileAtPath(FilePaths::folderOf(path));
    folderDevice = folder.device;
    folderInode = folder.inode;
}

WriteAccess::OnThisThread::OnThisThread(WriteAccess& access)
    : access_(access), place_(access.path_), outer_(std::exchange(innermost, this)) {}

WriteAccess::OnThisThread::~OnThisThread() {
    innermost = outer_;
}

}  // namespace QRVPlatform
