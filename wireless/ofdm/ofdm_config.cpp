// SPDX-License-Identifier: MIT
// The OFDM description's defaults: the two built-in configurations and a new resource.
#include "wireless/ofdm/ofdm_config.h"

#include "wireless/ofdm/range_syntax.h"

#include <algorithm>

bool OFDMRange::setText(const QString& newText) {
  text = newText;
  return parseRange(text, values);
}

namespace {

constexpr int kLowest = -26;  // the preambles' lists run over k = -26 .. 26
constexpr int kCount = 53;

// The 802.11 short training sequence without its factor: +-(1+j) at every fourth subcarrier.
std::vector<Sample> shortPreamble() {
  static const int kK[12] = {-24, -20, -16, -12, -8, -4, 4, 8, 12, 16, 20, 24};
  static const int kSign[12] = {1, -1, 1, -1, -1, 1, -1, -1, 1, 1, 1, 1};
  std::vector<Sample> iq(kCount, Sample(0.0f, 0.0f));
  for (int i = 0; i < 12; ++i) iq[kK[i] - kLowest] = Sample(float(kSign[i]), float(kSign[i]));
  return iq;
}

// The 802.11 long training sequence L(k), 0 at DC.
std::vector<Sample> longPreamble() {
  static const int kL[kCount] = {1, 1, -1, -1, 1, 1, -1, 1, -1, 1, 1, 1, 1, 1, 1, -1, -1, 1,
                                 1, -1, 1, -1, 1, 1, 1, 1, 0, 1, -1, -1, 1, 1, -1, 1, -1, 1,
                                 -1, -1, -1, -1, -1, 1, 1, -1, -1, 1, -1, 1, -1, 1, 1, 1, 1};
  std::vector<Sample> iq(kCount);
  for (int i = 0; i < kCount; ++i) iq[i] = Sample(float(kL[i]), 0.0f);
  return iq;
}

// L(k) x (-j)^k: the long sequence turned a quarter turn further for each subcarrier up.
std::vector<Sample> rotatedLongPreamble() {
  static const Sample kTurn[4] = {{1, 0}, {0, -1}, {-1, 0}, {0, 1}};  // (-j)^(k mod 4)
  std::vector<Sample> iq = longPreamble();
  for (int i = 0; i < kCount; ++i) iq[i] *= kTurn[((i + kLowest) % 4 + 4) % 4];
  return iq;
}

struct Row {
  const char* name;
  const char* symbols;
  const char* subcarriers;
  int32_t modulation;
  int32_t dataType;
  int32_t bitSelect;
};

void addResource(OFDMConfig& config, const Row& row, std::vector<Sample> iq = {}) {
  OFDMResource r;
  r.index = static_cast<int32_t>(config.resources.size());
  r.enabled = true;
  r.name = row.name;
  r.symbolRange.setText(row.symbols);
  r.subcarrierIndices.setText(row.subcarriers);
  r.modulation = row.modulation;
  r.dataType = row.dataType;
  r.bitSelect = row.bitSelect;
  if (!iq.empty()) r.userIq = std::move(iq);
  config.resources.push_back(std::move(r));
}

// The 802.11a data subcarriers: -26 .. 26 without DC and the pilots at +-7 and +-21. The
// overlap of -6:1 and 1:6 folds; it stays as the text always had it.
const char* const kDataCarriers = "-26:-22,-20:-8,-6:1,1:6,8:20,22:26";

}  // namespace

OFDMConfig defaultOfdmConfig(int which, bool* ok) {
  OFDMConfig config;
  if (ok) *ok = which == 0 || which == 1;
  if (which == 0) {
    config.symbolCount = 16;
    addResource(config, {"Data", "1:16", "-26:26", 9, OFDMDataBits, 15});
  } else if (which == 1) {
    config.symbolCount = 24;
    addResource(config, {"Preamble Short", "1:2", "-26:26", 0, OFDMDataIq, 9}, shortPreamble());
    addResource(config, {"Preamble Long 1", "3", "-26:26", 0, OFDMDataIq, 9},
                rotatedLongPreamble());
    addResource(config, {"Preamble Long 2", "4", "-26:26", 0, OFDMDataIq, 9}, longPreamble());
    addResource(config, {"SIGNAL", "5", kDataCarriers, 0, OFDMDataBits, 9});
    addResource(config, {"Data", "6:24", kDataCarriers, 9, OFDMDataBits, 9});
    // 27 lies in the right guard band and is zeroed, and +21 keeps data: the list is kept so.
    addResource(config, {"Pilots", "1:24", "-21,-7,7,27", 0, OFDMDataBits, 9});
  }
  return config;
}

OFDMResource newOfdmResource(const std::vector<OFDMResource>& resources) {
  OFDMResource r;
  for (const OFDMResource& other : resources) r.index = std::max(r.index, other.index + 1);
  return r;
}
