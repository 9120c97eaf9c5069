// SPDX-License-Identifier: MIT
// The IEEE 802.11a mode as a unit: view and generator; it answers no remote rows.
#pragma once

class ModeRegistry;

void registerWlanNonHtMode(ModeRegistry& registry);
