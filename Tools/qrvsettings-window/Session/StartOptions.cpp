// SPDX-License-Identifier: MIT
#include "Session/StartOptions.h"

#include <cstddef>

#include "Look/Text.h"
#include "Reporting/Failure.h"

namespace QRVWindow {
namespace {

constexpr const char* help =
    "Usage: qrvsettings-window [KEYPATH] [--profile NAME] [--file FILE]\n"
    "\n"
    "Look at the settings, see them change, and edit them.\n"
    "\n"
    "  KEYPATH         The setting to begin with\n"
    "  --profile NAME  Begin with the settings of this profile\n"
    "  --file FILE     Show and edit this settings file in place of the user's\n"
    "  -h, --help      Print this help\n"
    "  --version       Print the version\n";

Start refused(const std::string& reason) {
    return {
        {},
        StartAnswer{"qrvsettings-window: " + reason + " (see qrvsettings-window --help)\n", true}};
}

/// Where an option of this name stores its value; null when there is none.
std::string* placeOf(StartOptions& options, const std::string& name) {
    if (name == "--profile") return &options.profile;
    if (name == "--file") return &options.file;
    return nullptr;
}

class Reader {
  public:
    explicit Reader(const std::vector<std::string>& arguments) : arguments_(arguments) {}

    Start read() {
        // Another text would name another file or profile.
        for (const std::string& word : arguments_)
            if (toText(fromText(word)) != word)
                return refused("a word is not UTF-8, " + Tool::shortened(word));
        while (next_ < arguments_.size()) {
            const std::string& word = arguments_[next_++];
            if (Start start = take(word); start.answer) return start;
        }
        return {options_, {}};
    }

  private:
    /// With an answer, it is the end.
    Start take(const std::string& word) {
        if (areOptionsOver_ || word == "-" || !word.starts_with('-')) return takeKeyPath(word);
        if (word == "--") {
            areOptionsOver_ = true;
            return {};
        }
        if (word == "--help" || word == "-h") return {{}, StartAnswer{help}};
        if (word == "--version") return {{}, StartAnswer{"qrvsettings-window " QRV_VERSION "\n"}};
        return takeOption(word);
    }
    Start takeKeyPath(const std::string& word) {
        if (hasKeyPath_) return refused("one word too many, " + Tool::shortened(word));
        if (word.empty()) return refused("the key path is empty");
        hasKeyPath_ = true;
        options_.keyPath = word;
        return {};
    }
    Start takeOption(const std::string& word) {
        const std::size_t sign = word.find('=');
        const std::string name = word.substr(0, sign);
        std::string* const place = placeOf(options_, name);
        if (place == nullptr) return refused("there is no such option, " + Tool::shortened(name));
        if (!place->empty()) return refused(name + " stands there twice");
        if (sign == std::string::npos && next_ == arguments_.size())
            return refused(name + " needs a " + (name == "--file" ? "FILE" : "NAME") +
                           " behind it");
        *place = sign == std::string::npos ? arguments_[next_++] : word.substr(sign + 1);
        if (place->empty()) return refused("the value of " + name + " is empty");
        if (options_.profile.find('.') != std::string::npos)
            return refused("the name of a profile holds no dots");
        return {};
    }

    const std::vector<std::string>& arguments_;
    std::size_t next_ = 0;
    bool areOptionsOver_ = false;
    bool hasKeyPath_ = false;
    StartOptions options_;
};

}  // namespace

Start startOf(const std::vector<std::string>& arguments) {
    return Reader(arguments).read();
}

}  // namespace QRVWindow
