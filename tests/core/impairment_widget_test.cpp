// SPDX-License-Identifier: MIT
// The impairment panel: its form and defaults, its remote rows with their clamps, what reaches
// the device at each retune and restart, the stage operations and the "Impairments" group.
#include "core/impairment_widget.h"

#include "panel_fixture.h"
#include "scpi_client.h"
#include "support/form_rows.h"
#include "widgets/frequency_edit.h"

#include <QPushButton>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace {

class ImpairmentPanelTest : public PanelFixture {
protected:
  // The last call of `fn` since the last mark, argument `arg`.
  double lastArg(const char* fn, const char* arg) {
    const auto calls = log.calls(fn);
    return calls.empty() ? NAN : calls.back()["args"][arg].get<double>();
  }
  ScpiClient client{central.scpiServerPort()};
};

TEST_F(ImpairmentPanelTest, FormRemoteRowsAndTheirClamps) {
  EXPECT_EQ(formRows(impairments),
            QStringList({"Timebase Offset (ppm)=DoubleEdit", "Frequency Offset=FrequencyEdit",
                         "Low Spur Mode=QCheckBox", "I Offset=IntLineEdit", "Q Offset=IntLineEdit",
                         "Sample Rate Error (ppm)=DoubleEdit", "AWGN Enabled=QCheckBox",
                         "AWGN SNR (dB)=DoubleEdit", "AWGN Bandwidth=FrequencyEdit",
                         "Channel Filter Enabled=QCheckBox", "=QPushButton"}));
  const std::vector<std::pair<QString, QString>> table = {
      {":ROSC:MULT?;:OUTP:IMP:FREQ:OFFS?;:OUTP:IMP:LSP?;:OUTP:IMP:IOFF?;:OUTP:IMP:QOFF?",
       "0;0;1;0;0"},
      {":OUTP:IMP:SRAT:MULT?;:OUTP:IMP:AWGN?;:OUTP:IMP:AWGN:SNR?;:OUTP:IMP:AWGN:IBW?",
       "0;0;100;1e+07"},
      {":ROSC:MULT 5;:ROSC:MULT?", "2"},
      {":ROSC:MULT -0.25;:ROSC:MULT?", "-0.25"},
      {":OUTP:IMP:FREQ:OFFS -1.5 kHz;:OUTP:IMP:FREQ:OFFS?", "-1500"},
      {":OUTP:IMP:LSP OFF;:OUTP:IMP:LSP:STAT?", "0"},
      {":OUTP:IMP:IOFF 5000;:OUTP:IMP:IOFF?", "1024"},
      {":OUTP:IMP:QOFF -5000;:OUTP:IMP:QOFF?", "-1024"},
      {":OUTP:IMP:SRAT:MULT 2500;:OUTP:IMP:SRAT:MULT?", "2000"},
      {":OUTP:IMP:SRAT:MULT -12.5;:OUTP:IMP:SRAT:MULT?", "-12.5"},
      {":OUTP:IMP:AWGN:STAT ON;:OUTP:IMP:AWGN?", "1"},
      {":OUTP:IMP:AWGN:SNR -3;:OUTP:IMP:AWGN:SNR?", "0"},
      {":OUTP:IMP:AWGN:SNR 130;:OUTP:IMP:AWGN:SNR?", "100"},
      // The bandwidth row stores nothing.
      {":OUTP:IMP:AWGN:IBW 5e6;:OUTP:IMP:AWGN:IBW?", "1e+07"},
  };
  QSignalSpy changed(&impairments, &ImpairmentWidget::impairmentsChanged);
  for (const auto& [line, reply] : table) EXPECT_EQ(client.query(line), reply) << line;
  EXPECT_EQ(changed.count(), 12) << "every setting restarts, the bandwidth row too";
  EXPECT_EQ(client.query(":SYST:ERR:COUN?"), "0");
}

