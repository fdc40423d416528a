// SPDX-License-Identifier: MIT
#include <fcntl.h>

#include <cerrno>
#include <set>

#include "Platform/Coordination/OpenLockFile.h"
#include "Platform/Threads/Mutex.h"
#include "Platform/Threads/Threads.h"

namespace QRVPlatform {

namespace {

/// Never destroyed: saves may run while the process exits.
class Registry {
  public:
    static Registry& ofThisProcess() {
        static Registry* const registry = made();
        return *registry;
    }

    /// No fork comes between the opening and the entry.
    OpenLockFile::Handle open(const std::string& path, int flags, mode_t mode) {
        const LockGuard lock(mutex_);
        auto file = std::make_unique<FileDescriptor>(::open(path.c_str(), flags, mode));
        if (!file->isOpen()) return nullptr;
        files_.insert(file.get());
        return OpenLockFile::Handle(file.release());
    }
    void remove(FileDescriptor* file) {
        const LockGuard lock(mutex_);
        files_.erase(file);
    }

  private:
    static Registry* made() {
        auto* const registry = new Registry;
        Threads::observeForks([]() QRV_NOT_CHECKED { ofThisProcess().mutex_.lock(); },
                              []() QRV_NOT_CHECKED { ofThisProcess().mutex_.unlock(); },
                              []() QRV_NOT_CHECKED { ofThisProcess().closeAllInChild(); });
        return registry;
    }
    void closeAllInChild() QRV_NOT_CHECKED {
        for (FileDescriptor* const file : files_) file->close();
        files_.clear();
        mutex_.unlock();
    }

    Mutex mutex_;
    std::set<FileDescriptor*> files_ QRV_GUARDED_BY(mutex_);
};

}  // namespace

void OpenLockFile::Forget::operator()(FileDescriptor* file) const {
    Registry::ofThisProcess().remove(file);
    delete file;
}

OpenLockFile::Handle OpenLockFile::open(const std::string& path, int flags, unsigned mode) {
    return Registry::ofThisProcess().open(path, flags, mode);
}

}  // namespace QRVPlatform
