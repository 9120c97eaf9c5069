// SPDX-License-Identifier: MIT
// Shared fixture of the panel tests: a front panel over a simulated device, the events log.
#pragma once

#include "core/central_widget.h"
#include "core/device.h"
#include "core/impairment_widget.h"
#include "core_test_env.h"
#include "shell/error_queue.h"
#include "support/events_log.h"

#include <QFile>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdio>

// The device is closed at first; connectDevice() opens it and starts the thread. A left-over
// unplug file and error log entries of earlier tests are cleared. `Units` registers the modes.
template <void (*Units)(ModeRegistry&) = registerModeUnits>
class PanelFixtureOf : public ::testing::Test {
protected:
  void SetUp() override {
    std::remove(unplugPath().c_str());
    device.setImpairments(&impairments);
    errorLogClear();
  }
  void TearDown() override {
    central.stopStreaming();
    device.close();
    std::remove(unplugPath().c_str());
  }
  void connectDevice() {
    ASSERT_TRUE(device.open(21000001));
    central.startStreamingQuiet();
  }

  // The group as saved in a preset file `name`: "key=value" in key order, joined by '|'; the
  // members of arrays too, as "array/1/key".
  QString savedGroup(const QString& group, const QString& name = "saved.ini") {
    central.savePreset(dir.filePath(name));
    QSettings s(dir.filePath(name), QSettings::IniFormat);
    s.beginGroup(group);
    QStringList pairs;
    for (const QString& key : s.allKeys()) pairs << key + "=" + s.value(key).toString();
    return pairs.join('|');
  }

  // Loads a preset file of the given text.
  void loadText(const QByteArray& text) {
    QFile file(dir.filePath("hand-made.ini"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
    file.close();
    central.loadPreset(file.fileName());
  }

  Device device;
  ImpairmentWidget impairments;
  CentralWidget central{&device, &impairments, nullptr, Qt::WindowFlags(), Units};
  EventsLog log{eventsPath()};
  QTemporaryDir dir;
};

using PanelFixture = PanelFixtureOf<>;
