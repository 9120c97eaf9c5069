// SPDX-License-Identifier: MIT
// The step sweep as a unit: view, its own generator loop and remote rows 92 to 109.
#pragma once

class ModeRegistry;

void registerStepSweepMode(ModeRegistry& registry);
