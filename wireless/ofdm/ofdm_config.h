// SPDX-License-Identifier: MIT
// The free-form OFDM description: a grid of subcarriers by symbols filled by named resources.
#pragma once

#include "dsp/sample.h"

#include <QString>

#include <cstdint>
#include <vector>

// A range as the user typed it beside the sorted, duplicate-free integers it stands for.
struct OFDMRange {
  QString text;
  std::vector<int> values;

  // Stores `newText` and its parse; false (with the values up to the bad part) when invalid.
  bool setText(const QString& newText);
};

// One resource claims symbols (1-based) and subcarriers (0 = DC) and fills them with user I/Q
// values (dataType 1) or with constellation points of modulated bits (dataType 0).
struct OFDMResource {
  int32_t index = 0;
  bool enabled = false;
  QString name = "Unnamed";
  OFDMRange symbolRange;
  OFDMRange subcarrierIndices;
  int32_t modulation = 0;       // DigitalMod code
  double guardInterval = 0.25;  // kept for the file; the generator ignores it
  double scalar = 1.0;          // likewise
  int32_t dataType = 0;         // 0 "Bits", 1 "I/Q values"
  std::vector<Sample> userIq{Sample(1.0f, 0.0f)};
  int32_t bitSelect = 9;  // PN order, or -1 for userBits
  QString userBits = "0011";
};

struct OFDMConfig {
  int32_t fftSize = 64;
  double carrierSpacing = 78125.0;  // Hz
  int32_t guardCarriersLeft = 6;
  int32_t guardCarriersRight = 5;
  int32_t symbolCount = 16;
  bool nullDc = true;
  double guardInterval = 0.25;  // fraction of fftSize, 0 to 0.5 from the view
  std::vector<OFDMResource> resources;  // applied in list order, later ones on top
};

// Data of the resources' "Data Type" combo.
enum OFDMDataType : int32_t { OFDMDataBits = 0, OFDMDataIq = 1 };
// "Bit Type" value of the user's own bit pattern.
constexpr int32_t ofdmCustomBits = -1;

// The default configurations of the view's combo: 0 one QAM16 data block, 1 an 802.11a-like
// frame with its preambles, SIGNAL, data and pilots. Any other number sets `ok` false and gives
// the configuration's defaults without resources.
OFDMConfig defaultOfdmConfig(int which, bool* ok = nullptr);

// A default resource with the index after the highest one in `resources` (0 for none).
OFDMResource newOfdmResource(const std::vector<OFDMResource>& resources);
