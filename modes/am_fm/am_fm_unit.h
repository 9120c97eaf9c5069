// SPDX-License-Identifier: MIT
// The AM and FM modes as units: views, generators and remote rows 56 to 71.
#pragma once

class ModeRegistry;

void registerAmFmModes(ModeRegistry& registry);
