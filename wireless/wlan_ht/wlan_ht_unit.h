// SPDX-License-Identifier: MIT
// The IEEE 802.11n mode as a unit: view and generator; it answers no remote rows.
#pragma once

class ModeRegistry;

void registerWlanHtMode(ModeRegistry& registry);
