// SPDX-License-Identifier: MIT
// The 802.11a unit played through the simulated device and its recording decoded back by the
// test receiver: the PSDU the unit was given comes off the air at each rate.
#include "wireless/wlan_nonht/mode_view_wlan_non_ht.h"
#include "digital/bit_sources.h"
#include "modes/mode_types.h"
#include "modes/unit_panel_test.h"
#include "wlan_test_receiver.h"

#include <QCheckBox>
#include <QFileInfo>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <string>
#include <vector>

bool recordsPlayback() { return true; }

namespace {

using WlanNonHtAirTest = UnitPanelTest<ModeViewWLANNonHT>;

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

// Each row is one triggered frame: its rate, source, length and scrambler seed as set in the
// panel, and the source's bits as the receiver must return them.
TEST_F(WlanNonHtAirTest, PlayedFramesDecodeToTheirPsdu) {
  const struct {
    int rateCode, source, bytes, scramblerInit;
    std::vector<uint8_t> bits;
  } rows[] = {
      {11, 9, 50, 93, generatePnBits(9, 23)},     // 6 Mb/s
      {12, 7, 64, 0x1F5, generatePnBits(7, 23)},  // 54 Mb/s; the low byte seeds
      {13, -1, 21, 1, {1, 1, 0, 1, 0, 0, 0}},     // 36 Mb/s, the pattern "1101000"
  };
  view->setCustomData("1101000");
  view->setTriggerMode(TriggerSingle);
  connectAndEnable();
  view->enabledCheck()->click();
  for (const auto& row : rows) {
    SCOPED_TRACE(row.rateCode);
    const size_t marks = triggerMarks().size();
    view->setRate(row.rateCode);
    view->setData(row.source);
    view->setDataLength(row.bytes);
    log.mark();
    view->setScramblerInit(row.scramblerInit);
    ASSERT_TRUE(waitUntil([&] { return !played({"krtSetSampleRate"}).empty(); }));
    client.command("*TRG");
    ASSERT_TRUE(waitUntil([&] { return !played({"krtFlushAndWait"}).empty(); }));
    const Calls pass = played({"krtSubmitIQ"});
    ASSERT_EQ(pass.size(), 1u);
    ASSERT_TRUE(waitUntil([&] {
      const std::vector<int64_t> t = triggerMarks();
      return t.size() > marks && recordedCount() >= t.back() + int64_t(pass[0].second);
    }));
    const int64_t first = triggerMarks().back();
    const std::vector<Sample> air = recordedSamples(first, int64_t(pass[0].second));
    const WlanRxFrame f = decodeWlanFrame(air.data(), air.size(), WlanFrameKind::NonHt);
    ASSERT_EQ(f.error, "");
    EXPECT_EQ(f.start, 0);
    EXPECT_EQ(f.rateCode, row.rateCode);
    EXPECT_EQ(f.scramblerSeed, row.scramblerInit & 0x7F);
    EXPECT_EQ(f.psdu, repeated(row.bits, row.bytes));
  }
}

}  // namespace
