// SPDX-License-Identifier: MIT
// The multitone mode as a unit: view, generator and remote rows 80 to 91.
#pragma once

class ModeRegistry;

void registerMultitoneMode(ModeRegistry& registry);
