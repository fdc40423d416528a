// SPDX-License-Identifier: MIT
#pragma once

// Reports of the command `doctor`, and settings files for it.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "Tool/ToolSupport.h"

namespace ToolSupport {

struct Report {
    int exitCode = -1;
    nlohmann::json facts;
    std::vector<std::string> messages;  ///< "level: message"
    std::vector<std::string> advices;
    std::vector<std::string> keyPaths;  ///< of the findings that have one
};

inline Report examine(const Surroundings& surroundings = {}) {
    const auto before = snapshot(configurationFolder());
    const Outcome outcome = run({"doctor", "--json"}, surroundings);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(snapshot(configurationFolder()), before);
    Report report{outcome.exitCode, {}, {}, {}, {}};
    const nlohmann::json object = nlohmann::json::parse(outcome.output, nullptr, false);
    if (!object.is_object()) return report;
    report.facts = object["facts"];
    for (const nlohmann::json& finding : object["findings"]) {
        // The machine of the test is not examined here.
        if (finding["message"].get<std::string>().starts_with("this machine has no id")) continue;
        report.messages.push_back(finding["level"].get<std::string>() + ": " +
                                  finding["message"].get<std::string>());
        report.advices.push_back(finding["advice"]);
        EXPECT_NE(report.advices.back(), "");
        if (!finding["keyPath"].is_null()) report.keyPaths.push_back(finding["keyPath"]);
    }
    return report;
}

inline void expectFinding(const Report& report, int exitCode, const std::string& message) {
    EXPECT_EQ(report.exitCode, exitCode);
    EXPECT_THAT(report.messages, testing::ElementsAre(testing::HasSubstr(message)));
}

/// As the store writes a new one.
inline void writePrivately(std::string_view bytes) {
    writeSettings(bytes);
    std::filesystem::permissions(settingsFile(), std::filesystem::perms(0600));
}

inline void writeMigrated(const std::string& entries) {
    writePrivately(
        propertyList("<key>Migration</key><dict><key>CombinedPowerItems</key><true/>"
                     "<key>Profiles</key><true/></dict>" +
                     entries));
}

inline std::string dictionary(const std::string& key, const std::string& entries) {
    return "<key>" + key + "</key><dict>" + entries + "</dict>";
}

}  // namespace ToolSupport
