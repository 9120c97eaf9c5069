// SPDX-License-Identifier: MIT
// The receive chain of the WLAN test receiver: L-LTF timing, a DFT a symbol, equalisation on the
// training fields, pilot checks, Gray demapping, deinterleaving, Viterbi and descrambling.
#include "wlan_test_receiver.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <cstring>
#include <functional>

namespace {

using Cd = std::complex<double>;
using Bins = std::array<Cd, 64>;  // indexed by subcarrier k + 32
using Bits = std::vector<uint8_t>;
using Pilots = std::array<double, 4>;

constexpr double kPi = 3.14159265358979323846;
constexpr int kPilotCarriers[4] = {-21, -7, 7, 21};
constexpr Pilots kBasePilots = {1, 1, 1, -1};
constexpr Pilots kFlatPilots = {1, 1, 1, 1};  // the mixed-format SIG symbols of this transmitter

// L-LTF on k = -26..26.
constexpr int kLegacyLtf[53] = {1,  1,  -1, -1, 1,  1, -1, 1,  -1, 1, 1,  1,  1,  1, 1,  -1, -1, 1,
                                1,  -1, 1,  -1, 1,  1, 1,  1,  0,  1, -1, -1, 1,  1, -1, 1,  -1, 1,
                                -1, -1, -1, -1, -1, 1, 1,  -1, -1, 1, -1, 1,  -1, 1, 1,  1,  1};

double legacyLtf(int k) { return std::abs(k) <= 26 ? kLegacyLtf[k + 26] : 0.0; }
double htLtf(int k) {
  if (k == -28 || k == -27) return 1.0;
  if (k == 27 || k == 28) return -1.0;
  return legacyLtf(k);
}

// Data subcarriers in ascending k: edge 26 gives the 48 of non-HT, 28 the 52 of HT and VHT.
std::vector<int> dataCarriers(int edge) {
  std::vector<int> out;
  for (int k = -edge; k <= edge; ++k)
    if (k != 0 && std::abs(k) != 7 && std::abs(k) != 21) out.push_back(k);
  return out;
}

// Bits a subcarrier and code rate num/den of a rate or MCS.
struct Mcs {
  int bpsc, num, den;
  int dataBits(int carriers) const { return carriers * bpsc * num / den; }
};
// SIGNAL RATE bits R1..R4 of 6, 9, 12, 18, 24, 36, 48 and 54 Mb/s.
const struct {
  const char* r1r4;
  Mcs mcs;
} kLegacyRates[] = {{"1101", {1, 1, 2}}, {"1111", {1, 3, 4}}, {"0101", {2, 1, 2}},
                    {"0111", {2, 3, 4}}, {"1001", {4, 1, 2}}, {"1011", {4, 3, 4}},
                    {"0001", {6, 2, 3}}, {"0011", {6, 3, 4}}};
const Mcs kMcs[10] = {{1, 1, 2}, {2, 1, 2}, {2, 3, 4}, {4, 1, 2}, {4, 3, 4},
                      {6, 2, 3}, {6, 3, 4}, {6, 5, 6}, {8, 3, 4}, {8, 5, 6}};

unsigned field(const Bits& bits, int first, int count) {  // low bit first on air
  unsigned v = 0;
  for (int i = 0; i < count; ++i) v |= unsigned(bits[first + i]) << i;
  return v;
}

int parity(int v) { return __builtin_parity(unsigned(v)); }

// Which outputs A and B of the mother code are sent, one column per input bit.
std::vector<int8_t> depuncture(const Bits& bits, int num, size_t inputs) {
  const char* a = num == 2 ? "11" : num == 3 ? "110" : num == 5 ? "11010" : "1";
  const char* b = num == 2 ? "10" : num == 3 ? "101" : num == 5 ? "10101" : "1";
  const size_t period = std::strlen(a);
  std::vector<int8_t> out(2 * inputs, -1);  // -1: an erasure, which every branch matches
  size_t j = 0;
  for (size_t t = 0; t < inputs && j < bits.size(); ++t) {
    if (a[t % period] == '1') out[2 * t] = int8_t(bits[j++]);
    if (b[t % period] == '1' && j < bits.size()) out[2 * t + 1] = int8_t(bits[j++]);
  }
  return out;
}

// Hard-decision Viterbi of the K = 7 code, generators 133 and 171 octal. The state holds the
// last six inputs, newest in bit 5. The trellis starts at zero and ends on the best state, as
// the scrambled tail need not bring it home.
Bits viterbi(const std::vector<int8_t>& coded, size_t inputs) {
  constexpr int kUnreached = 1 << 28;
  std::vector<int> metric(64, kUnreached), next(64);
  metric[0] = 0;
  std::vector<std::array<uint8_t, 64>> from(inputs);  // the dropped oldest bit of the survivor
  for (size_t t = 0; t < inputs; ++t) {
    const int a = coded[2 * t], b = coded[2 * t + 1];
    for (int ns = 0; ns < 64; ++ns) {
      next[ns] = kUnreached;
      for (int d = 0; d < 2; ++d) {
        const int ps = ((ns & 31) << 1) | d;
        if (metric[ps] >= kUnreached) continue;
        const int r = ((ns >> 5) << 6) | ps;  // input, then the six before it
        const int m =
            metric[ps] + (a >= 0 && a != parity(r & 0133)) + (b >= 0 && b != parity(r & 0171));
        if (m < next[ns]) {
          next[ns] = m;
          from[t][ns] = uint8_t(d);
        }
      }
    }
    metric.swap(next);
  }
  int s = int(std::min_element(metric.begin(), metric.end()) - metric.begin());
  Bits out(inputs);
  for (size_t t = inputs; t-- > 0;) {
    out[t] = uint8_t(s >> 5);
    s = ((s & 31) << 1) | from[t][s];
  }
  return out;
}

// Undoes both interleaver permutations of one symbol; j is the order on air, k the encoder's.
// `columns` is 16 for 48 data subcarriers and 13 for 52.
Bits deinterleave(const Bits& in, int bpsc, int columns) {
  const int n = int(in.size()), s = std::max(bpsc / 2, 1), rows = n / columns;
  Bits out(in.size());
  for (int j = 0; j < n; ++j) {
    const int i = s * (j / s) + (j + columns * j / n) % s;
    out[columns * i - (n - 1) * (i / rows)] = in[j];
  }
  return out;
}

// Gray-coded levels of one axis: level m, counted from the most negative, carries m ^ (m >> 1)
// with the first bit most significant.
void demapAxis(double x, int bits, Bits& out) {
  const int levels = 1 << bits;
  const int m = std::clamp(int(std::lround((x + levels - 1) / 2.0)), 0, levels - 1);
  for (int b = bits - 1; b >= 0; --b) out.push_back(uint8_t(((m ^ (m >> 1)) >> b) & 1));
}

void demap(Cd z, int bpsc, Bits& out) {
  if (bpsc == 1) {
    out.push_back(z.real() > 0);
    return;
  }
  const double norm = std::sqrt(2.0 * ((1 << bpsc) - 1) / 3.0);  // mean energy of square QAM
  demapAxis(z.real() * norm, bpsc / 2, out);
  demapAxis(z.imag() * norm, bpsc / 2, out);
}

// The x^7 + x^4 + 1 sequence that follows seven given bits.
Bits scramblerSequence(Bits seq, size_t length) {
  seq.resize(length);
  for (size_t n = 7; n < length; ++n) seq[n] = seq[n - 7] ^ seq[n - 4];
  return seq;
}

// SERVICE starts with seven zeros, so the first seven bits received are the sequence itself; the
// seed is the register that made them, found by running the recurrence backwards.
Bits descramble(const Bits& in, int& seed) {
  const Bits seq = scramblerSequence(Bits(in.begin(), in.begin() + 7), in.size());
  Bits out(in.size());
  for (size_t n = 0; n < in.size(); ++n) out[n] = in[n] ^ seq[n];
  int ext[14] = {};  // ext[i] is sequence bit i - 7
  for (int i = 0; i < 7; ++i) ext[7 + i] = seq[i];
  seed = 0;
  for (int n = 6; n >= 0; --n) seed |= (ext[n] = ext[n + 7] ^ ext[n + 3]) << (6 - n);
  return out;
}

// Pilot polarity p_n of the non-HT data symbols: the scrambler sequence from all ones, 1 -> -1.
double polarity(int n) {
  static const Bits seq = scramblerSequence(Bits(7, 1), 127 + 7);
  return seq[7 + n % 127] ? -1.0 : 1.0;
}

// CRC-8 of HT-SIG, VHT-SIG-A and VHT SERVICE: x^8 + x^2 + x + 1 from all ones, sent
// complemented with c7 first. True when the 8 bits at `sent` carry the CRC of bits[0..count).
bool crcMatches(const uint8_t* bits, int count, const uint8_t* sent) {
  unsigned r = 0xFF;
  for (int i = 0; i < count; ++i) {
    const unsigned feedback = ((r >> 7) & 1) ^ bits[i];
    r = ((r << 1) & 0xFF) ^ (feedback ? 0x07 : 0);
  }
  for (int b = 0; b < 8; ++b)
    if (sent[b] != ((~r >> (7 - b)) & 1)) return false;
  return true;
}

bool zeros(const Bits& bits, size_t first, size_t count) {
  return std::all_of(bits.begin() + long(first), bits.begin() + long(first + count),
                     [](uint8_t b) { return b == 0; });
}

// A data field's shape: where its symbols sit and how they are coded.
struct DataLayout {
  long long first = 0;  // frame offset of the first symbol's guard
  int symbolLength = 80, guard = 16;
  int edge = 26, columns = 16;
  Mcs mcs{1, 1, 2};
  std::function<Pilots(int)> pilots;
};

class Receiver {
public:
  Receiver(const Sample* x, size_t count) : x_(x), count_(static_cast<long long>(count)) {
    for (int n = 0; n < 64; ++n) twiddle_[n] = std::polar(1.0, -2 * kPi * n / 64);
  }

