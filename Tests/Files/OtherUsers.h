// SPDX-License-Identifier: MIT
#pragma once

// Other users of the machine, and what they may do with a file. They need no entry in the password
// database. Only root can become one of them.

#include <fcntl.h>
#include <grp.h>
#include <unistd.h>

#include <functional>
#include <string>

#include "Support/ChildProcess.h"

namespace OtherUsers {

constexpr uid_t nobody = 65534;

/// From now on this process is a user of one group, for good.
inline bool become(uid_t user, gid_t group) {
    return setgroups(0, nullptr) == 0 && setgid(group) == 0 && setuid(user) == 0;
}

inline bool succeedsAs(uid_t user, gid_t group, const std::function<bool()>& body) {
    ChildProcess child([&] { return become(user, group) && body(); });
    return child.succeeded();
}

inline bool mayOpen(uid_t user, gid_t group, const std::string& path, int flags = O_RDONLY) {
    return succeedsAs(user, group, [&] { return open(path.c_str(), flags | O_CLOEXEC) >= 0; });
}

}  // namespace OtherUsers
