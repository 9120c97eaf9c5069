// SPDX-License-Identifier: MIT
// A 255-byte Bluetooth LE packet at 8 samples a symbol, from PDU bits to GFSK samples and idle,
// beside a baseline that shapes the zero-stuffed track with the plain circular FIR.
#include "digital/filter_designs.h"
#include "dsp/filter_circular.h"
#include "wireless/ble/ble_waveform.h"
#include "wireless/ble/gfsk_rotors.h"

#include <benchmark/benchmark.h>

namespace {

constexpr int pduBytes = 255;
constexpr int sps = 8;
constexpr double idleSeconds = 0.001;  // the view's default: 8000 zeros at 8 MS/s
constexpr size_t packetBits = 8 + 32 + 8 * pduBytes + 24;

void BM_Ble_255Bytes_Oversample8(benchmark::State& state) {
  const BleSettings settings;
  for (auto _ : state) {
    const auto pdu = blePduBits(9, pduBytes, QString());
    const Waveform wave = buildBleWaveform(settings, sps, idleSeconds, *pdu);
    if (wave.samples.size() != packetBits * sps + 8000) state.SkipWithError("wrong length");
    benchmark::DoNotOptimize(wave.samples.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(packetBits * sps));
}
BENCHMARK(BM_Ble_255Bytes_Oversample8)->Unit(benchmark::kMillisecond)->UseRealTime();

// Baseline: the same packet, its impulses stuffed with zeros and filtered by filterCircular.
void BM_Ble_255Bytes_Oversample8_ZeroStuffedFir_Baseline(benchmark::State& state) {
  const BleSettings settings;
  for (auto _ : state) {
    const std::vector<uint8_t> bits = buildBlePacketBits(settings, *blePduBits(9, pduBytes, {}));
    const int n = static_cast<int>(bits.size()) * sps;
    std::vector<float> taps(8 * sps + 1);
    designGaussian(taps.data(), static_cast<int>(taps.size()), 0.5, sps);
    float sum = 0.0f;
    for (const float t : taps) sum += t;
    for (float& t : taps) t /= sum;
    std::vector<float> track(static_cast<size_t>(n), 0.0f);
    for (size_t i = 0; i < bits.size(); ++i) track[i * sps] = bits[i] ? 0.25f : -0.25f;
    auto fir = vecFirCreate32f(taps.data(), static_cast<int>(taps.size()));
    filterCircular(fir.get(), track.data(), n);
    std::vector<Sample> samples(static_cast<size_t>(n) + 8000);
    benchmark::DoNotOptimize(integrateFrequencyTrack(track.data(), n, samples.data()));
    benchmark::DoNotOptimize(samples.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(packetBits * sps));
}
BENCHMARK(BM_Ble_255Bytes_Oversample8_ZeroStuffedFir_Baseline)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