  // The first sample whose next 64, and the 64 after, are the L-LTF symbol: its body starts
  // 192 samples into the frame.
  bool sync() {
    std::array<Cd, 64> ref{};
    for (int m = 0; m < 64; ++m)
      for (int k = -26; k <= 26; ++k) ref[m] += legacyLtf(k) * std::conj(twiddle_[(k * m) & 63]);
    double refEnergy = 0;
    for (const Cd& r : ref) refEnergy += std::norm(r);
    const auto matches = [&](long long n) {
      Cd c = 0;
      double e = 0;
      for (int m = 0; m < 64; ++m) {
        c += Cd(x_[n + m]) * std::conj(ref[m]);
        e += std::norm(Cd(x_[n + m]));
      }
      return e > 0 && std::norm(c) >= 0.8 * e * refEnergy;
    };
    for (long long n = 192; n + 128 <= count_; ++n)
      if (matches(n) && matches(n + 64)) {
        start = n - 192;
        return true;
      }
    return false;
  }

  // The subcarriers of the body at frame offset `body`, read `advance` samples early inside the
  // guard: a windowed transmitter blends the last samples before each join, and the ramp the
  // early start puts on the phases is taken off again.
  bool bins(long long body, int advance, Bins& out) const {
    const long long first = start + body - advance;
    if (first < 0 || first + 64 > count_) return false;
    for (int b = 0; b < 64; ++b) {
      Cd acc = 0;
      for (int m = 0; m < 64; ++m) acc += Cd(x_[first + m]) * twiddle_[(b * m) & 63];
      const int k = b < 32 ? b : b - 64;
      out[k + 32] = acc * twiddle_[(64 - (k * advance) % 64) & 63];
    }
    return true;
  }

