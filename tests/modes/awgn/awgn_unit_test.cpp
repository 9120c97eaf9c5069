// SPDX-License-Identifier: MIT
// The AWGN unit in the panel: form, remote rows 120 to 127, the generator's retune on the
// simulated device, and the "AWGN" preset group.
#include "modes/awgn/mode_view_awgn.h"
#include "modes/unit_panel_test.h"
#include "support/form_rows.h"
#include "widgets/my_list_widget.h"

#include <gtest/gtest.h>

namespace {

using AwgnUnitTest = UnitPanelTest<ModeViewAWGN>;

TEST_F(AwgnUnitTest, FormAndRemoteRows) {
  EXPECT_EQ(central.findChild<MyListWidget*>()->findModeRow(7)->text(), "AWGN");
  EXPECT_EQ(formRows(*view), QStringList({"Enabled=QCheckBox", "Bandwidth=FrequencyEdit",
                                          "Length=TimeEdit", "Seed=IntLineEdit"}));
  checkRows({
      {":RAD:AWGN?;:RAD:AWGN:BWID?;:RAD:AWGN:LEN?;:RAD:AWGN:SEED?", "0;4e+07;0.01;23", false},
      {":RAD:AWGN:BWID 1.5e6;:RAD:AWGN:BWID?", "1500000", true},
      {":RAD:AWGN:BWID 1e3;:RAD:AWGN:BWID?", "50000", true},
      {":RAD:AWGN:BWID 1e9;:RAD:AWGN:BWID?", "4e+07", true},
      // Whole seconds only: 1 and more land on the longest record, 0 on the shortest.
      {":RAD:AWGN:LEN 1;:RAD:AWGN:LEN?", "0.2", true},
      {":RAD:AWGN:LEN 0;:RAD:AWGN:LEN?", "0.0001", true},
      {":RAD:AWGN:SEED -5;:RAD:AWGN:SEED?", "5", true},
      {":RAD:AWGN:SEED -2147483648;:RAD:AWGN:SEED?", "2147483647", true},
      {":SOUR:RAD:AWGN:STAT ON;:RAD:AWGN?", "1", false},
      {":RAD:AWGN OFF;:RAD:AWGN?", "1", false},
  });
  EXPECT_EQ(central.currentMode(), 7);
}

TEST_F(AwgnUnitTest, PlaysItsRecordAtItsMeanPower) {
  client.command(":RAD:AWGN:BWID 2e6;:RAD:AWGN:LEN 0;:POW -30");
  connectAndEnable();
  restart(":RAD:AWGN ON", 2.5e6);
  ASSERT_TRUE(waitUntil([&] { return !played({"krtSubmitIQ"}).empty(); }));
  const double meanDb = buildAwgn(view->settings()).levelOffsetDb;
  EXPECT_LT(meanDb, -5.0) << "the peak, not the mean, is at full scale";
  EXPECT_EQ(played({"krtSetSampleRate", "krtSetLevel"}),
            (Calls{{"krtSetSampleRate", 2.5e6}, {"krtSetLevel", -30.0 - meanDb}}));
}

TEST_F(AwgnUnitTest, PresetGroup) {
  client.command(":RAD:AWGN:BWID 2e6;:RAD:AWGN:LEN 0;:RAD:AWGN:SEED 99");
  const QString stored = "Bandwidth=2e+06|Length=0.0001|Seed=99";
  EXPECT_EQ(savedGroup("AWGN"), stored);
  central.presetButtonPressed();
  EXPECT_EQ(savedGroup("AWGN", "defaults.ini"), "Bandwidth=4e+07|Length=0.01|Seed=23");
  central.loadPreset(dir.filePath("saved.ini"));
  EXPECT_EQ(savedGroup("AWGN", "again.ini"), stored);
  loadText("[AWGN]\nBandwidth=1e12\nLength=-3\nSeed=-5\n");
  EXPECT_EQ(savedGroup("AWGN"), "Bandwidth=4e+07|Length=0.0001|Seed=5");
  loadText("[AWGN]\nBandwidth=wide\nLength=nan\nSeed=x\n");
  EXPECT_EQ(savedGroup("AWGN"), "Bandwidth=50000|Length=0.0001|Seed=0");
}

}  // namespace
