// SPDX-License-Identifier: MIT
#include "Options/Option.h"

#include <utility>

namespace Tool {

Option flag(const std::string& name, bool& isGiven, const std::string& description) {
    return {.name = name, .description = description, .store = [&isGiven](const auto&) {
                isGiven = true;
            }};
}

Option text(const std::string& name, std::string& text, const std::string& description) {
    return {.name = name,
            .description = description,
            .takes = Takes::Text,
            .store = [&text](const std::vector<std::string>& given) { text = given.front(); }};
}

Option texts(const std::string& name, std::vector<std::string>& texts,
             const std::string& description) {
    return {.name = name,
            .description = description,
            .takes = Takes::Text,
            .store = [&texts](const std::vector<std::string>& given) { texts = given; },
            .isRepeated = true};
}

Option required(Option option) {
    option.isRequired = true;
    return option;
}

}  // namespace Tool
