// SPDX-License-Identifier: MIT
// Every mode unit of the instrument, in the order of the mode list.
#pragma once

class ModeRegistry;

// The one place that names the units: each adds its views, generators and remote rows.
void registerModeUnits(ModeRegistry& registry);
