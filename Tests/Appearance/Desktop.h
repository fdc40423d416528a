// SPDX-License-Identifier: MIT
#pragma once

// A desktop of the test: a bus, a portal on it, and hosts that listen to it.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Support/ChildProcess.h"
#include "Tool/ToolSupport.h"

/// A program that obeys lines of input.
class Spoken {
  public:
    explicit Spoken(const std::string& program) : program_(program, {}, {{}, become()}) {
        close(ends_[0]);
    }
    Spoken(const Spoken&) = delete;
    Spoken& operator=(const Spoken&) = delete;
    ~Spoken() { close(ends_[1]); }

    void tell(const std::string& line) {
        const std::string text = line + '\n';
        ASSERT_EQ(write(ends_[1], text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    /// Whether it prints the line after those that were waited for before.
    bool says(const std::string& line) {
        return waitUntil([&] {
            const std::size_t place = program_.output().find(line + '\n', seen_);
            if (place != std::string::npos) seen_ = place + line.size() + 1;
            return place != std::string::npos;
        });
    }
    /// The line that begins so, once it is there.
    std::string lineOf(const std::string& beginning) {
        std::string line;
        waitUntil([&] {
            const std::string output = program_.output();
            const std::size_t place = output.find(beginning);
            const std::size_t end = output.find('\n', place);
            if (place == std::string::npos || end == std::string::npos) return false;
            line = output.substr(place, end - place);
            return true;
        });
        return line;
    }
    bool answers(const std::string& line, const std::string& answer) {
        tell(line);
        return says(answer);
    }
    [[nodiscard]] std::string output() const { return program_.output() + program_.errors(); }
    ToolSupport::Outcome finish() {
        close(std::exchange(ends_[1], -1));
        return program_.finish();
    }

  private:
    std::function<void()> become() {
        if (pipe2(ends_.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
        return [this] { dup2(ends_[0], STDIN_FILENO); };
    }
    std::array<int, 2> ends_{};
    ToolSupport::RunningTool program_;
    std::size_t seen_ = 0;
};

/// The bus is where the environment says, in the folder of the test.
class Desktop {
  public:
    void startBus() {
        const ToolSupport::Surroundings none;
        const std::vector<std::string> arguments = {"--config-file=" QRV_BUS_CONFIGURATION,
                                                    "--nofork", "--nopidfile", "--print-address"};
        bus.emplace(QRV_DBUS_DAEMON, arguments, none);
        ASSERT_TRUE(waitUntil([&] { return !bus->output().empty(); })) << bus->errors();
    }
    /// With the words that it obeys at the start.
    void startPortal(const std::vector<std::string>& words) {
        if (!bus) startBus();
        portal.emplace(QRV_PORTAL);
        ASSERT_TRUE(portal->says("connected")) << portal->output();
        tellPortal(words);
    }
    void tellPortal(const std::vector<std::string>& words) {
        for (const std::string& word : words)
            ASSERT_TRUE(portal->answers(word, "did " + word)) << portal->output();
    }

    std::optional<ToolSupport::RunningTool> bus;
    std::optional<Spoken> portal;
};
