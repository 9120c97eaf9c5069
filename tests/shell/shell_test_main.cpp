// SPDX-License-Identifier: MIT
// Main of the shell tests: a QApplication on the offscreen platform and a log of the device
// library's calls, set before the library's first call reads its environment.
#include <QApplication>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

int main(int argc, char** argv) {
  char pattern[] = "/tmp/krt40-shell-XXXXXX";
  const std::string scratchDir = mkdtemp(pattern);
  setenv("HOME", scratchDir.c_str(), 1);
  setenv("QT_QPA_PLATFORM", "offscreen", 1);
  setenv("KRT40_SIM_EVENTS", (scratchDir + "/events.jsonl").c_str(), 1);
  QApplication app(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  const int result = RUN_ALL_TESTS();
  std::filesystem::remove_all(scratchDir);
  return result;
}
