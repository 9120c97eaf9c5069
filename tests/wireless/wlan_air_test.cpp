// SPDX-License-Identifier: MIT
// The three WLAN units played through the simulated device and their recording decoded back by
// the test receiver: the PSDU each unit was given comes off the air at every modulation.
#include "digital/bit_sources.h"
#include "wireless/wlan_ht/mode_view_wlan_ht.h"
#include "wireless/wlan_nonht/mode_view_wlan_non_ht.h"
#include "wireless/wlan_vht/mode_view_wlan_vht.h"
#include "wlan_test_receiver.h"
#include "wlan_unit_panel_test.h"

#include <QFileInfo>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <string>
#include <vector>

bool recordsPlayback() { return true; }

namespace {

// Where each triggered pass begins in the recording, from the meta the device rewrites.
std::vector<int64_t> triggerMarks() {
  std::ifstream in(recordingPath() + ".sigmf-meta");
  const nlohmann::json meta = nlohmann::json::parse(in, nullptr, false);
  std::vector<int64_t> marks;
  if (meta.is_discarded()) return marks;
  for (const auto& a : meta.value("annotations", nlohmann::json::array()))
    if (a.value("core:label", "") == "trigger") marks.push_back(a.value("core:sample_start", 0));
  return marks;
}

int64_t recordedCount() {
  return QFileInfo(QString::fromStdString(recordingPath() + ".sigmf-data")).size() / 8;
}

std::vector<Sample> recordedSamples(int64_t first, int64_t count) {
  std::vector<Sample> samples(static_cast<size_t>(count));
  std::ifstream in(recordingPath() + ".sigmf-data", std::ios::binary);
  in.seekg(first * 8);
  in.read(reinterpret_cast<char*>(samples.data()), static_cast<std::streamsize>(count * 8));
  return samples;
}

// `bits` repeated from its first bit to `bytes` bytes.
std::vector<uint8_t> repeated(const std::vector<uint8_t>& bits, int bytes) {
  std::vector<uint8_t> out(8 * static_cast<size_t>(bytes));
  for (size_t i = 0; i < out.size(); ++i) out[i] = bits[i % bits.size()];
  return out;
}

template <class View>
View* viewOf(QWidget& central, int mode) {
  for (View* v : central.findChildren<View*>())
    if (v->modeIndex() == mode) return v;
  return nullptr;
}

using WlanAirTest = WlanUnitPanelTest<ModeViewWLANNonHT>;

// Each row is one triggered frame: its mode and rate (the SIGNAL rate code, or the MCS), guard,
// source, length and scrambler seed as set in the panel. The receiver must read the rate from
// the air and return the source's bits. The short guard is played with a join window of 8: the
// default 16 blends part of each 72-sample symbol into the next one's body.
TEST_F(WlanAirTest, PlayedFramesDecodeToTheirPsdu) {
  const struct {
    int mode, rate;
    bool shortGuard;
    int source, bytes, scramblerInit;
  } rows[] = {
      {11, 11, false, 9, 50, 93},    // 6 Mb/s, BPSK 1/2
      {11, 12, false, 7, 64, 0x1F5}, // 54 Mb/s, QAM64 3/4; the low byte seeds
      {11, 13, false, -1, 21, 1},    // 36 Mb/s, QAM16 3/4, the custom pattern
      {16, 2, false, 9, 40, 5},      // QPSK 3/4
      {16, 5, true, 15, 100, 127},   // QAM64 2/3
      {16, 7, false, -1, 64, 93},    // QAM64 5/6
      {18, 8, false, 9, 64, 93},     // QAM256 3/4
      {18, 3, true, 7, 32, 42},      // QAM16 1/2
  };
  const std::vector<uint8_t> pattern = {1, 1, 0, 1, 0, 0, 0};
  connectAndEnable();
  for (const auto& row : rows) {
    SCOPED_TRACE(std::to_string(row.mode) + " " + std::to_string(row.rate));
    ModeViewWLAN* v = viewOf<ModeViewWLAN>(central, row.mode);
    ASSERT_NE(v, nullptr);
    v->setCustomData("1101000");
    const size_t marks = triggerMarks().size();
    const Calls pass = playOnePass(*v, [&] {
      if (auto* nonHt = dynamic_cast<ModeViewWLANNonHT*>(v)) nonHt->setRate(row.rate);
      if (auto* ht = dynamic_cast<ModeViewWLANHT*>(v)) {
        ht->setMcs(row.rate);
        ht->setGuardInterval(row.shortGuard ? 0 : 1);
      }
      v->setWindowLength(row.shortGuard ? 8 : 16);
      v->setData(row.source);
      v->setDataLength(row.bytes);
      v->setScramblerInit(row.scramblerInit);
    });
    ASSERT_EQ(pass.size(), 2u);
    const int64_t count = static_cast<int64_t>(pass[1].second);
    ASSERT_TRUE(waitUntil([&] {
      const std::vector<int64_t> t = triggerMarks();
      return t.size() > marks && recordedCount() >= t.back() + count;
    }));
    const std::vector<Sample> air = recordedSamples(triggerMarks().back(), count);
    const WlanFrameKind kind = row.mode == 11   ? WlanFrameKind::NonHt
                               : row.mode == 16 ? WlanFrameKind::Ht
                                                : WlanFrameKind::Vht;
    const WlanRxFrame f = decodeWlanFrame(air.data(), air.size(), kind);
    ASSERT_EQ(f.error, "");
    EXPECT_EQ(f.start, 0);
    EXPECT_EQ(row.mode == 11 ? f.rateCode : f.mcs, row.rate);
    EXPECT_EQ(f.shortGuard, row.shortGuard);
    EXPECT_EQ(f.scramblerSeed, row.scramblerInit & 0x7F);
    EXPECT_EQ(f.psdu, repeated(row.source < 0 ? pattern : generatePnBits(row.source, 23), row.bytes));
  }
}

}  // namespace
