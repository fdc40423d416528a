// SPDX-License-Identifier: MIT
#pragma once

// Makes system calls of this process fail, or kill it, from now on. For forked children: there is
// no way back.

#include <fcntl.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <vector>

/// WriteMuch: sanitizers write a few bytes for purposes of their own, which must not be hit.
enum class SystemCall {
    ChangeDate,
    ChangeMode,
    ChangeOwner,
    Clone,
    EventDescriptor,
    FileSystem,
    Flock,
    InotifyAdd,
    InotifyStart,
    Link,
    Open,
    RemoveAttribute,
    Rename,
    SetAttribute,
    Socket,
    Sync,
    SyncData,
    WriteMuch
};

/// One operation of ours can be more than one call, depending on the machine.
inline std::vector<long> numbersOf(SystemCall call) {
    switch (call) {
        case SystemCall::ChangeDate:
            return {SYS_utimensat};
        case SystemCall::ChangeMode:
            return {SYS_fchmod};
        case SystemCall::ChangeOwner:
            return {SYS_fchown};
        case SystemCall::Clone:
            return {SYS_clone, SYS_clone3};
        case SystemCall::EventDescriptor:
            return {SYS_eventfd2};
        case SystemCall::FileSystem:
            return {SYS_statfs, SYS_fstatfs};
        case SystemCall::Flock:
            return {SYS_flock};
        case SystemCall::InotifyAdd:
            return {SYS_inotify_add_watch};
        case SystemCall::InotifyStart:
            return {SYS_inotify_init1};
        case SystemCall::Link:
#ifdef SYS_link
            return {SYS_link, SYS_linkat};
#else
            return {SYS_linkat};
#endif
        case SystemCall::Open:
            return {SYS_openat};
        case SystemCall::RemoveAttribute:
            return {SYS_fremovexattr};
        case SystemCall::Rename:
#ifdef SYS_rename
            return {SYS_rename, SYS_renameat, SYS_renameat2};
#else
            return {SYS_renameat, SYS_renameat2};
#endif
        case SystemCall::SetAttribute:
            return {SYS_fsetxattr};
        case SystemCall::Socket:
            return {SYS_socket};
        case SystemCall::Sync:
            return {SYS_fsync};
        case SystemCall::SyncData:
            return {SYS_fdatasync};
        case SystemCall::WriteMuch:
            return {SYS_write};
    }
    return {};
}

inline void installFilter(std::vector<sock_filter> program) {
    const sock_fprog description{static_cast<unsigned short>(program.size()), program.data()};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &description) != 0)
        throw std::runtime_error("cannot filter system calls");
}

inline sock_filter loadWord(std::size_t offset) {
    return BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<std::uint32_t>(offset));
}

inline sock_filter answer(std::uint32_t action) {
    return BPF_STMT(BPF_RET | BPF_K, action);
}

/// From this many bytes on a write is WriteMuch.
constexpr std::uint32_t much = 1000;

inline void answerCallWith(SystemCall call, std::uint32_t action) {
    std::vector<sock_filter> program{loadWord(offsetof(seccomp_data, nr))};
    for (const long number : numbersOf(call)) {
        const auto value = static_cast<std::uint32_t>(number);
        const unsigned char jump = call == SystemCall::WriteMuch ? 3 : 1;
        program.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, value, 0, jump));
        if (call == SystemCall::WriteMuch) {
            program.push_back(loadWord(offsetof(seccomp_data, args[2])));
            program.push_back(BPF_JUMP(BPF_JMP | BPF_JGE | BPF_K, much, 0, 1));
        }
        program.push_back(answer(action));
    }
    program.push_back(answer(SECCOMP_RET_ALLOW));
    installFilter(program);
}

inline void failCall(SystemCall call, int error) {
    answerCallWith(call, SECCOMP_RET_ERRNO | static_cast<std::uint32_t>(error));
}

inline void dieAtCall(SystemCall call) {
    answerCallWith(call, SECCOMP_RET_KILL_PROCESS);
}

/// Kills the process when it opens a file without close-on-exec.
inline void dieAtOpenWithoutCloseOnExec() {
    installFilter({
        loadWord(offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_openat, 0, 3),
        loadWord(offsetof(seccomp_data, args[2])),
        BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, O_CLOEXEC, 1, 0),
        answer(SECCOMP_RET_KILL_PROCESS),
        answer(SECCOMP_RET_ALLOW),
    });
}
