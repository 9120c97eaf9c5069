// SPDX-License-Identifier: MIT
// The arb unit in the panel: remote rows 150 to 171 with their clamps and loaders, the played
// period, and the "ARB" preset group.
#include "arb/arb_mode/mode_view_arb.h"
#include "modes/unit_panel_test.h"
#include "shell/error_queue.h"
#include "support/warnings.h"

#include <QFile>

#include <gtest/gtest.h>

namespace {

using ArbUnitTest = UnitPanelTest<ModeViewArb>;

TEST_F(ArbUnitTest, RowsClampAndLoad) {
  checkRows({
      {":RAD:ARB?;:RAD:ARB:WAV?;:RAD:ARB:WAV:LOAD?;:RAD:ARB:WAV:LEN?", "0;\"\";0;0", false},
      {":RAD:ARB:WAV:LOAD:IQ:ASCII 1,0,0,-0.5,0.25,0.25;:RAD:ARB:WAV?;:RAD:ARB:WAV:LEN?",
       "\"Custom\";3", true},
      {":RAD:ARB:SAMP:OFFS 1;:RAD:ARB:SAMP:COUN?;:RAD:ARB:SAMP:PER?", "2;3", true},
      {":RAD:ARB:SAMP:COUN -4;:RAD:ARB:SAMP:COUN?", "-4", true},
      {":RAD:ARB:SRAT 2 MHz;:RAD:ARB:SRAT?", "2e+06", true},
      {":RAD:ARB:TRIG:TYPE SING;:RAD:ARB:TRIG:TYPE?", "single", true},
      {":RAD:ARB:WAV:LOAD:IQ:BIN #13abc;:RAD:ARB:WAV:LEN?", "3", false},
      {":RAD:ARB:WAV:LOAD:IQ:ASCII;:RAD:ARB:WAV:LEN?;:RAD:ARB:WAV:LOAD?", "0;1", true},
      // UNLOAD has no short form.
      {":RAD:ARB:WAV:UNL;:RAD:ARB:WAV:LOAD?", "1", false},
      {":RAD:ARB:WAV:UNLOAD;:RAD:ARB:WAV:LOAD?;:RAD:ARB:WAV?", "0;\"\"", true},
  });
  const struct {
    QString line, error;
  } clamps[] = {
      {":RAD:ARB:SRAT 1 kHz", "-1,Setting clamped;Arb sample rate clamped"},
      {":RAD:ARB:SAMP:PER 200000000", "-1,Setting clamped;Arb period clamped"},
      {":RAD:ARB:SAMP:OFFS 5", "-1,Setting clamped;Arb sample offset clamped"},
      {":RAD:ARB:WAV:LOAD:IQ:ASCII 1,0,0",
       "-2,Invalid parameter;Invalid number of parameters, expected even number of parameters"},
      {":RAD:ARB:WAV:LOAD:IQ:ASCII x,0",
       "-2,Invalid parameter;Invalid parameter, expected frequency, PATHLOSS:DATA"},
      {":RAD:ARB:WAV:LOAD:IQ:ASCII 0,x",
       "-2,Invalid parameter;Invalid parameter, expected amplitude offset, PATHLOSS:DATA"},
  };
  for (const auto& c : clamps) {
    client.command(c.line);
    EXPECT_EQ(client.query(":SYST:ERR?"), c.error) << c.line.toStdString();
  }
  EXPECT_EQ(client.query(":RAD:ARB:WAV:LOAD?;:RAD:ARB:SRAT?"), "0;12500");
}

// A bad line 500 keeps the 499 samples before it, quietly.
TEST_F(ArbUnitTest, CsvLoadStopsAtItsFirstBadLine) {
  QFile file(dir.filePath("wave.csv"));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  for (int line = 1; line < 500; ++line) file.write("0.5,-0.5\n");
  file.write("0.5;-0.5\n0.5,0.5\n");
  file.close();
  client.command(QString(":RAD:ARB:WAV:LOAD:CSV \"%1\"").arg(file.fileName()));
  EXPECT_EQ(client.query(":RAD:ARB:WAV?;:RAD:ARB:WAV:LEN?;:SYST:ERR:COUN?"), "\"wave.csv\";499;0");
  EXPECT_EQ(view->getArbInfo().parseError, "Invalid sample count on line 500");
}

// The range from the offset, scaled by its peak component, padded to the period, at the level
// less its mean power.
TEST_F(ArbUnitTest, PlaysTheRangePaddedToThePeriod) {
  client.command(":POW -30;:RAD:ARB:WAV:LOAD:IQ:ASCII 9,9,0.5,0,0,-0.25;:RAD:ARB:SRAT 1 MHz");
  client.command(":RAD:ARB:SAMP:OFFS 1;:RAD:ARB:SAMP:PER 5");
  connectAndEnable();
  restart(":RAD:ARB ON", 1e6);
  ASSERT_TRUE(waitUntil([&] { return !played({"krtSubmitIQ"}).empty(); }));
  const double meanDb = 10 * std::log10((1.0 + 0.25) / 2);
  EXPECT_EQ(played({"krtSetSampleRate", "krtSetLevel"}),
            (Calls{{"krtSetSampleRate", 1e6}, {"krtSetLevel", -30.0 - meanDb}}));
  restart(":RAD:ARB:TRIG:TYPE SING", 1e6);
  client.command("*TRG");
  ASSERT_TRUE(waitUntil([&] { return !played({"krtFlushAndWait"}).empty(); }));
  EXPECT_EQ(played({"krtSubmitIQ"}), (Calls{{"krtSubmitIQ", 4}})) << "one period less a sample";
}

// Each loader replaces the waveform with the file's samples at the format's scale; the SigMF
// rate becomes the mode's, a refused file is said in a box and changes nothing.
TEST_F(ArbUnitTest, FileLoadersTakeTheFilesSamples) {
  const auto write = [&](const char* name, const QByteArray& bytes) {
    QFile file(dir.filePath(name));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size());
    return file.fileName();
  };
  const QByteArray int16 = QByteArray::fromHex("00400080ffff0000");    // 16384, -32768, -1, 0
  const QByteArray float32 = QByteArray::fromHex("0000003f000080bf");  // 0.5, -1
  view->loadBin16(write("a.bin", int16));
  EXPECT_EQ(*view->getArbInfo().samples, (std::vector<Sample>{{0.5f, -1.0f}, {-1.0f / 32768, 0}}));
  view->loadBin32(write("b.raw", float32));
  EXPECT_EQ(*view->getArbInfo().samples, (std::vector<Sample>{{0.5f, -1.0f}}));
  write("c.sigmf-data", float32 + float32);
  view->loadSigmf(write("c.sigmf-meta", R"({"global": {"core:datatype": "cf32_le",
      "core:sample_rate": 2500000, "core:version": "1.0.0"}, "captures": [], "annotations": []})"));
  EXPECT_EQ(view->getArbInfo().samples->size(), 2u);
  EXPECT_EQ(view->getArbInfo().sampleRate, 2.5e6);
  EXPECT_EQ(view->getArbInfo().name, "c.sigmf-meta");
  Warnings warnings;
  view->loadSigmf(write("d.sigmf-meta", R"({"global": {"core:sample_rate": 1e6}})"));
  view->loadMidas(write("e.tmp", "BLUE"));
  EXPECT_EQ(warnings.shown, QStringList({"Error: SigMF meta: missing key global/core:datatype",
                                         "Error: Unable to open Midas Blue file"}));
  EXPECT_EQ(view->getArbInfo().name, "c.sigmf-meta");
}

TEST_F(ArbUnitTest, PresetGroup) {
  client.command(":RAD:ARB:WAV:LOAD:IQ:ASCII 1,0,0,1;:RAD:ARB:SRAT 2 MHz;:RAD:ARB:SAMP:PER 9");
  client.command(":RAD:ARB:TRIG:TYPE SING");
  EXPECT_EQ(savedGroup("ARB"), "Period=9|SampleRate=2e+06|TriggerType=1");
  loadText("[ARB]\nPeriod=1\nSampleRate=1e12\nTriggerType=0\n");
  EXPECT_EQ(savedGroup("ARB"), "Period=2|SampleRate=5.4e+07|TriggerType=0");
  EXPECT_TRUE(view->getArbInfo().loaded) << "the waveform is not part of a preset";
}

}  // namespace
