// SPDX-License-Identifier: MIT
// Shared paths and helpers of the window and panel tests.
#pragma once

#include <QCoreApplication>
#include <QTest>

#include <chrono>
#include <string>

const std::string& coreScratchDir();
std::string eventsPath();
std::string unplugPath();

// Runs the event loop until `pred` holds or `ms` have passed; returns whether it holds.
template <typename Pred>
bool waitUntil(Pred pred, int ms = 5000) {
  return QTest::qWaitFor(pred, ms);
}
