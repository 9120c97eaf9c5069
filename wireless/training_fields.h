// SPDX-License-Identifier: MIT
// Time samples of the legacy and HT short and long training fields.
#pragma once

#include "wireless/ofdm_symbol.h"
#include "wireless/wlan_types.h"

#include <initializer_list>

// Each is made from its 64-entry table by the frame's FFT object, then repeated in time.
ComplexVector legacyStf(WlanFft& fft);  // 160 samples: (last 16 of x, x) twice
ComplexVector legacyLtf(WlanFft& fft);  // 160 samples: last 32 of x, x, x
// The HT short field uses the legacy table scaled by sqrt(1/2) instead of sqrt(13/6), so it is
// lower than the legacy one by that ratio; that level is kept on purpose.
ComplexVector htStf(WlanFft& fft);  // 80 samples: last 16 of x, x
ComplexVector htLtf(WlanFft& fft);  // 80 samples: last 16 of x, x

// Appends the fields made by each builder in turn, in the order given.
void appendFields(ComplexVector& frame, WlanFft& fft,
                  std::initializer_list<ComplexVector (*)(WlanFft&)> fields);
