// SPDX-License-Identifier: MIT
#pragma once

#include "Options/Command.h"

namespace Tool {

/// The program with all its commands, in the order of its help.
const Command& program();

/// @name What each command declares, in a source named after it
/// @{
Configuration configureAppearanceGet();
Configuration configureAppearanceSet();
Configuration configureApply();
Configuration configureBash();
Configuration configureCandidates();
Configuration configureColorGet();
Configuration configureColorSet();
Configuration configureColorUnset();
Configuration configureDescribe();
Configuration configureDiff();
Configuration configureDoctor();
Configuration configureExplain();
Configuration configureExport();
Configuration configureFish();
Configuration configureGet();
Configuration configureHistory();
Configuration configureHistoryClear();
Configuration configureImport();
Configuration configureList();
Configuration configureMerge();
Configuration configurePath();
Configuration configureProfiles();
Configuration configureSearch();
Configuration configureSet();
Configuration configureUndo();
Configuration configureUnset();
Configuration configureWatch();
Configuration configureZsh();
/// @}

}  // namespace Tool
