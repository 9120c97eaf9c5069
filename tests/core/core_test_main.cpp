// SPDX-License-Identifier: MIT
// Main of the window and panel tests: a QApplication on the offscreen platform, a private home
// folder for the data directory, and a simulated device unless the test run names others.
#include "core_test_env.h"

#include "persist/preferences.h"

#include <QApplication>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace {
std::string scratchDir;
}

const std::string& coreScratchDir() { return scratchDir; }
std::string eventsPath() { return scratchDir + "/events.jsonl"; }
std::string unplugPath() { return scratchDir + "/unplug"; }
std::string recordingPath() { return scratchDir + "/recording"; }
__attribute__((weak)) bool recordsPlayback() { return false; }

int main(int argc, char** argv) {
  char pattern[] = "/tmp/krt40-core-XXXXXX";
  scratchDir = mkdtemp(pattern);
  setenv("HOME", scratchDir.c_str(), 1);
  setenv("XDG_CONFIG_HOME", (scratchDir + "/config").c_str(), 1);
  // Offscreen unless a run asks for a real display (the monitor's screenshot runs under Xvfb).
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  // A test run may name its own devices; the library reads its environment once.
  setenv("KRT40_SIM_DEVICES", "21000001", 0);
  setenv("KRT40_SIM_OPEN_MS", "0", 1);
  setenv("KRT40_SIM_EVENTS", eventsPath().c_str(), 1);
  setenv("KRT40_SIM_UNPLUG_FILE", unplugPath().c_str(), 1);
  if (recordsPlayback())
    setenv("KRT40_SIM_RECORD", recordingPath().c_str(), 1);
  else
    unsetenv("KRT40_SIM_RECORD");
  // Each panel listens on a free port of its own, never on the instrument's usual one.
  preferences.scpiPort = 0;
  QApplication app(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  int result = RUN_ALL_TESTS();
  std::filesystem::remove_all(scratchDir);
  return result;
}
