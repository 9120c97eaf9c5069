// SPDX-License-Identifier: MIT
// The digital modulation unit in the panel: form, remote rows 128 to 149, the generators on
// the simulated device, the guards, and the "RadioCustom" preset group.
#include "digital/digital_mod/mode_view_digital_mod.h"
#include "modes/unit_panel_test.h"
#include "support/form_rows.h"
#include "widgets/my_list_widget.h"

#include <gtest/gtest.h>

namespace {

using DigitalModUnitTest = UnitPanelTest<ModeViewDigitalMod>;

TEST_F(DigitalModUnitTest, FormAndRemoteRows) {
  EXPECT_EQ(central.findChild<MyListWidget*>()->findModeRow(8)->text(), "Digital Mod");
  EXPECT_EQ(formRows(*view),
            QStringList({"Enabled=QCheckBox", "Trigger Mode=MyComboBox", "Samples Off=TimeEdit",
                         "=QLabel", "Symbol Rate=FrequencyEdit", "Modulation Type=MyComboBox",
                         "=QPushButton", "Filter Type=MyComboBox", "Filter Alpha=DoubleEdit",
                         "Filter Length (symbols)=IntLineEdit", "=QPushButton",
                         "Sequence=MyComboBox", "Sequence Seed=IntLineEdit", "=QPushButton",
                         "FSK Deviation=FrequencyEdit", "I/Q Scaling=DoubleEdit",
                         "Oversample=IntLineEdit", "Continuous=0", "Single=1", "BPSK=0",
                         "DBPSK=1", "QPSK=2", "DQPSK=3", "OQPSK=4", "Pi4DQPSK=5", "8PSK=6",
                         "D8PSK=7", "16PSK=8", "QAM16=9", "QAM64=10", "QAM256=11", "QAM1024=12",
                         "2ASK=14", "2FSK=15", "4FSK=16", "8FSK=17", "16FSK=18", "Custom=19",
                         "Rectangular=0", "Raised Cosine=1", "Root Raised Cosine=2",
                         "Gaussian=3", "Half-Sine=5", "Custom=4", "PN7=7", "PN9=9", "PN15=15",
                         "PN21=21", "Custom=-1"}));
  checkRows({
      {":RAD:CUST?;:RAD:CUST:TRIG:TYPE?;:RAD:CUST:SRAT?;:RAD:CUST:MOD?;:RAD:CUST:FILT?",
       "0;continuous;1e+06;qpsk;rnyquist", false},
      {":RAD:CUST:FILT:ALPH?;:RAD:CUST:FILT:LENG?;:RAD:CUST:DATA?;:RAD:CUST:DATA:SEED?",
       "0.35;8;pn15;23", false},
      {":RAD:CUST:MOD:FSK:DEV?;:RAD:CUST:OVER?", "100000;4", false},
      {":RAD:CUST:TRIG:TYPE SING;:RAD:CUST:TRIG:TYPE?", "single", true},
      {":RAD:CUST:SRAT 1 kHz;:RAD:CUST:SRAT?", "4000", true},
      {":RAD:CUST:SRAT 20 MHz;:RAD:CUST:SRAT?", "12500000", true},
      // The rate stays within 5e7 samples a second at the new oversample.
      {":RAD:CUST:OVER 8;:RAD:CUST:OVER?;:RAD:CUST:SRAT?", "8;6250000", true},
      {":RAD:CUST:OVER 3;:RAD:CUST:OVER?", "4", true},
      {":RAD:CUST:MOD QAM1025;:RAD:CUST:MOD?", "qam1024", true},
      {":RAD:CUST:MOD FSK4;:RAD:CUST:MOD?", "fsk4", true},
      {":RAD:CUST:FILT GAUS;:RAD:CUST:FILT?", "gaussian", true},
      {":RAD:CUST:FILT:ALPH 0;:RAD:CUST:FILT:ALPH?", "0.01", true},
      {":RAD:CUST:FILT:ALPH 1;:RAD:CUST:FILT:ALPH?", "0.99", true},
      {":RAD:CUST:FILT:LEN 40;:RAD:CUST:FILT:LENG?", "32", true},
      {":RAD:CUST:FILT:LEN 1;:RAD:CUST:FILT:LENGTH?", "4", true},
      {":RAD:CUST:DATA CUST;:RAD:CUST:DATA?", "custom", true},
      {":RAD:CUST:DATA:SEED -7;:RAD:CUST:DATA:SEED?", "7", true},
      {":RAD:CUST:MOD:FSK:DEV 0;:RAD:CUST:MOD:FSK:DEV?", "1", true},
      {":RAD:CUST:MOD:FSK:DEV 20 MHz;:RAD:CUST:MOD:FSK?", "1e+07", true},
      {":RAD:CUST ON;:RAD:CUST?", "1", false},
      {":RAD:CUST OFF;:RAD:CUST?", "1", false},
  });
  EXPECT_EQ(central.currentMode(), 8);
  // The set's short form is LEN, the query's LENG: the other spellings match nothing.
  client.command(":RAD:CUST:FILT:LENG 9");
  EXPECT_EQ(client.query(":RAD:CUST:FILT:LENG?"), "4");
  EXPECT_EQ(client.query(":RAD:CUST:FILT:LEN?"), "<no reply>");
  client.command(":RAD:CUST:MOD QAM1024");
  EXPECT_EQ(client.query(":SYST:ERR?"), "-2,Invalid parameter;Expected digital mod type");
  EXPECT_EQ(view->modulationType(), DigitalMod4FSK);
}

TEST_F(DigitalModUnitTest, LinearPlaysAtTheBurstsLevelThenOncePerTrigger) {
  client.command(":RAD:CUST:DATA PN7;:POW -30;:RAD:CUST:TRIG:TYPE CONT");
  checkContinuousThenSingle(":RAD:CUST ON", ":RAD:CUST:TRIG:TYPE SING", 4e6, 127 * 4 - 1);
  const double meanDb = buildLinearMod(view->linearSettings()).levelOffsetDb;
  EXPECT_GT(std::abs(meanDb), 0.01);
  restart(":RAD:CUST:SRAT 2 MHz", 8e6);
  EXPECT_EQ(played({"krtSetSampleRate", "krtSetLevel"}),
            (Calls{{"krtSetSampleRate", 8e6}, {"krtSetLevel", -30.0 - meanDb}}));
}

// Continuous FSK runs a loop of its own, in pieces of its buffer: ten milliseconds at least.
TEST_F(DigitalModUnitTest, ContinuousFskFeedsItsOwnLoop) {
  client.command(":RAD:CUST:DATA PN7;:RAD:CUST:MOD FSK2;:RAD:CUST:SRAT 100 kHz");
  connectAndEnable();
  restart(":RAD:CUST ON", 4e5);
  ASSERT_TRUE(waitUntil([&] { return played({"krtSubmitIQ"}).size() >= 2; }));
  const Calls calls = played({"krtSubmitIQ"});
  EXPECT_EQ(calls[0], (Call{"krtSubmitIQ", 127 * 4 * 8}));  // 4000 samples or more
  EXPECT_EQ(calls[1], calls[0]);
}

// What only a preset can bring: a map of three states, or a pattern too short for a symbol,
// plays nothing and the thread goes on answering restarts.
TEST_F(DigitalModUnitTest, MapsAndPatternsThatFillNoSymbolPlayNothing) {
  connectAndEnable();
  // The thread that was playing is joined before a change is answered: whatever the device
  // sees afterwards comes from the new one.
  const auto playsAfter = [&](const std::function<void()>& change, int waitMs) {
    change();
    log.mark();
    return waitUntil(
        [&] {
          const std::vector<nlohmann::json> events = log.events();
          return std::any_of(events.begin(), events.end(), [](const nlohmann::json& e) {
            return e.value("fn", "") == "krtSubmitIQ";
          });
        },
        waitMs);
  };
  EXPECT_FALSE(playsAfter(
      [&] {
        loadText("[General]\nMode=8\n[RadioCustom]\nModulationType=19\n"
                 "CustomMod\\States\\size=3\n");
      },
      100));
  ASSERT_EQ(view->customModulation().states.size(), 3u);
  EXPECT_FALSE(playsAfter(
      [&] { loadText("[RadioCustom]\nModulationType=2\nSequence=-1\nCustomBitString=1\n"); },
      100));
  EXPECT_FALSE(playsAfter([&] { client.command(":RAD:CUST:MOD FSK4"); }, 100));
  EXPECT_TRUE(playsAfter([&] { client.command(":RAD:CUST:DATA PN7"); }, 5000));
}

TEST_F(DigitalModUnitTest, PresetGroup) {
  client.command(":RAD:CUST:SRAT 2 MHz;:RAD:CUST:MOD QAM16;:RAD:CUST:FILT NYQ;:RAD:CUST:DATA PN9");
  view->setCustomFilterTaps({0.5f, 0.25f});
  view->setCustomModulation({{{1, 0}, {0, -1}}, false, {1, -1}, true});
  const QString custom =
      "CustomBitString=0000|CustomFilter/1/Tap=0.5|CustomFilter/2/Tap=0.25|"
      "CustomFilter/size=2|CustomMod/DifferentialEncoding=false|"
      "CustomMod/DifferentialOffsets/1/Offset=1|CustomMod/DifferentialOffsets/2/Offset=-1|"
      "CustomMod/DifferentialOffsets/size=2|CustomMod/OffsetQ=true|CustomMod/States/1/Imag=0|"
      "CustomMod/States/1/Real=1|CustomMod/States/2/Imag=-1|CustomMod/States/2/Real=0|"
      "CustomMod/States/size=2|";
  const QString stored = custom +
                         "FilterAlpha=0.35|FilterLength=8|FilterType=1|FskDeviation=100000|"
                         "ModulationType=9|OffTime=0|Oversample=4|Sequence=9|SequenceSeed=23|"
                         "SymbolRate=2e+06|TriggerMode=0";
  EXPECT_EQ(savedGroup("RadioCustom"), stored);
  central.presetButtonPressed();
  EXPECT_EQ(view->symbolRate(), 1e6);
  EXPECT_EQ(view->customFilterTaps().size(), 33u);
  EXPECT_EQ(view->customModulation().states.size(), 2u) << "the map survives the defaults";
  central.loadPreset(dir.filePath("saved.ini"));
  EXPECT_EQ(savedGroup("RadioCustom", "again.ini"), stored);
  // Clamped on load: the rate by the oversample in force, then again by the one read.
  loadText("[RadioCustom]\nSymbolRate=2e7\nOversample=8\nFilterAlpha=3\nFilterLength=-1\n"
           "FskDeviation=nan\nSequenceSeed=-9\nModulationType=13\nFilterType=77\nOffTime=5\n"
           "CustomFilter\\size=-4\nCustomMod\\States\\size=2000000000\n");
  EXPECT_EQ(view->symbolRate(), 6.25e6);
  EXPECT_EQ(view->oversample(), 8);
  EXPECT_EQ(view->filterAlpha(), 0.99);
  EXPECT_EQ(view->filterLength(), 4);
  EXPECT_EQ(view->fskDeviation(), 1e5);
  EXPECT_EQ(view->sequenceSeed(), 9);
  EXPECT_EQ(view->modulationType(), DigitalModQAM16) << "13 has no item";
  EXPECT_EQ(view->filterType(), FilterRaisedCosine);
  EXPECT_EQ(view->offDuration(), 1.0);
  EXPECT_TRUE(view->customFilterTaps().empty());
  EXPECT_EQ(view->customModulation().states.size(),
            static_cast<size_t>(ModeViewDigitalMod::maxPresetStates));
}

}  // namespace
