// SPDX-License-Identifier: MIT
// Prints the value of a setting.

#include "Commands/CommandTable.h"
#include "Commands/PrintedValue.h"
#include "Options/CommonOptions.h"
#include "Process/ExitCode.h"
#include "Process/StandardOutput.h"
#include "Reporting/Failure.h"
#include "Settings/KnownKeyPaths.h"
#include "Settings/ProfileScope.h"
#include "Settings/SettingsLayer.h"
#include "Text/FileForm.h"
#include "Text/JSON.h"

namespace Tool {
namespace {

struct Options {
    std::string keyPath;
    std::string layer = "effective";
    std::string profile;
    bool json = false;
};

ExitCode get(const Options& options) {
    requireUTF8(options.keyPath);
    const SettingsLayer layer(options.layer, ProfileScope(options.profile));
    layer.open();
    const PropertyListValue value = layer.value(options.keyPath);
    if (value.isNull())
        throw Failure(Fault::NotSet, "not set, " + options.keyPath + didYouMean(options.keyPath));
    if (options.json)
        print(jsonText(value) + "\n");
    else
        printValue(value);
    return ExitCode::Done;
}

OptionList declare(Options& options) {
    return {keyPathArgument(options.keyPath), layerOption(options.layer),
            profileOption(options.profile),
            jsonFlag(options.json, "Print every value as JSON, not only dictionaries and arrays")};
}

}  // namespace

Configuration configureGet() {
    return configured(declare, get);
}

}  // namespace Tool
