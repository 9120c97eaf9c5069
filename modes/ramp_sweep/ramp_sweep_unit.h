// SPDX-License-Identifier: MIT
// The ramp sweep as a unit: view, generator and remote rows 110 to 119.
#pragma once

class ModeRegistry;

void registerRampSweepMode(ModeRegistry& registry);
