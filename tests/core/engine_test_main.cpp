// SPDX-License-Identifier: MIT
// Main of the engine tests: one simulated device, unpaced, with an events log and unplug file.
#include "engine_test_env.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {
std::string scratchDir;
}

const std::string& engineScratchDir() { return scratchDir; }

int main(int argc, char** argv) {
  char pattern[] = "/tmp/krt40-engine-XXXXXX";
  scratchDir = mkdtemp(pattern);
  // The library reads its environment once, at the first call.
  setenv("KRT40_SIM_DEVICES", "21000001", 1);
  setenv("KRT40_SIM_OPEN_MS", "0", 1);
  setenv("KRT40_SIM_SPEED", "0", 1);
  setenv("KRT40_SIM_EVENTS", (scratchDir + "/events.jsonl").c_str(), 1);
  setenv("KRT40_SIM_UNPLUG_FILE", (scratchDir + "/unplug").c_str(), 1);
  unsetenv("KRT40_SIM_RECORD");
  ::testing::InitGoogleTest(&argc, argv);
  int result = RUN_ALL_TESTS();
  std::filesystem::remove_all(scratchDir);
  return result;
}
