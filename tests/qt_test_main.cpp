// SPDX-License-Identifier: MIT
// Test main for suites that need a QApplication; runs on Qt's offscreen platform.
#include <QApplication>

#include <gtest/gtest.h>

#include <cstdlib>

int main(int argc, char** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QApplication app(argc, argv);
  ::testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