// The retune corrects rate and frequency and sets the tuning flag; each restart sends the I/Q
// and timebase offsets. "Preset" puts back everything but "Low Spur Mode".
TEST_F(ImpairmentPanelTest, CorrectionsReachTheDeviceAtRetuneAndRestart) {
  connectDevice();
  central.setRFEnabled(true);
  ASSERT_TRUE(waitUntil([&] { return !log.calls("krtSubmitIQ").empty(); }));
  log.mark();
  client.command(":OUTP:IMP:FREQ:OFFS 250 kHz;:OUTP:IMP:SRAT:MULT 100;:OUTP:IMP:LSP OFF");
  client.command(":OUTP:IMP:IOFF -7;:OUTP:IMP:QOFF 300;:ROSC:MULT 1.25");
  ASSERT_TRUE(waitUntil([&] { return log.calls("krtSetIQOffset").size() == 6; }));
  const auto offsets = log.calls("krtSetIQOffset");
  EXPECT_EQ(offsets.back()["args"]["iOffset"], -7);
  EXPECT_EQ(offsets.back()["args"]["qOffset"], 300);
  EXPECT_EQ(log.calls("krtSetTimebaseOffset").size(), 6u);
  EXPECT_DOUBLE_EQ(lastArg("krtSetTimebaseOffset", "ppm"), 1.25);
  ASSERT_TRUE(waitUntil([&] { return log.calls("krtSetFrequency").size() == 6; }));
  EXPECT_DOUBLE_EQ(lastArg("krtSetFrequency", "frequency"), 1e9 + 250e3);
  EXPECT_DOUBLE_EQ(lastArg("krtSetSampleRate", "sampleRate"), 50e6 * (1.0 + 100e-6));
  EXPECT_EQ(lastArg("krtSetDigitalTuning", "enabled"), 0);

  central.presetButtonPressed();
  EXPECT_EQ(client.query(":OUTP:IMP:FREQ:OFFS?;:OUTP:IMP:SRAT:MULT?;:OUTP:IMP:IOFF?;"
                         ":OUTP:IMP:QOFF?;:ROSC:MULT?;:OUTP:IMP:LSP?"),
            "0;0;0;0;0;0");
}

TEST_F(ImpairmentPanelTest, StageFiltersAndAddsTheNoiseAsItStands) {
  std::vector<Sample> wave(100);
  for (int i = 0; i < 100; ++i) wave[i] = Sample(std::cos(0.3f * i), std::sin(0.7f * i));
  std::vector<Sample> out(100), filtered = wave;
  // The pass-through default leaves the samples bit for bit; a disabled filter isn't applied.
  impairments.setChannelFilterEnabled(true);
  impairments.applyChannelFilter(filtered.data(), 100);
  EXPECT_EQ(filtered, wave);
  loadText("[Impairments]\nChannelFilter\\size=3\nChannelFilter\\3\\Real=2\n");
  EXPECT_EQ(impairments.channelFilter(), (std::vector<Sample>{0, 0, 2}));
  impairments.applyChannelFilter(filtered.data(), 100);
  EXPECT_EQ(filtered[5], 2.0f * wave[4]) << "taps of a preset, missing members 0";
  impairments.setChannelFilterEnabled(false);
  filtered = wave;
  impairments.applyChannelFilter(filtered.data(), 100);
  EXPECT_EQ(filtered, wave);

  // AWGN on adds the record as it stands: zeros before a mode that honours it built it.
  impairments.prepareNoise(0.0, 50e6);  // off: nothing is built
  EXPECT_FALSE(impairments.noiseRecord().noiseValid);
  impairments.setAWGNEnabled(true);
  impairments.process(wave.data(), out.data(), 100);
  EXPECT_EQ(out, wave);
  impairments.setAWGNSNR(20.0);
  client.command(":OUTP:IMP:FREQ:OFFS 0");  // the bandwidth is set on the panel, not remotely
  impairments.awgnBandwidthEdit->setValue(1e9);
  impairments.prepareNoise(-6.0, 50e6);
  EXPECT_TRUE(waitUntil([&] { return impairments.awgnBandwidth() == 4e7; }))
      << "the edit shows the bandwidth really used";
  const int start = impairments.noiseRecord().noiseIndex;
  impairments.process(wave.data(), out.data(), 100);
  for (int i = 0; i < 100; ++i)
    ASSERT_EQ(out[i], wave[i] + impairments.noiseRecord().noise[start + i]);
  impairments.setAWGNEnabled(false);
  impairments.process(wave.data(), out.data(), 100);
  EXPECT_EQ(out, wave);
}

