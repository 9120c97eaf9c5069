// SPDX-License-Identifier: MIT
// The Bluetooth LE unit in the panel: the "BLE" preset group, a packet played through the
// simulated device and read back from its recording, PDUs that can't be built, and the fixed
// burst of index 12 in the dispatch.
#include "wireless/ble/mode_view_ble.h"
#include "ble_air_bits.h"
#include "modes/mode_registry.h"
#include "modes/mode_types.h"
#include "modes/unit_panel_test.h"

#include <QCheckBox>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <string>
#include <tuple>
#include <vector>

bool recordsPlayback() { return true; }

namespace {

using BleUnitTest = UnitPanelTest<ModeViewBLE>;

std::vector<Sample> recordedSamples(int64_t first, size_t count) {
  std::vector<Sample> samples(count);
  std::ifstream in(recordingPath() + ".sigmf-data", std::ios::binary);
  in.seekg(first * 8);
  in.read(reinterpret_cast<char*>(samples.data()), static_cast<std::streamsize>(count * 8));
  return in ? samples : std::vector<Sample>{};
}

// The first sample of the first entry of the recording's "captures" or "annotations" whose
// fields hold `fields`; -1 while there is none. The recording runs on across the tests of this
// program, so each test plays at a frequency of its own.
int64_t firstStart(const char* list, const nlohmann::json& fields) {
  std::ifstream in(recordingPath() + ".sigmf-meta");
  const nlohmann::json meta = nlohmann::json::parse(in, nullptr, false);
  if (meta.is_discarded()) return -1;
  for (const auto& entry : meta.value(list, nlohmann::json::array()))
    if (std::all_of(fields.items().begin(), fields.items().end(), [&](const auto& f) {
          return entry.value(f.key(), nlohmann::json()) == f.value();
        }))
      return entry.value("core:sample_start", int64_t{-1});
  return -1;
}

const QString defaults =
    "AccessAddress=5A3D2F1E|CRCEnabled=true|CRCInit=55555555|ChannelIndex=37|"
    "CustomBitString=00000000|PDUByteCount=32|PDUDataSeed=23|PDUDataSource=9|TriggerMode=0|"
    "WhiteningEnabled=true";

// Keys fall back to the controls; nothing is clamped on the way in, an unknown source keeps
// the selection, and "Mode" and "Idle Interval" are no keys.
TEST_F(BleUnitTest, PresetGroup) {
  EXPECT_EQ(savedGroup("BLE"), defaults);
  view->setPhy(1);
  view->setIdleInterval(0.002);
  loadText(
      "[BLE]\nTriggerMode=1\nChannelIndex=99\nAccessAddress=zz12\nCRCEnabled=false\n"
      "CRCInit=123456789\nWhiteningEnabled=false\nPDUDataSource=8\nPDUDataSeed=-4\n"
      "PDUByteCount=-7\nCustomBitString=10x1\nMode=0\nIdleInterval=1\n");
  EXPECT_EQ(savedGroup("BLE"),
            QString("AccessAddress=zz12|CRCEnabled=false|CRCInit=123456789|ChannelIndex=99|"
                    "CustomBitString=10x1|PDUByteCount=-7|PDUDataSeed=-4|PDUDataSource=9|"
                    "TriggerMode=1|WhiteningEnabled=false"));
  const BleSettings s = view->settings();
  EXPECT_EQ(std::make_tuple(s.phy, s.accessAddress, s.crcInit, s.crcAttached, s.whitening),
            std::make_tuple(1, 0x12u, 0x23456789u, false, false));
  EXPECT_EQ(view->idleInterval(), 0.002);
  view->setDefaults();
  EXPECT_EQ(savedGroup("BLE"), QString(defaults).replace("=00000000", "=10x1"));
  EXPECT_EQ(view->settings().phy, 0);
  EXPECT_EQ(view->samplesPerSymbol(), 4);
}

// One triggered pass at 4 MS/s, demodulated from the recording: the preamble, the advertising
// address and a PDU whitened with its CRC on channel 37, as worked out by hand. The packet
// plays at the panel's level, its mean power being 0 dB.
TEST_F(BleUnitTest, PlaysTheAdvertisingPacketAtIndexHalf) {
  const std::vector<uint8_t> pdu = bitsOfHex("4209563412EEFFC0020106");
  QString pattern;
  for (const uint8_t bit : pdu) pattern += bit ? '1' : '0';
  std::vector<uint8_t> air = {0, 1, 0, 1, 0, 1, 0, 1};
  for (const auto& part : {std::string("D6BE898E"), std::string("CFDB01952F4999707730173831C1")})
    for (const uint8_t bit : bitsOfHex(part)) air.push_back(bit);
  const int sps = 4, idle = 40;

  client.command(":POW -20");
  view->setAccessAddress("8E89BED6");
  view->setCustomPattern(pattern);
  view->setPduSource(-1);
  view->setIdleInterval(idle / 4e6);
  view->setTriggerMode(TriggerSingle);
  // RF last: the mode's first thread is the one that waits for the trigger.
  connectDevice();
  central.setModEnabled(true);
  view->enabledCheck()->click();
  log.mark();
  central.setRFEnabled(true);
  ASSERT_TRUE(waitUntil([&] { return !played({"krtSetSampleRate"}).empty(); }));
  client.command("*TRG");
  ASSERT_TRUE(waitUntil([&] { return !played({"krtFlushAndWait"}).empty(); }));
  const int pass = static_cast<int>(air.size()) * sps + idle;
  EXPECT_EQ(played({"krtSetSampleRate", "krtSubmitIQ"}),
            (Calls{{"krtSetSampleRate", 4e6}, {"krtSubmitIQ", pass - 1}}));
  const Calls level = played({"krtSetLevel"});
  ASSERT_EQ(level.size(), 1u);
  EXPECT_NEAR(level[0].second, -20.0, 1e-4);

  // The writer rewrites the meta and writes the samples after the flush returns.
  std::vector<Sample> burst;
  ASSERT_TRUE(waitUntil([&] {
    const int64_t start = firstStart("annotations", {{"core:label", "trigger"}});
    if (start >= 0) burst = recordedSamples(start, air.size() * sps);
    return !burst.empty();
  }));
  EXPECT_EQ(bitsOf(symbolPhases(burst, 0, sps, air.size()), 0, air.size()), air);
  for (const Sample& v : burst) ASSERT_NEAR(std::abs(v), 1.0f, 1e-4f);
}

// A custom pattern that isn't whole bytes, or a negative byte count of a PN source: that
// thread plays nothing and ends by itself, and the next setting plays again.
TEST_F(BleUnitTest, PduThatCantBeBuiltPlaysNothing) {
  connectAndEnable();
  log.mark();
  view->enabledCheck()->click();
  ASSERT_TRUE(waitUntil([&] { return !played({"krtSubmitIQ"}).empty(); }));
  const std::vector<std::string> watched = {"krtAbort", "krtSetSampleRate", "krtSubmitIQ"};
  const Calls ended = {{"krtAbort", 0}, {"krtAbort", 0}};
  view->setCustomPattern("1010101");
  log.mark();
  view->setPduSource(-1);
  ASSERT_TRUE(waitUntil([&] { return played(watched) == ended; }));
  view->setPduSource(7);
  log.mark();
  view->setByteCount(-1);
  ASSERT_TRUE(waitUntil([&] { return played(watched) == ended; }));
  log.mark();
  view->setByteCount(0);
  EXPECT_TRUE(waitUntil([&] { return log.calls("krtSubmitIQ").size() > 0; }));
}

// Index 12 has no view among the instrument's; a bare one selects it here, so that the
// dispatch runs the fixed burst: 2500 samples at 4 MS/s and the panel's level uncorrected,
// repeated.
class PlainView : public ModeWidget {
public:
  PlainView() : ModeWidget("Burst", 12) {}
  void setDefaults() override {}
  void saveSettings(QSettings*) override {}
  void loadSettings(QSettings*) override {}
};

void registerWithBurstView(ModeRegistry& registry) {
  registerModeUnits(registry);
  registry.addView(new PlainView);
}

class GfskBurstTest : public PanelFixtureOf<registerWithBurstView> {};

TEST_F(GfskBurstTest, DispatchPlaysTheFixedBurst) {
  connectDevice();
  central.setCenterFrequency(2.44e9);
  central.setLevel(-30.0);
  central.setModEnabled(true);
  central.findChild<PlainView*>()->enabledCheck()->click();
  central.setRFEnabled(true);
  const nlohmann::json burst = {
      {"core:frequency", 2.44e9}, {"krt40:sample_rate", 4e6}, {"krt40:level_dbm", -30.0}};
  int64_t start = -1;
  ASSERT_TRUE(waitUntil([&] { return (start = firstStart("captures", burst)) >= 0; }));
  std::vector<Sample> two;
  ASSERT_TRUE(waitUntil([&] { return !(two = recordedSamples(start, 5000)).empty(); }));
  EXPECT_TRUE(std::equal(two.begin(), two.begin() + 2500, two.begin() + 2500));
  EXPECT_NEAR(std::abs(two[700]), 1.0f, 1e-4f);
  EXPECT_EQ(two[1400], Sample(0, 0));
}

}  // namespace
