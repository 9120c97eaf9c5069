// SPDX-License-Identifier: MIT
// Shared paths of the engine tests.
#pragma once

#include <string>

// Temporary folder of this test process: "events.jsonl" and the unplug file "unplug".
const std::string& engineScratchDir();
