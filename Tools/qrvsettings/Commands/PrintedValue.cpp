// SPDX-License-Identifier: MIT
#include "Commands/PrintedValue.h"

#include "Process/StandardOutput.h"
#include "Process/StandardStreams.h"
#include "Reporting/PrintableText.h"
#include "Text/JSON.h"
#include "Text/ValueText.h"

namespace Tool {

void printValue(const PropertyListValue& value) {
    const std::string bare = bareText(value);
    const bool needsEscapes = standardOutputIsTerminal() && holdsControls(bare);
    print((needsEscapes ? jsonText(value) : bare) + "\n");
}

}  // namespace Tool
