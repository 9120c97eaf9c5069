// SPDX-License-Identifier: MIT
// Item texts of the shared mode enumerations.
#include "modes/mode_types.h"

const char* const modShapeTexts[4] = {"Sine", "Square", "Triangle", "Ramp"};
const char* const triggerTypeTexts[2] = {"Continuous", "Single"};