  // The channel from the two L-LTF symbols, or from the one HT-LTF at frame offset `body`.
  bool estimate(bool ht, long long body = 0) {
    Bins a{}, b{};
    if (!(ht ? bins(body, 8, a) && bins(body, 8, b) : bins(192, 8, a) && bins(256, 8, b)))
      return false;
    for (int k = -32; k < 32; ++k) {
      const double ltf = ht ? htLtf(k) : legacyLtf(k);
      channel_[k + 32] = ltf == 0 ? Cd(0) : (a[k + 32] + b[k + 32]) / (2 * ltf);
    }
    return true;
  }

  // The equalised symbol at `body`, if it is there and its pilots are `pilots`.
  bool symbol(long long body, int advance, const Pilots& pilots, Bins& z) const {
    if (!bins(body, advance, z)) return false;
    for (int k = -32; k < 32; ++k)
      z[k + 32] = channel_[k + 32] == Cd(0) ? Cd(0) : z[k + 32] / channel_[k + 32];
    for (int i = 0; i < 4; ++i)
      if (std::abs(z[kPilotCarriers[i] + 32] - pilots[i]) > 0.3) return false;
    return true;
  }

  // A rate-1/2 BPSK SIG field of `symbols` symbols from `body` on, 80 samples apart; `onQ`
  // names each symbol's axis, which is checked before its bits are taken.
  bool sig(long long body, const std::vector<bool>& onQ, const Pilots& pilots, int edge,
           Bits& out) const {
    Bits coded;
    for (size_t s = 0; s < onQ.size(); ++s) {
      Bins z;
      if (!symbol(body + 80 * long(s), 8, pilots, z)) return false;
      double re = 0, im = 0;
      Bits raw;
      for (int k : dataCarriers(edge)) {
        re += std::abs(z[k + 32].real());
        im += std::abs(z[k + 32].imag());
        raw.push_back((onQ[s] ? z[k + 32].imag() : z[k + 32].real()) > 0);
      }
      if ((im > re) != onQ[s]) return false;
      const Bits d = deinterleave(raw, 1, edge == 26 ? 16 : 13);
      coded.insert(coded.end(), d.begin(), d.end());
    }
    out = viterbi(depuncture(coded, 1, coded.size() / 2), coded.size() / 2);
    return true;
  }

