// SPDX-License-Identifier: MIT
// The IEEE 802.11a unit in the panel: its clamps and labels, the "WLAN_NonHT" preset group, and
// the frames it plays into the simulated device.
#include "wireless/wlan_nonht/mode_view_wlan_non_ht.h"
#include "wlan_unit_panel_test.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>

namespace {

using WlanNonHtUnitTest = WlanUnitPanelTest<ModeViewWLANNonHT>;

QString shown(const ModeViewWLANNonHT& v) {
  return QString("%1 %2 %3 %4 %5 %6")
      .arg(v.baseSampleRate())
      .arg(v.subcarrierSpacing())
      .arg(v.windowLength())
      .arg(v.idleInterval())
      .arg(v.modulationText(), v.encodingText());
}

// Out-of-range values take the near bound, silently; the rate and the spacing move together,
// and the labels follow the rate.
TEST_F(WlanNonHtUnitTest, SlotsClampAndLabelsFollowTheRate) {
  EXPECT_EQ(shown(*view), "2e+07 312500 16 0.001 QAM64 3/4");
  const struct {
    std::function<void(ModeViewWLANNonHT&)> set;
    QString shown;
  } rows[] = {
      {[](auto& v) { v.setSampleRate(1e6); }, "5e+06 78125 16 0.001 QAM64 3/4"},
      {[](auto& v) { v.setSampleRate(1e9); }, "2.5e+07 390625 16 0.001 QAM64 3/4"},
      {[](auto& v) { v.setSampleRate(NAN); }, "2.5e+07 390625 16 0.001 QAM64 3/4"},
      {[](auto& v) { v.setSubcarrierSpacing(1e3); }, "5e+06 78125 16 0.001 QAM64 3/4"},
      {[](auto& v) { v.setSubcarrierSpacing(250e3); }, "1.6e+07 250000 16 0.001 QAM64 3/4"},
      {[](auto& v) { v.setSubcarrierSpacing(1e6); }, "2.5e+07 390625 16 0.001 QAM64 3/4"},
      {[](auto& v) { v.setWindowLength(-3); }, "2.5e+07 390625 0 0.001 QAM64 3/4"},
      {[](auto& v) { v.setWindowLength(40); }, "2.5e+07 390625 16 0.001 QAM64 3/4"},
      {[](auto& v) { v.setIdleInterval(-1.0); }, "2.5e+07 390625 16 0 QAM64 3/4"},
      {[](auto& v) { v.setIdleInterval(5.0); }, "2.5e+07 390625 16 0.1 QAM64 3/4"},
      {[](auto& v) { v.setRate(13); }, "2.5e+07 390625 16 0.1 QAM16 3/4"},
      {[](auto& v) { v.setRate(8); }, "2.5e+07 390625 16 0.1 QAM64 2/3"},
      {[](auto& v) { v.setRate(10); }, "2.5e+07 390625 16 0.1 QPSK 1/2"},
      {[](auto& v) { v.setRate(3); }, "2.5e+07 390625 16 0.1 QPSK 1/2"},
  };
  for (const auto& row : rows) checkSet(*view, row.set, shown, row.shown);
  EXPECT_EQ(client.query(":SYST:ERR:COUN?"), "0");
}

TEST_F(WlanNonHtUnitTest, PresetGroup) {
  const QString defaults =
      "CustomData=0000|Data=7|DataLength=64|IdleInterval=0.001|Interleaved=true|Rate=12|"
      "SampleRate=2e+07|Scrambled=true|ScramblerInit=93|TriggerMode=0|WindowLength=16";
  EXPECT_EQ(savedGroup("WLAN_NonHT"), defaults);
  // Unknown combo values keep the selection; "DataLength" and "ScramblerInit" stand as given.
  loadText("[WLAN_NonHT]\nTriggerMode=1\nRate=3\nSampleRate=1e12\nInterleaved=false\n"
           "Scrambled=false\nScramblerInit=-700\nWindowLength=99\nData=8\nDataLength=0\n"
           "CustomData=x1y\nIdleInterval=-2\n");
  EXPECT_EQ(savedGroup("WLAN_NonHT"),
            QString("CustomData=x1y|Data=7|DataLength=0|IdleInterval=0|Interleaved=false|Rate=12|"
                    "SampleRate=2.5e+07|Scrambled=false|ScramblerInit=-700|TriggerMode=1|"
                    "WindowLength=16"));
  EXPECT_EQ(view->subcarrierSpacing(), 390625.0);
  loadText("[WLAN_NonHT]\nRate=11\nData=-1\nSampleRate=1\nWindowLength=-5\nIdleInterval=0.5\n");
  EXPECT_EQ(savedGroup("WLAN_NonHT"),
            QString("CustomData=x1y|Data=-1|DataLength=0|IdleInterval=0.1|Interleaved=false|"
                    "Rate=11|SampleRate=5e+06|Scrambled=false|ScramblerInit=-700|TriggerMode=1|"
                    "WindowLength=0"));
  EXPECT_EQ(view->modulationText(), "BPSK");
  view->setDefaults();
  EXPECT_EQ(savedGroup("WLAN_NonHT"), defaults);
}

// One triggered pass is the frame, 400 + 80 x N_SYM samples, and its idle zeros, less the last
// sample, at oversample x sample rate.
TEST_F(WlanNonHtUnitTest, PlaysOneFrameAndItsIdleAtTheModesRate) {
  const struct {
    int rateCode, bytes;
    double sampleRate, idle;
    int samples;
  } rows[] = {
      {11, 100, 10e6, 0.0005, 400 + 80 * 35 + 5000},  // 6 Mb/s: (800 + 22) / 24 -> 35
      {12, 64, 20e6, 0.001, 400 + 80 * 3 + 20000},    // 54 Mb/s: (512 + 22) / 216 -> 3
      {9, 1, 25e6, 0.0, 400 + 80 * 1},                // 24 Mb/s: (8 + 22) / 96 -> 1
      {8, 4095, 5e6, 1e-6, 400 + 80 * 171 + 5},       // 48 Mb/s: (32760 + 22) / 192 -> 171
  };
  connectAndEnable();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.rateCode);
    EXPECT_EQ(playOnePass(*view,
                          [&] {
                            view->setRate(row.rateCode);
                            view->setDataLength(row.bytes);
                            view->setSampleRate(row.sampleRate);
                            view->setIdleInterval(row.idle);
                          }),
              (Calls{{"krtSetSampleRate", row.sampleRate}, {"krtSubmitIQ", row.samples - 1}}));
  }
}

TEST_F(WlanNonHtUnitTest, PatternWithoutBitsPlaysNothing) {
  connectAndEnable();
  checkPatternWithoutBitsPlaysNothing(*view);
}

}  // namespace
