// SPDX-License-Identifier: MIT
// The Bluetooth LE mode as a unit (view and generator), with the fixed GFSK burst of index 12.
#pragma once

class ModeRegistry;

// Index 17 with its view; index 12 has a generator only, which nothing in the panel selects.
void registerBleMode(ModeRegistry& registry);
