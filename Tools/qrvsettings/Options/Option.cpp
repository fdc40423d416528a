// SPDX-License-Identifier: MIT
#include "Options/Option.h"

#include <utility>

namespace Tool {

bool looksLikeOption(std::string_view word) {
    constexpr std::string_view startsOfNumbers = "0123456789.";
    return word.size() > 1 && word.front() == '-' &&
           startsOfNumbers.find(word[1]) == startsOfNumbers.npos && !word.starts_with("-inf") &&
           !word.starts_with("-nan");
}

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
