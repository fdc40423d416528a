// SPDX-License-Identifier: MIT
// An application of several processes that share their settings: a display that follows every
// change, a settings process that makes the changes, and one that follows the desktop.

#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "AppearanceProcess.h"
#include "Display.h"
#include "Launcher.h"
#include "Platform/System/Terminal.h"
#include "SettingsProcess.h"

namespace {

int usage() {
    std::cerr
        << "usage: menubar-host [--color=auto|always|never]           all processes\n"
           "       menubar-host display [--color=auto|always|never]   the menu bar\n"
           "       menubar-host appearance                            as the desktop (needs GIO)\n"
           "       menubar-host settings                              reads lines:\n"
        << settingsCommands;
    return 2;
}

/// Empty when the option is not valid.
std::optional<Colours> coloursOf(const std::string& option) {
    if (option == "--color=always") return Colours::Terminal;
    if (option == "--color=never") return Colours::None;
    if (option != "--color=auto") return std::nullopt;
    return QRVPlatform::standardOutputIsTerminal() ? Colours::Terminal : Colours::None;
}

int run(std::vector<std::string> words) {
    if (words.size() == 1 && words[0] == "settings") return runSettingsProcess();
    if constexpr (hasAppearanceProcess)
        if (words.size() == 1 && words[0] == "appearance") return runAppearanceProcess();
    const bool isDisplay = !words.empty() && words[0] == "display";
    if (isDisplay) words.erase(words.begin());
    if (words.empty()) words.emplace_back("--color=auto");
    const std::optional<Colours> colours = coloursOf(words[0]);
    if (words.size() != 1 || !colours) return usage();
    if (isDisplay) return runDisplay(*colours);
    return runLauncher(words[0]);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return run({argv + 1, argv + argc});
    } catch (const std::exception& error) {
        std::cerr << "menubar-host: " << error.what() << '\n';
        return 1;
    }
}
