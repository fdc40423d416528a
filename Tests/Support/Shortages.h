// SPDX-License-Identifier: MIT
#pragma once

// What a process lacks for a while: descriptors, threads, memory for their stacks.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cstddef>
#include <fstream>
#include <stdexcept>
#include <vector>

/// A sanitizer needs descriptors and memory of its own, and counts what a child inherits as leaks.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool isSanitized = true;
#elif defined(__has_feature)
constexpr bool isSanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool isSanitized = false;
#endif

/// The limit of this process; the other one that the kernel keeps is never changed.
inline void limit(__rlimit_resource resource, rlim_t value) {
    rlimit now{};
    getrlimit(resource, &now);
    now.rlim_cur = value;
    if (setrlimit(resource, &now) != 0) throw std::runtime_error("cannot limit");
}

inline rlim_t limitOf(__rlimit_resource resource) {
    rlimit now{};
    getrlimit(resource, &now);
    return now.rlim_cur;
}

/// So many descriptors can be opened during its life.
class FreeDescriptors {
  public:
    explicit FreeDescriptors(int count) : limit_(limitOf(RLIMIT_NOFILE)) {
        limit(RLIMIT_NOFILE, 100);
        for (int fd = open("/dev/null", O_RDONLY); fd >= 0; fd = dup(fd)) used_.push_back(fd);
        for (; count > 0 && !used_.empty(); --count) {
            close(used_.back());
            used_.pop_back();
        }
    }
    FreeDescriptors(const FreeDescriptors&) = delete;
    FreeDescriptors& operator=(const FreeDescriptors&) = delete;
    ~FreeDescriptors() {
        for (const int fd : used_) close(fd);
        limit(RLIMIT_NOFILE, limit_);
    }

  private:
    rlim_t limit_;
    std::vector<int> used_;
};

/// No thread can be started during its life. The limit does not hold for root, and so root becomes
/// another user, for good: to be used in a child, after `letNobodyIn`.
class NoThreads {
  public:
    NoThreads() : limit_(limitOf(RLIMIT_NPROC)) {
        constexpr uid_t nobody = 65534;
        if (geteuid() == 0 && setuid(nobody) != 0) throw std::runtime_error("cannot leave root");
        limit(RLIMIT_NPROC, 0);
    }
    NoThreads(const NoThreads&) = delete;
    NoThreads& operator=(const NoThreads&) = delete;
    ~NoThreads() { limit(RLIMIT_NPROC, limit_); }

  private:
    rlim_t limit_;
};

/// There is no room for the stack of a thread during its life.
class NoStacks {
  public:
    NoStacks() : limit_(limitOf(RLIMIT_AS)) {
        std::size_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        limit(RLIMIT_AS,
              pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + (std::size_t{4} << 20U));
    }
    NoStacks(const NoStacks&) = delete;
    NoStacks& operator=(const NoStacks&) = delete;
    ~NoStacks() { limit(RLIMIT_AS, limit_); }

  private:
    rlim_t limit_;
};

/// Lets that user write in the working folder.
inline void letNobodyIn() {
    constexpr uid_t nobody = 65534;
    if (geteuid() != 0) return;
    ASSERT_EQ(chown(".", nobody, nobody), 0);
}

inline int countOfOpenDescriptorsUpTo(int end) {
    int count = 0;
    for (int number = 0; number < end; ++number) count += fcntl(number, F_GETFD) >= 0 ? 1 : 0;
    return count;
}