  // The coded bits of `symbols` data symbols, deinterleaved, or an empty vector at the first
  // symbol that is missing or has wrong pilots.
  Bits data(const DataLayout& d, int symbols) const {
    const int advance = d.guard / 2;
    Bits coded;
    for (int n = 0; n < symbols; ++n) {
      Bins z;
      if (!symbol(d.first + long(n) * d.symbolLength + d.guard, advance, d.pilots(n), z)) return {};
      Bits raw;
      for (int k : dataCarriers(d.edge)) demap(z[k + 32], d.mcs.bpsc, raw);
      const Bits di = deinterleave(raw, d.mcs.bpsc, d.columns);
      coded.insert(coded.end(), di.begin(), di.end());
    }
    return coded;
  }

  long long start = -1;

private:
  const Sample* x_;
  long long count_;
  std::array<Cd, 64> twiddle_;
  Bins channel_{};
};

WlanRxFrame failed(WlanRxFrame f, const std::string& why) {
  f.error = why;
  f.psdu.clear();
  return f;
}

// SIGNAL or L-SIG: RATE, LENGTH, even parity over the first 18 bits and a zero tail.
bool parseSignal(const Bits& s, WlanRxFrame& f, const Mcs*& rate) {
  int ones = 0;
  for (int i = 0; i < 18; ++i) ones += s[i];
  if (ones % 2 || !zeros(s, 18, 6)) return false;
  const std::string r1r4 = {char('0' + s[0]), char('0' + s[1]), char('0' + s[2]), char('0' + s[3])};
  rate = nullptr;
  for (const auto& row : kLegacyRates)
    if (r1r4 == row.r1r4) rate = &row.mcs;
  f.rateCode = int(field(s, 0, 4));
  f.legacyLength = int(field(s, 5, 12));
  return rate != nullptr;
}

// VHT has no byte count on the air: SIG-B gives 4-byte words, and L-SIG the time. Of the
// symbol counts both allow, the longest whose last symbol is there with its pilots wins.
int vhtSymbols(const Receiver& rx, DataLayout& d, const WlanRxFrame& f) {
  const int ndbps = d.mcs.dataBits(52), words = f.sigBWords;
  const int lo = (8 * std::max(4 * words - 3, 0) + 22 + ndbps - 1) / ndbps;
  const int hi = (32 * words + 22 + ndbps - 1) / ndbps;
  const double dataUs = (f.legacyLength + 3) / 3 * 4 + 20 - 40.0;
  for (int n = hi; n >= lo; --n) {
    const bool timed = f.shortGuard ? std::abs(n * 3.6 - dataUs) < 4.0 : n * 4.0 == dataUs;
    if (timed && !rx.data({d.first + long(n - 1) * d.symbolLength, d.symbolLength, d.guard, d.edge,
                           d.columns, d.mcs, [&](int) { return d.pilots(n - 1); }},
                          1)
                      .empty())
      return n;
  }
  return 0;
}

}  // namespace

