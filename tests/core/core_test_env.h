// SPDX-License-Identifier: MIT
// Shared paths and helpers of the window and panel tests.
#pragma once

#include "shell/message_box.h"

#include <QCoreApplication>
#include <QTest>

#include <chrono>
#include <ostream>
#include <string>
#include <vector>

// Lets test failures print Qt strings.
inline std::ostream& operator<<(std::ostream& os, const QString& text) {
  return os << text.toStdString();
}
inline void PrintTo(const QString& text, std::ostream* os) {
  *os << '"' << text.toStdString() << '"';
}

const std::string& coreScratchDir();
std::string eventsPath();
std::string unplugPath();
// Where the simulated device records what it plays, when the test program asks for it by
// defining recordsPlayback() to answer true (recording is off by default: it costs disk).
std::string recordingPath();
bool recordsPlayback();

// Runs the event loop until `pred` holds or `ms` have passed; returns whether it holds.
template <typename Pred>
bool waitUntil(Pred pred, int ms = 5000) {
  return QTest::qWaitFor(pred, ms);
}

// Collects the warnings instead of showing modal boxes, while it lives.
class WarningRecorder {
public:
  struct Warning {
    QString title, text;
  };
  WarningRecorder() {
    previous = setWarningPresenter([this](QWidget*, const QString& title, const QString& text) {
      warnings.push_back({title, text});
    });
  }
  ~WarningRecorder() { setWarningPresenter(previous); }
  std::vector<Warning> warnings;

private:
  WarningPresenter previous;
};
