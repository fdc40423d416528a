// SPDX-License-Identifier: MIT
#include "Commands/Leniency.h"

#include "Reporting/Failure.h"

namespace Tool {
namespace {

void refuse(const std::string& objection, const char* option) {
    if (!objection.empty())
        throw Failure(Fault::WrongValue, objection + " (" + option + " stores it all the same)");
}

void requireNoTypo(const SettingObjections& objections, const std::string& keyPath,
                   const PropertyListValue& value, const ProfileScope& scope) {
    refuse(objections.toKeyPath(
               keyPath, value,
               [&scope](const std::string& used) { return !scope.stored(used).isNull(); }),
           "--new");
}

}  // namespace

OptionList withLeniency(OptionList options, Leniency& leniency) {
    options.push_back(flag("--new", leniency.takesTypos,
                           "Store it also when KEYPATH looks like a typo of a known one"));
    options.push_back(flag("--any-kind", leniency.takesAnyKind,
                           "Store it also when the setting takes values of another kind or range"));
    return options;
}

void requireUsual(const SettingObjections& objections, const std::string& keyPath,
                  const PropertyListValue& value, const ProfileScope& scope,
                  const Leniency& leniency) {
    if (!leniency.takesTypos) requireNoTypo(objections, keyPath, value, scope);
    if (!leniency.takesAnyKind) refuse(objections.toValue(keyPath, value), "--any-kind");
}

void requireUsualColor(const std::string& keyPath, const ProfileScope& scope,
                       const Leniency& leniency) {
    const SettingObjections objections;
    if (!leniency.takesTypos) requireNoTypo(objections, keyPath, nullptr, scope);
    if (!leniency.takesAnyKind) refuse(objections.toColor(keyPath), "--any-kind");
}

}  // namespace Tool
