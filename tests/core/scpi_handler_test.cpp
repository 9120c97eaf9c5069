// SPDX-License-Identifier: MIT
// The remote interface end to end inside the process: a real TCP client against the panel's
// server, line in, exact reply out, and the state it leaves behind.
#include "core/central_widget.h"

#include "core/device.h"
#include "core/impairment_widget.h"
#include "panel_fixture.h"
#include "scpi_client.h"
#include "persist/paths.h"
#include "remote/scpi_remote_dialog.h"
#include "shell/error_queue.h"

#include <QFile>

#include <gtest/gtest.h>

namespace {

using ScpiHandlerTest = PanelFixture;

TEST_F(ScpiHandlerTest, IdentityAndSystemRowsWithoutADevice) {
  ScpiClient client(central.scpiServerPort());
  ASSERT_TRUE(client.connected);
  const std::vector<std::pair<QString, QString>> rows = {
      {"*IDN?", "Tarnwick,,,"},
      {":SYST:DEV:ACT?", "0"},
      {":SYST:DEV:COUN?", "1"},
      {":SYST:DEV:LIST?", "21000001"},
      {":STAT:OPER:COND?", "0"},
      {":SYST:ERR:NEXT?", "0,No Error;"},
      {":FREQ?;:POW?", "1e+09;-20"},
      {":FREQ? MIN;:FREQ? MAX", "3e+07;6e+09"},
      {":POW? MIN;:POW? MAX;:POW:STEP? MIN;:POW:STEP? MAX", "-120;10;0;100"},
  };
  for (const auto& [line, reply] : rows) EXPECT_EQ(client.query(line), reply) << line;
}

TEST_F(ScpiHandlerTest, SourceRowsClampAndLogAsTheFrontPanel) {
  ScpiClient client(central.scpiServerPort());
  struct Row {
    QString line;
    double frequency, step, level, levelStep;
    QString logged;  // empty: nothing logged
  };
  const QString center = "-1,Setting clamped;Center frequency clamped";
  const QString step = "-1,Setting clamped;Step frequency clamped";
  const std::vector<Row> rows = {
      {":FREQ 1", 30e6, 1e6, -20, 10, center},
      {":FREQ 6.5 GHz", 6e9, 1e6, -20, 10, center},
      {"FREQ 1 GHz", 1e9, 1e6, -20, 10, ""},
      {":SOUR:FREQ:STEP 250 kHz", 1e9, 250e3, -20, 10, ""},
      {":FREQ UP", 1.00025e9, 250e3, -20, 10, ""},
      {":FREQ:STEP -5", 1.00025e9, 0, -20, 10, step},
      {":FREQ:STEP 7 GHz", 1.00025e9, 6e9, -20, 10, step},
      {":FREQ UP", 6e9, 6e9, -20, 10, center},
      {":FREQ 1234.5678 MHz", 1.2345678e9, 6e9, -20, 10, ""},
      {":POW 50", 1.2345678e9, 6e9, 10, 10, ""},
      {":POW:STEP 150", 1.2345678e9, 6e9, 10, 100, ""},
      {":POW DOWN", 1.2345678e9, 6e9, -90, 100, ""},
      {":POW DOWN", 1.2345678e9, 6e9, -120, 100, ""},
      {":POW:STEP -5", 1.2345678e9, 6e9, -120, 0, ""},
      {":SOUR1:FREQ 2e9", 1.2345678e9, 6e9, -120, 0, ""},  // digits never match
      {":FREQ 1e10", 1.2345678e9, 6e9, -120, 0, ""},       // the exponent takes one digit
      {":POW nan;:POW:STEP inf;:POW -inf", 1.2345678e9, 6e9, -120, 0, ""},  // no number
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.line.toStdString());
    client.command(row.line);
    EXPECT_DOUBLE_EQ(central.frequency(), row.frequency);
    EXPECT_DOUBLE_EQ(central.frequencyStep(), row.step);
    EXPECT_DOUBLE_EQ(central.level(), row.level);
    EXPECT_DOUBLE_EQ(central.levelStep(), row.levelStep);
    EXPECT_EQ(errorLogCount(), row.logged.isEmpty() ? 0 : 1);
    if (!row.logged.isEmpty()) {
      EXPECT_EQ(client.query(":SYST:ERR?"), row.logged);
    }
  }
  EXPECT_EQ(client.query(":FREQ?"), "1234567800");  // all the digits
  // MIN and MAX answer on the setting row of the step; its query ignores them.
  EXPECT_EQ(client.query(":FREQ:STEP MAX"), "6e+09");
  EXPECT_EQ(client.query(":FREQ:STEP MIN"), "0");
  EXPECT_EQ(client.query(":FREQ:STEP 1e3;:FREQ:STEP? MAX"), "1000");
}

