// SPDX-License-Identifier: MIT
// The IEEE 802.11ac mode as a unit: view and generator; it answers no remote rows.
#pragma once

class ModeRegistry;

void registerWlanVhtMode(ModeRegistry& registry);
