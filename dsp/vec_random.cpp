// SPDX-License-Identifier: MIT
// Seeded uniform and Gaussian random numbers with a sequence that is the same everywhere.
#include "dsp/vec_random.h"

#include "dsp/vec_status.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace {

// xoshiro256++ (Blackman and Vigna): fast, and good in all 64 bits.
class Xoshiro256 {
public:
  explicit Xoshiro256(uint64_t seed) {
    for (uint64_t& word : s) word = splitmix64(seed);
  }

  uint64_t next() {
    const uint64_t result = rotl(s[0] + s[3], 23) + s[0];
    const uint64_t t = s[1] << 17;
    s[2] ^= s[0];
    s[3] ^= s[1];
    s[1] ^= s[2];
    s[0] ^= s[3];
    s[2] ^= t;
    s[3] = rotl(s[3], 45);
    return result;
  }

  // Halves of one 64-bit output, low half first.
  uint32_t next32() {
    if (spare) {
      spare = false;
      return high;
    }
    const uint64_t bits = next();
    high = static_cast<uint32_t>(bits >> 32);
    spare = true;
    return static_cast<uint32_t>(bits);
  }

  // 0 <= u < 1 with 53 random bits.
  double uniform() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }

private:
  static uint64_t rotl(uint64_t x, int k) { return (x << k) | (x >> (64 - k)); }
  static uint64_t splitmix64(uint64_t& state) {
    uint64_t z = (state += 0x9e3779b97f4a7c15ULL);
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
    return z ^ (z >> 31);
  }
  uint64_t s[4];
  uint32_t high = 0;
  bool spare = false;
};

// exp and log from IEEE arithmetic alone, so that the ziggurat does not depend on the libm of
// the platform. Relative error about 1e-16, far below what a float sample can show.
constexpr double kLn2Hi = 6.93147180369123816490e-01;
constexpr double kLn2Lo = 1.90821492927058770002e-10;

// 2^k for -1022 <= k <= 1023, built from its bits.
double powerOfTwo(int k) {
  const uint64_t bits = static_cast<uint64_t>(k + 1023) << 52;
  double result;
  std::memcpy(&result, &bits, sizeof(result));
  return result;
}

// floor without a library call (x well within the range of int64).
double floorOf(double x) {
  const double t = static_cast<double>(static_cast<int64_t>(x));
  return t > x ? t - 1.0 : t;
}

// x >= -700, as the ziggurat needs.
double portableExp(double x) {
  const double k = floorOf(x * 1.44269504088896340736 + 0.5);
  const double r = (x - k * kLn2Hi) - k * kLn2Lo;  // |r| <= 0.35
  // Taylor series to r^13, evaluated in pairs (Estrin) so that the products don't wait on
  // each other: the wedge tests of the ziggurat call this often enough to show.
  static constexpr double c[14] = {1.0,
                                   1.0,
                                   1.0 / 2,
                                   1.0 / 6,
                                   1.0 / 24,
                                   1.0 / 120,
                                   1.0 / 720,
                                   1.0 / 5040,
                                   1.0 / 40320,
                                   1.0 / 362880,
                                   1.0 / 3628800,
                                   1.0 / 39916800,
                                   1.0 / 479001600,
                                   1.0 / 6227020800};
  const double r2 = r * r, r4 = r2 * r2, r8 = r4 * r4;
  const double p01 = c[0] + c[1] * r, p23 = c[2] + c[3] * r, p45 = c[4] + c[5] * r;
  const double p67 = c[6] + c[7] * r, p89 = c[8] + c[9] * r, p1011 = c[10] + c[11] * r;
  const double p1213 = c[12] + c[13] * r;
  const double low = (p01 + p23 * r2) + (p45 + p67 * r2) * r4;
  const double high = (p89 + p1011 * r2) + p1213 * r4;
  return (low + high * r8) * powerOfTwo(static_cast<int>(k));
}

double portableLog(double x) {  // x > 0
  int e;
  double m = std::frexp(x, &e);  // 0.5 <= m < 1, exact
  if (m < 0.70710678118654752440) {
    m *= 2.0;
    --e;
  }
  const double s = (m - 1.0) / (m + 1.0);  // |s| < 0.1716
  const double s2 = s * s;
  static constexpr double kOddInverse[12] = {1.0,      1.0 / 3,  1.0 / 5,  1.0 / 7,
                                             1.0 / 9,  1.0 / 11, 1.0 / 13, 1.0 / 15,
                                             1.0 / 17, 1.0 / 19, 1.0 / 21, 1.0 / 23};
  double series = 0.0;
  for (int i = 11; i >= 0; --i) series = kOddInverse[i] + s2 * series;
  return e * kLn2Hi + (2.0 * s * series + e * kLn2Lo);
}

// 128-layer ziggurat of Marsaglia and Tsang (2000): one 32-bit draw gives the layer (low 7
// bits) and the signed position in it; about 99% of draws end at the first comparison.
class Ziggurat {
public:
  static const Ziggurat& instance() {
    static const Ziggurat table;
    return table;
  }

