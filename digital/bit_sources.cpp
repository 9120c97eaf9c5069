// SPDX-License-Identifier: MIT
// Bit sources of the modulated modes: PN sequences of a shift register and the user's patterns.
#include "digital/bit_sources.h"

#include <QByteArray>

namespace {

uint32_t pnTapMask(int order) {
  switch (order) {
    case 3: return 0x6;
    case 5: return 0x14;
    case 7: return 0x60;
    case 9: return 0x110;
    case 15: return 0x6000;
    case 21: return 0x140000;
    case 23: return 0x420000;
    default: return 0x60;
  }
}

// The editor's register: the two feedback bits; its width is the order.
struct EditorTaps {
  int low = 0;
  int high = 0;
};

bool editorTaps(int order, EditorTaps& taps) {
  switch (order) {
    case 9: taps = {3, 8}; return true;
    case 15: taps = {13, 14}; return true;
    case 23: taps = {17, 22}; return true;
    default: return false;
  }
}

}  // namespace

std::vector<uint8_t> generatePnBits(int order, uint32_t seed) {
  if (order < 1 || order > maxPnOrder) return {};
  const uint32_t mask = pnTapMask(order);
  std::vector<uint8_t> bits((size_t{1} << order) - 1);
  uint32_t state = seed;
  for (uint8_t& bit : bits) {
    bit = static_cast<uint8_t>(__builtin_parity(state & mask));
    state = (state << 1) | bit;
  }
  return bits;
}

std::vector<uint8_t> bitsFromText(const QString& text) {
  const QByteArray latin1 = text.toLatin1();
  std::vector<uint8_t> bits;
  bits.reserve(static_cast<size_t>(latin1.size()));
  for (const char c : latin1)
    if (c == '0' || c == '1') bits.push_back(static_cast<uint8_t>(c - '0'));
  return bits;
}

QString pnTextFromEditor(int order, uint32_t seed) {
  EditorTaps taps;
  if (!editorTaps(order, taps)) return QString(QChar((seed & 1) ? '1' : '0'));
  const uint32_t full = (uint32_t{1} << order) - 1;
  const uint32_t keep = full >> 1;  // the bits that stay after the shift
  seed &= full;
  QString text(static_cast<int>(full), Qt::Uninitialized);
  QChar* out = text.data();
  int count = 0;
  uint32_t state = seed;
  do {
    const uint32_t feedback = ((state >> taps.low) ^ (state >> taps.high)) & 1;
    state = ((state & keep) << 1) | feedback;
    out[count++] = QChar(feedback ? '1' : '0');
  } while (state != seed && count < static_cast<int>(full));  // the bound only guards the buffer
  text.truncate(count);
  return text;
}
