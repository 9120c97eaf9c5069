// SPDX-License-Identifier: MIT
// The pulse mode as a unit: view, generator and remote rows 72 to 79.
#pragma once

class ModeRegistry;

void registerPulseMode(ModeRegistry& registry);
