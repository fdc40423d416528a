// SPDX-License-Identifier: MIT
#include "Platform/Coordination/WriteAccess.h"

#include <cstdio>
#include <utility>

#include "Platform/Files/FileFailures.h"
#include "Platform/Files/FilePaths.h"
#include "Platform/Files/Files.h"
#include "Platform/Presenters/PresenterRegistry.h"

namespace QRVPlatform {

namespace {

thread_local WriteAccess::OnThisThread* innermost = nullptr;

}  // namespace

WriteAccess::WriteAccess(const NSFilePresenter* performer, const std::string& path,
                         ReadersWait readersWait)
    : performer_(performer), path_(path), readersWait_(readersWait) {}

WriteAccess::~WriteAccess() {
    lockAgainstReaders_ = {};
    if (isReplaced_) FilePaths::syncFolder(FilePaths::folderOf(path_));
}

void WriteAccess::lockAgainstReaders() {
    if (readersWait_ == ReadersWait::DuringAccess)
        lockAgainstReaders_ = FileLock::againstReaders(path_);
}

// The new file is locked before anybody can open it under its name. The lock of the old one ends
// here, behind the rename, and its readers turn to the new one.
std::error_code WriteAccess::putInPlace(const std::string& newFile) {
    FileLock ofOld;
    FileLock ofNew;
    if (readersWait_ != ReadersWait::Never && !lockAgainstReaders_.isOn(path_))
        ofOld = FileLock::againstReaders(path_);
    if (readersWait_ == ReadersWait::DuringAccess) ofNew = FileLock::againstReaders(newFile);
    // Before the rename: afterwards the path may name the file of somebody who does not coordinate.
    const HeldFile held = HeldFile::at(newFile);
    const std::error_code error = PresenterRegistry::replaceFor(performer_, newFile, [&] {
        return std::rename(newFile.c_str(), path_.c_str()) == 0 ? std::error_code()
                                                                : FileFailures::lastError();
    });
    if (error) return error;
    isReplaced_ = true;
    newFile_ = held.afterRename();
    if (!ofOld.isHeld()) std::swap(ofOld, lockAgainstReaders_);
    lockAgainstReaders_ = std::move(ofNew);
    ofOld.release();
    ofReplaced_ = std::move(ofOld);
    return {};
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
