// SPDX-License-Identifier: MIT
// Frames of every rate and MCS read back by the independent receiver from their own signalling:
// the PSDU bits, the fields of SIGNAL, HT-SIG and VHT-SIG-A/B, and the scrambler seed.
#include "wlan_test_receiver.h"

#include "wireless/rate_params.h"
#include "wireless/wlan_ht/ht_frame_builder.h"
#include "wireless/wlan_nonht/non_ht_frame_builder.h"
#include "wireless/wlan_vht/vht_frame_builder.h"

#include <gtest/gtest.h>

#include <random>

namespace {

constexpr int kLead = 37;  // idle samples before the frame

BitVector randomBits(size_t count, unsigned seed) {
  std::mt19937 rng(seed);
  BitVector bits(count);
  for (auto& b : bits) b = uint8_t(rng() & 1);
  return bits;
}

// The frame as a capture sees it: idle around it and a flat channel of some gain and phase.
WlanRxFrame receive(const ComplexVector& frame, WlanFrameKind kind) {
  ComplexVector air(kLead);
  for (const Sample& s : frame) air.push_back(s * Sample(0.21f, -0.33f));
  air.resize(air.size() + 300);
  return decodeWlanFrame(air.data(), air.size(), kind);
}

TEST(WlanReceiverTest, NonHtEveryRate) {
  for (int i = 0; i < nonHtRateCount; ++i) {
    const NonHtRateRow& row = nonHtRateRow(i);
    SCOPED_TRACE(row.label);
    NonHtFrameParams p;
    p.rateCode = row.rateCode;
    p.rate = row.rate;
    p.scramblerInit = uint8_t(17 + 29 * i);
    p.data = randomBits(8 * size_t(1 + 23 * i), unsigned(i));
    const WlanRxFrame f = receive(buildNonHtFrame(p), WlanFrameKind::NonHt);
    ASSERT_EQ(f.error, "");
    EXPECT_EQ(f.start, kLead);
    EXPECT_EQ(f.rateCode, row.rateCode);
    EXPECT_EQ(f.legacyLength, 1 + 23 * i);
    EXPECT_EQ(f.scramblerSeed, p.scramblerInit & 0x7F);
    EXPECT_EQ(f.psdu, p.data);
  }
}

// HT and VHT with both guards. With the short guard the window is 8: the joins of a 16-sample
// window overlap across an 8-sample guard and leave no clean 64 samples in the symbol. VHT-SIG-B
// counts 4-byte words, so the receiver returns whole words: the bytes past the PSDU are the
// descrambled pad and tail, zeros.
TEST(WlanReceiverTest, HtAndVhtEveryMcsAndGuard) {
  for (const bool vht : {false, true})
    for (int mcs = 0; mcs < (vht ? 9 : 8); ++mcs)
      for (const bool shortGuard : {false, true}) {
        SCOPED_TRACE(testing::Message() << (vht ? "VHT" : "HT") << " MCS " << mcs
                                        << (shortGuard ? " short" : " long"));
        VhtFrameParams p;
        p.mcs = mcs;
        p.shortGuard = shortGuard;
        p.windowLength = shortGuard ? 8 : 16;
        p.scramblerInit = uint8_t(1 + 11 * mcs + shortGuard);
        const size_t bytes = 5 + 19 * size_t(mcs) + shortGuard;
        p.data = randomBits(8 * bytes, unsigned(100 + mcs));
        const WlanRxFrame f = vht ? receive(buildVhtFrame(p), WlanFrameKind::Vht)
                                  : receive(buildHtFrame(p), WlanFrameKind::Ht);
        ASSERT_EQ(f.error, "");
        EXPECT_EQ(f.start, kLead);
        EXPECT_EQ(f.mcs, mcs);
        EXPECT_EQ(f.shortGuard, shortGuard);
        EXPECT_EQ(f.scramblerSeed, p.scramblerInit & 0x7F);
        BitVector expected = p.data;
        if (vht) {
          EXPECT_EQ(f.sigBWords, int(bytes + 3) / 4);
          expected.resize(std::max(f.psdu.size(), expected.size()));
        }
        EXPECT_EQ(f.psdu, expected);
      }
}

}  // namespace
