// SPDX-License-Identifier: MIT
#include <fcntl.h>

#include <cerrno>
#include <set>

#include "Platform/Descriptors/CloseOnFork.h"
#include "Platform/Threads/Mutex.h"
#include "Platform/Threads/PerProcess.h"

namespace QRVPlatform {

namespace {

class OpenFiles {
  public:
    OpenFiles() = default;
    /// In a forked child: closes those of the parent.
    explicit OpenFiles(OpenFiles& parent) QRV_REQUIRES(parent.mutex_) {
        for (FileDescriptor* const file : parent.files_) file->close();
    }
    void lock() QRV_ACQUIRES(mutex_) { mutex_.lock(); }
    void unlock() QRV_RELEASES(mutex_) { mutex_.unlock(); }

    /// No fork comes between the opening and the entry.
    CloseOnFork::Handle open(const std::string& path, int flags, mode_t mode) {
        const LockGuard lock(mutex_);
        auto file = std::make_unique<FileDescriptor>(::open(path.c_str(), flags, mode));
        if (!file->isOpen()) return nullptr;
        files_.insert(file.get());
        return CloseOnFork::Handle(file.release());
    }
    void remove(FileDescriptor* file) {
        const LockGuard lock(mutex_);
        files_.erase(file);
    }

  private:
    Mutex mutex_;
    std::set<FileDescriptor*> files_ QRV_GUARDED_BY(mutex_);
};

}  // namespace

void CloseOnFork::Forget::operator()(FileDescriptor* file) const {
    PerProcess<OpenFiles>::current().remove(file);
    delete file;
}

CloseOnFork::Handle CloseOnFork::open(const std::string& path, int flags, unsigned mode) {
    return PerProcess<OpenFiles>::current().open(path, flags, mode);
}

}  // namespace QRVPlatform