TEST_F(ScpiHandlerTest, IdentitySwitchesAndOperationCompleteWithADevice) {
  connectDevice();
  ScpiClient client(central.scpiServerPort());
  EXPECT_EQ(client.query("*IDN?"), "Tarnwick,KRT40A,21000001,3");
  EXPECT_EQ(client.query(":SYST:DEV:ACT?"), "1");
  EXPECT_EQ(client.query(":SYST:DEV:COUN?"), "0");
  // With a device open the list answers nothing at all.
  EXPECT_EQ(client.query(":SYST:DEV:LIST?;:SYST:VER?"), "1.0.5");

  EXPECT_EQ(client.query(":OUTP ON;*OPC;*ESR?"), "0");
  EXPECT_TRUE(waitUntil([&] { return client.query("*ESR?") == "1"; }));
  // "*OPC?" exists in the table and does nothing.
  EXPECT_EQ(client.query("*OPC?;:SYST:VER?"), "1.0.5");

  client.command(":OUTP:MOD 1;:ROSC:SOUR EXT");
  EXPECT_TRUE(central.rfEnabled());
  EXPECT_TRUE(central.modEnabled());
  EXPECT_TRUE(central.referenceEnabled());
  EXPECT_EQ(client.query(":OUTP?;:OUTP:MOD?;:ROSC:SOUR?"), "1;1;external");
  client.command(":ROSC:SOUR sideways");
  EXPECT_EQ(client.query(":SYST:ERR?"),
            "-2,Invalid parameter;Expected reference oscillator source");
  EXPECT_TRUE(central.referenceEnabled());
  client.command(":OUTP maybe");  // not a boolean: nothing changes, nothing is logged
  EXPECT_TRUE(central.rfEnabled());
  EXPECT_EQ(client.query(":SYST:ERR:COUN?"), "0");
}

TEST_F(ScpiHandlerTest, PresetRowsAndQuickPresetSlots) {
  connectDevice();
  ScpiClient client(central.scpiServerPort());
  // The factory state of every panel setting; the mode stays as it was.
  client.command(
      ":OUTP ON;:OUTP:MOD ON;:ROSC:SOUR EXT;:FREQ 3 GHz;:FREQ:STEP 5k;:POW -33;"
      ":POW:STEP 3;:AM ON");
  EXPECT_EQ(client.query(":SYST:PRES?"), "1");
  EXPECT_EQ(client.query(":OUTP?;:OUTP:MOD?;:ROSC:SOUR?;:FREQ?;:FREQ:STEP?;:POW?;:POW:STEP?;:AM?"),
            "0;0;internal;1e+09;1e+06;-20;10;1");

  client.command("*SAV 0;*SAV 10");
  EXPECT_FALSE(QFile::exists(quickPresetPath(0)));
  EXPECT_FALSE(QFile::exists(quickPresetPath(10)));
  // The slots are 1 to 9; a recall of another number changes nothing.
  client.command(":FREQ 2 GHz;*SAV 9;:FREQ 2.5 GHz;*SAV 1;:FREQ 3 GHz;*RCL 10");
  EXPECT_DOUBLE_EQ(central.frequency(), 3e9);
  client.command("*RCL 9");
  EXPECT_DOUBLE_EQ(central.frequency(), 2e9);
  client.command("*RCL 1");
  EXPECT_DOUBLE_EQ(central.frequency(), 2.5e9);
  QFile::remove(quickPresetPath(9));
  QFile::remove(quickPresetPath(1));
}

TEST_F(ScpiHandlerTest, WindowRowsGoThroughTheMainWindowRequests) {
  // Here the requests open and close the fixture's device, as the window does.
  QObject::connect(&central, &CentralWidget::connectDeviceRequested,
                   [&](int serial) { device.open(serial); });
  QObject::connect(&central, &CentralWidget::disconnectDeviceRequested, [&] { device.close(); });
  ScpiClient client(central.scpiServerPort());
  EXPECT_EQ(client.query(":SYST:DEV:CON? 21000001;:SYST:DEV:ACT?"), "1;1");
  EXPECT_EQ(client.query(":SYST:DEV:DISC?;:SYST:DEV:ACT?"), "1;0");
}

// The notice shows with every command, also after the user has closed it.
TEST_F(ScpiHandlerTest, RemoteNoticeReturnsWithEachCommand) {
  ScpiClient client(central.scpiServerPort());
  client.command("*CLS");
  EXPECT_TRUE(central.remoteNotice()->isVisible());
  central.remoteNotice()->done(0);
  EXPECT_FALSE(central.remoteNotice()->isVisible());
  EXPECT_EQ(client.query(":SYST:VER?"), "1.0.5");
  EXPECT_TRUE(central.remoteNotice()->isVisible());
}

TEST_F(ScpiHandlerTest, OneClientAtATime) {
  auto first = std::make_unique<ScpiClient>(central.scpiServerPort());
  ASSERT_TRUE(first->connected);
  EXPECT_FALSE(central.isScpiListening());
  first.reset();
  ASSERT_TRUE(waitUntil([&] { return central.isScpiListening(); }));
  ScpiClient second(central.scpiServerPort());
  EXPECT_EQ(second.query(":SYST:VER?"), "1.0.5");
}

}  // namespace
