// SPDX-License-Identifier: MIT
#include "Display.h"

#include <algorithm>
#include <chrono>
#include <iostream>

#include "KeyPaths.h"
#include "Platform/Dispatch/Dispatch.h"
#include "Platform/System/Terminal.h"
#include "Processes.h"
#include "QRVSettings/QRVSettings.h"
#include "StartUp.h"

namespace {

class Display {
  public:
    explicit Display(Colours colours) : colours_(colours) {}

    void start() {
        startUp([this](const NSArray&) {
            followSharedState();
            draw();
        });
        followSharedState();
        update();
    }

  private:
    /// The profile and the appearance are properties of each process; these are their settings.
    static void followSharedState() {
        QRVSettings& store = QRVSettings::sharedSettings();
        const PropertyListValue profile = QRVSettingsObjectForKeyPath(KeyPaths::activeProfile);
        store.setActiveProfile(profile.isString() ? profile.stringValue() : "default");
        store.setCurrentAppearance(QRVSettingsObjectForKeyPath(KeyPaths::appearance));
    }

    void update() {
        constexpr std::size_t mostSamples = 100;
        history_.push_back(sampler_.sample());
        if (history_.size() > mostSamples) history_.pop_front();
        draw();
        const auto seconds = QRVSettingsObjectForKeyPath(KeyPaths::updateFrequency).integerValue();
        DispatchMainQueue::shared().asyncAfter(
            std::chrono::seconds(std::clamp<std::int64_t>(seconds, 1, 3600)), [this] { update(); });
    }

    void draw() const {
        const std::string line = menuBarLine(history_, colours_);
        if (isTerminal_)
            std::cout << "\r\x1b[K" << line << std::flush;
        else
            std::cout << line << std::endl;
    }

    Colours colours_;
    bool isTerminal_ = QRVPlatform::standardOutputIsTerminal();
    SystemLoadSampler sampler_;
    LoadHistory history_;
};

}  // namespace

int runDisplay(Colours colours) {
    Display display(colours);
    display.start();
    runUntilAskedToEnd();
    return endUp(0);
}
