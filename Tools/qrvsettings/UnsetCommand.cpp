// SPDX-License-Identifier: MIT
#include <CLI/CLI.hpp>

#include <memory>

#include "CommandOptions.h"
#include "Commands.h"
#include "Input.h"
#include "Saving.h"
#include "Scope.h"
#include "SettingsFile.h"

namespace Tool {
namespace {

struct Options {
    std::vector<std::string> keyPaths;
    std::string profile;
    DamagedFile damagedFile = DamagedFile::Refused;
};

/// Names the others on standard error.
std::vector<std::string> storedOnes(const Scope& scope, const std::vector<std::string>& keyPaths) {
    std::vector<std::string> stored;
    for (const std::string& keyPath : keyPaths) {
        if (scope.stored(keyPath).isNull())
            say("not set, " + keyPath);
        else
            stored.push_back(keyPath);
    }
    return stored;
}

void remove(const Scope& scope, const std::vector<std::string>& keyPaths) {
    for (const std::string& keyPath : keyPaths)
        // It may be gone with one above it; to remove it again would create what is above.
        if (!scope.stored(keyPath).isNull()) scope.set(nullptr, keyPath);
}

std::vector<std::string> storedKeyPaths(const Scope& scope,
                                        const std::vector<std::string>& keyPaths) {
    std::vector<std::string> stored;
    stored.reserve(keyPaths.size());
    for (const std::string& keyPath : keyPaths) stored.push_back(scope.storedKeyPath(keyPath));
    return stored;
}

ExitCode unset(const Options& options) {
    for (const std::string& keyPath : options.keyPaths) requireUTF8(keyPath);
    requireWritableSettingsFile(options.damagedFile);
    const Scope scope(options.profile);
    const std::vector<std::string> stored = storedOnes(scope, options.keyPaths);
    // What is removed may be what the application cannot start with.
    if (!stored.empty())
        save(
            storedKeyPaths(scope, stored), [&] { remove(scope, stored); }, StartUp::MayFail);
    return stored.size() == options.keyPaths.size() ? ExitCode::Done : ExitCode::NotSet;
}

}  // namespace

void addUnsetCommand(CLI::App& program, Action& action) {
    CLI::App& command =
        *program.add_subcommand("unset", "Remove stored settings, so that the defaults hold again");
    const auto options = std::make_shared<Options>();
    addTexts(command, "KEYPATH", options->keyPaths, "Keys joined by dots; one or more")->required();
    addProfile(command, options->profile);
    addReplaceDamaged(command, options->damagedFile);
    command.footer(
        "Key paths that are not stored are named on standard error, and the exit code is 1; the\n"
        "others are removed all the same.\n\n"
        "Example: qrvsettings unset Menu.Theme.Dark CPU.Menubar.Enabled");
    command.callback([options, &action] { action = [options] { return unset(*options); }; });
}

}  // namespace Tool
