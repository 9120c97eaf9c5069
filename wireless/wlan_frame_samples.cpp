// SPDX-License-Identifier: MIT
// The PSDU of a WLAN frame from its bit source.
#include "wireless/wlan_frame_samples.h"

#include <algorithm>

std::optional<BitVector> psduFromSource(const BitVector& source, int bytes) {
  const size_t count = bytes > 0 ? static_cast<size_t>(bytes) * 8 : 0;
  if (count > 0 && source.empty()) return std::nullopt;
  BitVector psdu;
  psdu.reserve(count);
  while (psdu.size() < count)
    psdu.insert(psdu.end(), source.begin(),
                source.begin() + static_cast<long>(std::min(source.size(), count - psdu.size())));
  return psdu;
}