WlanRxFrame decodeWlanFrame(const Sample* samples, size_t count, WlanFrameKind kind) {
  WlanRxFrame f;
  Receiver rx(samples, count);
  if (!rx.sync()) return failed(f, "no L-LTF");
  f.start = rx.start;
  if (!rx.estimate(false)) return failed(f, "L-LTF cut off");
  const bool nonHt = kind == WlanFrameKind::NonHt;
  Bits sig;
  const Mcs* legacyRate = nullptr;
  if (!rx.sig(336, {false}, nonHt ? kBasePilots : kFlatPilots, 26, sig))
    return failed(f, "SIGNAL symbol: pilots or axis");
  if (!parseSignal(sig, f, legacyRate)) return failed(f, "SIGNAL parity, tail or rate");

  DataLayout d;
  int psduBytes = 0, symbols = 0;
  if (nonHt) {
    d.first = 400;
    d.mcs = *legacyRate;
    d.pilots = [](int n) {
      const double p = polarity(n + 1);  // p_0 went to SIGNAL
      return Pilots{p, p, p, -p};
    };
    psduBytes = f.legacyLength;
    symbols = (8 * psduBytes + 22 + d.mcs.dataBits(48) - 1) / d.mcs.dataBits(48);
  } else {
    const bool vht = kind == WlanFrameKind::Vht;
    if (f.rateCode != 0xB) return failed(f, "L-SIG rate is not 6 Mb/s");
    if (!rx.sig(416, {!vht, true}, kFlatPilots, 26, sig)) return failed(f, "SIG: pilots or axis");
    if (!crcMatches(sig.data(), 34, sig.data() + 34) || !zeros(sig, 42, 6))
      return failed(f, "SIG CRC or tail");
    f.mcs = int(vht ? field(sig, 28, 4) : field(sig, 0, 7));
    f.shortGuard = sig[vht ? 24 : 31];
    if (f.mcs > (vht ? 9 : 7) || (vht && (field(sig, 10, 3) != 0 || sig[26])))
      return failed(f, "SIG asks for more than one BCC stream");
    d.mcs = kMcs[f.mcs];
    d.edge = 28;
    d.columns = 13;
    d.first = vht ? 800 : 720;
    d.symbolLength = f.shortGuard ? 72 : 80;
    d.guard = f.shortGuard ? 8 : 16;
    d.pilots = [](int n) {  // the one-stream rotation, no polarity
      Pilots p;
      for (int i = 0; i < 4; ++i) p[size_t(i)] = kBasePilots[size_t((n + i) % 4)];
      return p;
    };
    if (!rx.estimate(true, 656)) return failed(f, "HT-LTF cut off");
    if (vht) {
      Bits sigB;
      if (!rx.sig(736, {false}, kBasePilots, 28, sigB)) return failed(f, "SIG-B: pilots or axis");
      if (field(sigB, 17, 3) != 7 || !zeros(sigB, 20, 6))
        return failed(f, "SIG-B reserved or tail");
      f.sigBWords = int(field(sigB, 0, 17));
      symbols = vhtSymbols(rx, d, f);
      psduBytes = std::min(4 * f.sigBWords, (symbols * d.mcs.dataBits(52) - 22) / 8);
    } else {
      psduBytes = int(field(sig, 8, 16));
      symbols = (8 * psduBytes + 22 + d.mcs.dataBits(52) - 1) / d.mcs.dataBits(52);
    }
  }

  f.symbols = symbols;
  const Bits coded = rx.data(d, symbols);
  if (symbols == 0 || coded.empty()) return failed(f, "DATA symbols missing or pilots wrong");
  const size_t inputs = size_t(symbols) * size_t(d.mcs.dataBits(nonHt ? 48 : 52));
  const Bits stream =
      descramble(viterbi(depuncture(coded, d.mcs.num, inputs), inputs), f.scramblerSeed);
  if (kind == WlanFrameKind::Vht) {
    const uint32_t sigB = uint32_t(f.sigBWords) | 0xE0000u;  // the 20 bits that SIG-B sent
    Bits sigBBits;
    for (int i = 0; i < 20; ++i) sigBBits.push_back(uint8_t((sigB >> i) & 1));
    if (stream[7] || !crcMatches(sigBBits.data(), 20, stream.data() + 8))
      return failed(f, "SERVICE CRC of SIG-B");
  } else if (!zeros(stream, 7, 9)) {
    return failed(f, "SERVICE reserved bits");
  }
  f.psdu.assign(stream.begin() + 16, stream.begin() + 16 + 8 * long(psduBytes));
  return f;
}
