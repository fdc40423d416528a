// SPDX-License-Identifier: MIT
#pragma once

// A host that follows the desktop's appearance, without its loop: what it says, and the lines of
// input that it understands.

#include <unistd.h>

#include <array>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>

#include "QRVSettings/Adapters/DesktopAppearance.h"

template <typename Adapter>
class Follower {
  public:
    Follower() {
        QRVSettings& store = QRVSettings::sharedSettings();
        store.setMergesSaves(true);
        store.loadDefaults();
        store.prepare();
        make();
    }

    /// To be called when there is input. False when the host shall end.
    bool readInput() {
        std::array<char, 4096> bytes{};
        const ssize_t length = read(STDIN_FILENO, bytes.data(), bytes.size());
        if (length <= 0) return false;
        input_.append(bytes.data(), static_cast<std::size_t>(length));
        for (std::size_t end = input_.find('\n'); end != std::string::npos;
             end = input_.find('\n')) {
            obey(input_.substr(0, end));
            input_.erase(0, end + 1);
        }
        return true;
    }
    /// The exit status.
    int end() {
        adapter_.reset();
        const QRVSaveStatus saves = QRVSettingsWaitForSaves(std::chrono::seconds(20));
        return saves.state == QRVSaveStatus::State::Saved ? 0 : 1;
    }

  private:
    static std::string_view nameOf(DesktopAppearance appearance) {
        return appearance == DesktopAppearance::Dark    ? "dark"
               : appearance == DesktopAppearance::Light ? "light"
                                                        : "none";
    }
    void obey(const std::string& command) {
        if (command == "destroy") {
            adapter_.reset();
            std::cout << "destroyed" << std::endl;
        } else if (command == "make") {
            make();
        } else {  // any other line: the state, with what was asked
            const PropertyListValue current = QRVSettingsCurrentAppearance();
            std::cout << command << ": " << nameOf(adapter_->preference()) << ", current "
                      << (current.isString() ? current.stringView() : "none") << std::endl;
        }
    }
    void make() {
        adapter_ = std::make_unique<Adapter>([](DesktopAppearance appearance) {
            setAppearanceOfDesktop(appearance);
            std::cout << "desktop " << nameOf(appearance) << std::endl;
        });
        std::cout << "made" << std::endl;
    }

    std::unique_ptr<Adapter> adapter_;
    std::string input_;
};
