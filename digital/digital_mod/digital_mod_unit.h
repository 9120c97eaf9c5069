// SPDX-License-Identifier: MIT
// The digital modulation mode as a unit: view, generators and remote rows 128 to 149.
#pragma once

class ModeRegistry;

void registerDigitalModMode(ModeRegistry& registry);
