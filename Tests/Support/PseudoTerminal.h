// SPDX-License-Identifier: MIT
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <functional>
#include <stdexcept>
#include <string>

/// A terminal that another process has as its standard streams.
class PseudoTerminal {
  public:
    PseudoTerminal() : ours_(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK)) {
        if (ours_ < 0 || grantpt(ours_) != 0 || unlockpt(ours_) != 0)
            throw std::runtime_error("no terminal");
        theirs_ = open(ptsname(ours_), O_RDWR | O_NOCTTY);
        if (theirs_ < 0) throw std::runtime_error("no terminal");
    }
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;
    ~PseudoTerminal() {
        close(ours_);
        close(theirs_);
    }

    /// Called in the other process, it makes one of its standard streams of it.
    [[nodiscard]] std::function<void()> becomes(int stream) const {
        return [this, stream] { dup2(theirs_, stream); };
    }
    /// What has been printed since the last time; never waits.
    [[nodiscard]] std::string printed() const {
        std::array<char, 4096> text{};
        const ssize_t size = read(ours_, text.data(), text.size());
        return {text.data(), static_cast<std::size_t>(size < 0 ? 0 : size)};
    }

  private:
    int ours_;
    int theirs_ = -1;
};
