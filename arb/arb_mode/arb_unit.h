// SPDX-License-Identifier: MIT
// The arbitrary waveform mode as a unit: view, generator and remote rows 150 to 171.
#pragma once

class ModeRegistry;

void registerArbMode(ModeRegistry& registry);
