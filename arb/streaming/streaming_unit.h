// SPDX-License-Identifier: MIT
// The streaming mode as a unit: view and its own block loop; it has no remote rows.
#pragma once

class ModeRegistry;

void registerStreamingMode(ModeRegistry& registry);