TEST_F(ImpairmentPanelTest, FilterEditorRestartsWhetherAcceptedOrNot) {
  QSignalSpy changed(&impairments, &ImpairmentWidget::impairmentsChanged);
  const std::vector<Sample> before = impairments.channelFilter();
  ASSERT_EQ(before.size(), 15u);
  EXPECT_EQ(before[7], Sample(1.0f, 0.0f));
  impairments.setFilterEditor([](QWidget*, std::vector<Sample>& taps) {
    taps.assign(4, Sample(0.0f, 0.5f));
    return false;
  });
  impairments.defineFilterButton->click();
  EXPECT_EQ(changed.count(), 1);
  EXPECT_EQ(impairments.channelFilter(), before) << "cancelled";
  impairments.setFilterEditor([](QWidget*, std::vector<Sample>& taps) {
    taps.assign(4, Sample(0.0f, 0.5f));
    return true;
  });
  impairments.defineFilterButton->click();
  EXPECT_EQ(changed.count(), 2);
  EXPECT_EQ(impairments.channelFilter(), std::vector<Sample>(4, Sample(0.0f, 0.5f)));
}

// Only the I/Q offsets are clamped on a load; text that isn't a number reads as 0, "nan" keeps
// the value in force.
TEST_F(ImpairmentPanelTest, PresetGroup) {
  client.command(":OUTP:IMP:IOFF 12;:ROSC:MULT 0.5;:OUTP:IMP:AWGN ON;:OUTP:IMP:AWGN:SNR 30");
  impairments.setChannelFilterEnabled(true);
  const QString saved = savedGroup("Impairments");
  EXPECT_TRUE(
      saved.startsWith("AWGNBW=1e+07|AWGNEnabled=true|AWGNSNR=30|ChannelFilter/1/Imag=0|"
                       "ChannelFilter/1/Real=0|"))
      << saved;
  EXPECT_TRUE(saved.contains("|ChannelFilter/8/Real=1|")) << "the centre tap, 1-based";
  EXPECT_TRUE(
      saved.endsWith("ChannelFilter/size=15|ChannelFilterEnabled=true|FreqOffset=0|"
                     "IOffset=12|LowSpurMode=true|QOffset=0|SampleRateError=0|"
                     "TimebaseAdjust=0.5"))
      << saved;
  central.presetButtonPressed();
  EXPECT_NE(savedGroup("Impairments", "defaults.ini"), saved);
  central.loadPreset(dir.filePath("saved.ini"));
  EXPECT_EQ(savedGroup("Impairments", "again.ini"), saved);

  loadText(
      "[Impairments]\nTimebaseAdjust=5\nIOffset=5000\nQOffset=-4000\nSampleRateError=1e5\n"
      "AWGNSNR=-20\nAWGNBW=nan\nFreqOffset=abc\n");
  EXPECT_EQ(client.query(":ROSC:MULT?;:OUTP:IMP:IOFF?;:OUTP:IMP:QOFF?;:OUTP:IMP:SRAT:MULT?;"
                         ":OUTP:IMP:AWGN:SNR?;:OUTP:IMP:AWGN:IBW?;:OUTP:IMP:FREQ:OFFS?"),
            "5;1024;-1024;100000;-20;1e+07;0");
  EXPECT_TRUE(impairments.channelFilter().empty()) << "no array, no taps";
  loadText("[Impairments]\nChannelFilter\\size=-5\n");
  EXPECT_TRUE(impairments.channelFilter().empty());
  loadText("[Impairments]\nChannelFilter\\size=2000000000\nChannelFilter\\1\\Imag=0.5\n");
  EXPECT_EQ(impairments.channelFilter().size(), 16384u) << "a garbled count reads a bounded array";
  EXPECT_EQ(impairments.channelFilter()[0], Sample(0.0f, 0.5f));
}

}  // namespace
