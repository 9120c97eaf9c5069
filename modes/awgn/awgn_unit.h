// SPDX-License-Identifier: MIT
// The AWGN mode as a unit: view, generator and remote rows 120 to 127.
#pragma once

class ModeRegistry;

void registerAwgnMode(ModeRegistry& registry);