  // One value from the 32-bit draw hz; the rare rejections draw more from rng. The common
  // case is inlined into the fill loop, the rest is kept out of it.
  float sample(uint32_t draw, Xoshiro256& rng) const {
    const int32_t hz = static_cast<int32_t>(draw);
    const int layer = hz & (kLayers - 1);
    if (__builtin_expect(magnitude(hz) < kn[layer], 1)) return static_cast<float>(hz) * wn[layer];
    return rejected(hz, layer, rng);
  }

private:
  __attribute__((noinline)) float rejected(int32_t hz, int layer, Xoshiro256& rng) const {
    for (;;) {
      const float x = static_cast<float>(hz) * wn[layer];
      if (layer == 0) return tail(rng, hz > 0);
      if (fn[layer] + rng.uniform() * (fn[layer - 1] - fn[layer]) < portableExp(-0.5 * x * x))
        return x;
      hz = static_cast<int32_t>(rng.next32());
      layer = hz & (kLayers - 1);
      if (magnitude(hz) < kn[layer]) return static_cast<float>(hz) * wn[layer];
    }
  }

  static constexpr int kLayers = 128;
  static constexpr double kR = 3.442619855899;       // start of the tail
  static constexpr double kV = 9.91256303526217e-3;  // area of each layer
  static constexpr double kM = 2147483648.0;         // 2^31

  Ziggurat() {
    double d = kR, t = kR;
    const double q = kV / portableExp(-0.5 * d * d);
    kn[0] = static_cast<uint32_t>((d / q) * kM);
    kn[1] = 0;
    wn[0] = static_cast<float>(q / kM);
    wn[kLayers - 1] = static_cast<float>(d / kM);
    fn[0] = 1.0;
    fn[kLayers - 1] = portableExp(-0.5 * d * d);
    for (int i = kLayers - 2; i >= 1; --i) {
      d = std::sqrt(-2.0 * portableLog(kV / d + portableExp(-0.5 * d * d)));
      kn[i + 1] = static_cast<uint32_t>((d / t) * kM);
      t = d;
      fn[i] = portableExp(-0.5 * d * d);
      wn[i] = static_cast<float>(d / kM);
    }
  }

  static uint32_t magnitude(int32_t v) {
    return v < 0 ? 0u - static_cast<uint32_t>(v) : static_cast<uint32_t>(v);
  }

  static float tail(Xoshiro256& rng, bool positive) {
    double x, y;
    do {
      x = -portableLog(1.0 - rng.uniform()) / kR;  // 1 - u is in (0, 1]
      y = -portableLog(1.0 - rng.uniform());
    } while (y + y < x * x);
    return static_cast<float>(positive ? kR + x : -kR - x);
  }

  uint32_t kn[kLayers];
  float wn[kLayers];
  double fn[kLayers];
};

constexpr int kBatch = 256;  // 64-bit draws, two values each

int check(const float* dst, int n) {
  if (n < 1) return VecErrSize;
  if (!dst) return VecErrNull;
  return VecOk;
}

}  // namespace

int vecRandUniform32f(float* dst, int n, float low, float high, unsigned int seed) {
  if (int status = check(dst, n)) return status;
  Xoshiro256 rng(seed);
  const double span = static_cast<double>(high) - low;
  for (int i = 0; i < n; ++i) dst[i] = static_cast<float>(low + span * rng.uniform());
  return VecOk;
}

namespace {

// The stream keeps the batch it is in, so that a fill may end inside it and the next one
// continues there: any split of a fill gives the values of one call.
struct GaussStream : VecRandGauss {
  GaussStream(float mean, float stdDev, unsigned int seed)
      : mean(mean), stdDev(stdDev), rng(seed) {}

  // Works on locals: the stores to dst could otherwise alias the members, which the compiler
  // would then reload and store back for every value.
  void fill(float* dst, int n) {
    const Ziggurat& zig = Ziggurat::instance();
    const float m = mean, sd = stdDev;
    int h = half;
    for (int i = 0; i < n;) {
      if (h == 2 * kBatch) {
        refill();
        h = 0;
      }
      const int end = h + std::min(2 * kBatch - h, n - i);
      for (; h < end; ++h) {
        const uint64_t word = batch[h >> 1];
        const uint32_t draw = static_cast<uint32_t>((h & 1) ? word >> 32 : word);
        dst[i++] = m + sd * zig.sample(draw, rng);
      }
    }
    half = h;
  }

  // Draws come in batches, so that the generator's state stays in registers while it fills
  // them; the rejections take further draws from the generator, after the batch.
  void refill() {
    Xoshiro256 local = rng;
    for (uint64_t& word : batch) word = local.next();
    rng = local;
  }

  float mean, stdDev;
  Xoshiro256 rng;
  uint64_t batch[kBatch];
  int half = 2 * kBatch;  // 32-bit halves of the batch used
};

}  // namespace

VecStatePtr<VecRandGauss> vecRandGaussCreate(float mean, float stdDev, unsigned int seed) {
  return VecStatePtr<VecRandGauss>(new GaussStream(mean, stdDev, seed));
}

int vecRandGaussFill32f(VecRandGauss* stream, float* dst, int n) {
  if (int status = check(dst, n)) return status;
  if (!stream) return VecErrNull;
  static_cast<GaussStream*>(stream)->fill(dst, n);
  return VecOk;
}

int vecRandGauss32f(float* dst, int n, float mean, float stdDev, unsigned int seed) {
  if (int status = check(dst, n)) return status;
  GaussStream(mean, stdDev, seed).fill(dst, n);
  return VecOk;
}
