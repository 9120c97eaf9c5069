// SPDX-License-Identifier: MIT
// The IEEE 802.11n and 802.11ac units in the panel: clamps and labels, the "WLAN_HT" and
// "WLAN_VHT" preset groups with bad values, and the frames they play into the simulated device.
#include "wireless/wlan_ht/mode_view_wlan_ht.h"
#include "wireless/wlan_vht/mode_view_wlan_vht.h"
#include "wlan_unit_panel_test.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

constexpr int ht = 16;
constexpr int vht = 18;

// The 802.11ac view is an 802.11n view too, so the fixture finds both by their mode index.
class WlanHtVhtUnitTest : public WlanUnitPanelTest<ModeViewWLANVHT> {
protected:
  void SetUp() override {
    WlanUnitPanelTest::SetUp();
    for (ModeViewWLANHT* v : central.findChildren<ModeViewWLANHT*>())
      if (v->modeIndex() == ht) htView = v;
    ASSERT_NE(htView, nullptr);
    ASSERT_EQ(view->modeIndex(), vht);
  }
  ModeViewWLANHT* viewOf(int mode) const { return mode == ht ? htView : view; }

  ModeViewWLANHT* htView = nullptr;
};

QString shown(const ModeViewWLANHT& v) {
  return QString("%1 %2 %3").arg(v.dataLength()).arg(v.modulationText(), v.encodingText());
}

// "Bytes" takes 0 to 65535 silently; the labels follow the MCS, and an MCS the list doesn't
// offer leaves it.
TEST_F(WlanHtVhtUnitTest, SlotsClampAndLabelsFollowTheMcs) {
  EXPECT_EQ(shown(*htView), "64 QAM64 5/6");
  EXPECT_EQ(shown(*view), "64 QAM256 3/4");
  const struct {
    int mode;
    std::function<void(ModeViewWLANHT&)> set;
    QString shown;
  } rows[] = {
      {ht, [](auto& v) { v.setHTLength(-5); }, "0 QAM64 5/6"},
      {ht, [](auto& v) { v.setHTLength(70000); }, "65535 QAM64 5/6"},
      {ht, [](auto& v) { v.setMcs(2); }, "65535 QPSK 3/4"},
      {ht, [](auto& v) { v.setMcs(8); }, "65535 QPSK 3/4"},
      {vht, [](auto& v) { v.setDataLength(65536); }, "65535 QAM256 3/4"},
      {vht, [](auto& v) { v.setMcs(5); }, "65535 QAM64 2/3"},
      {vht, [](auto& v) { v.setMcs(9); }, "65535 QAM64 2/3"},
      {vht, [](auto& v) { v.setMcs(0); }, "65535 BPSK 1/2"},
  };
  for (const auto& row : rows) checkSet(*viewOf(row.mode), row.set, shown, row.shown);
  EXPECT_EQ(client.query(":SYST:ERR:COUN?"), "0");
}

// Unknown combo entries keep the selection, "DataLength" is clamped, "GroupID" and "PartialAID"
// stand as given; "40 MHz" is reached by preset alone.
TEST_F(WlanHtVhtUnitTest, PresetGroups) {
  const QString tail =
      "SampleRate=2e+07|Scrambled=true|ScramblerInit=93|TriggerMode=0|"
      "WindowLength=16";
  const QString htDefaults =
      "Bandwidth=0|CustomData=0000|Data=7|DataLength=64|GI=1|"
      "IdleInterval=0.001|Interleaved=true|Rate=7|" +
      tail;
  const QString vhtDefaults =
      "Bandwidth=0|CustomData=0000|Data=7|DataLength=64|GI=1|GroupID=63|"
      "IdleInterval=0.001|Interleaved=true|PartialAID=275|Rate=8|" +
      tail;
  EXPECT_EQ(savedGroup("WLAN_HT"), htDefaults);
  EXPECT_EQ(savedGroup("WLAN_VHT"), vhtDefaults);
  loadText(
      "[WLAN_HT]\nBandwidth=1\nRate=8\nGI=0\nDataLength=70000\nScramblerInit=-3\n"
      "[WLAN_VHT]\nBandwidth=2\nRate=9\nGI=5\nGroupID=-700\nPartialAID=4096\nDataLength=-9\n");
  EXPECT_EQ(savedGroup("WLAN_HT"),
            "Bandwidth=1|CustomData=0000|Data=7|DataLength=65535|GI=0|IdleInterval=0.001|"
            "Interleaved=true|Rate=7|SampleRate=2e+07|Scrambled=true|ScramblerInit=-3|"
            "TriggerMode=0|WindowLength=16");
  EXPECT_EQ(savedGroup("WLAN_VHT"),
            "Bandwidth=0|CustomData=0000|Data=7|DataLength=0|GI=1|GroupID=-700|"
            "IdleInterval=0.001|Interleaved=true|PartialAID=4096|Rate=8|" +
                tail);
  const HtSettings h = htView->settings();
  EXPECT_EQ(h.frame.bandwidth, 1);
  EXPECT_TRUE(h.frame.shortGuard);
  const VhtSettings v = view->settings();
  EXPECT_EQ(v.frame.groupId, -700);
  EXPECT_EQ(v.frame.partialAid, 4096);
  htView->setDefaults();
  view->setDefaults();
  EXPECT_EQ(savedGroup("WLAN_HT"), htDefaults);
  EXPECT_EQ(savedGroup("WLAN_VHT"), vhtDefaults);
}

// One triggered pass is the frame, 720 (HT) or 800 (VHT) + 80 x N_SYM samples, 72 a symbol
// with the short guard, and its idle zeros, less the last sample. At "40 MHz" the frame stays
// on the 20 MHz rows.
TEST_F(WlanHtVhtUnitTest, PlaysOneFrameAndItsIdle) {
  const struct {
    int mode, mcs, guard, bytes;
    double sampleRate, idle;
    int samples;
  } rows[] = {
      {ht, 7, 1, 64, 20e6, 0.001, 720 + 80 * 3 + 20000},    // (512 + 22) / 260 -> 3
      {ht, 0, 0, 100, 10e6, 0.0005, 720 + 72 * 32 + 5000},  // (800 + 22) / 26 -> 32
      {ht, 3, 1, 0, 25e6, 0.0, 720 + 80 * 1},               // 22 / 104 -> 1
      {vht, 8, 1, 64, 20e6, 0.001, 800 + 80 * 2 + 20000},   // (512 + 22) / 312 -> 2
      {vht, 4, 0, 1000, 5e6, 1e-6, 800 + 72 * 52 + 5},      // (8000 + 22) / 156 -> 52
  };
  loadText("[WLAN_HT]\nBandwidth=1\n[WLAN_VHT]\nBandwidth=1\n");
  connectAndEnable();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.samples);
    ModeViewWLANHT& v = *viewOf(row.mode);
    EXPECT_EQ(playOnePass(v,
                          [&] {
                            v.setMcs(row.mcs);
                            v.setGuardInterval(row.guard);
                            v.setDataLength(row.bytes);
                            v.setSampleRate(row.sampleRate);
                            v.setIdleInterval(row.idle);
                          }),
              (Calls{{"krtSetSampleRate", row.sampleRate}, {"krtSubmitIQ", row.samples - 1}}));
  }
}

TEST_F(WlanHtVhtUnitTest, PatternWithoutBitsPlaysNothing) {
  connectAndEnable();
  for (int mode : {ht, vht}) {
    SCOPED_TRACE(mode);
    checkPatternWithoutBitsPlaysNothing(*viewOf(mode));
  }
}

}  // namespace
