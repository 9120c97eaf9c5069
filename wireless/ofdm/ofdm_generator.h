// SPDX-License-Identifier: MIT
// The OFDM waveform of a description: the filled grid, inverse FFT and cyclic prefix a symbol.
#pragma once

#include "dsp/sample.h"
#include "wireless/ofdm/ofdm_config.h"

#include <cstdint>
#include <vector>

// Seed of the PN word sources; any seed reaching the taps gives a full period.
constexpr uint32_t ofdmPnSeed = 23;
// The longest waveform built, in samples (512 MiB): a configuration file can ask for any size,
// and one beyond this gives no samples instead of exhausting memory.
constexpr int64_t maxOfdmSamples = int64_t{1} << 26;

// The grid in subcarrier order: symbolCount rows of fftSize bins, bin fftSize / 2 + c holding
// subcarrier c, after the resources, the DC null and the guard bands. Empty for a grid of no
// bins.
std::vector<std::vector<Sample>> buildOfdmGrid(const OFDMConfig& config);

// symbolCount x (fftSize + G) samples, G = truncate(fftSize x guardInterval): each row's
// inverse FFT (scaled by 1/sqrt(N)) behind its last G samples. No windowing, no normalisation.
// An fftSize that is no power of two transforms only its first bin, as an FFT of order 0.
// Empty when the grid is empty, G falls outside 0 .. fftSize, or the length passes
// maxOfdmSamples.
std::vector<Sample> generateOfdm(const OFDMConfig& config);

// The values a "Bits" resource draws from, in order, read cyclically: the user's bits taken
// bitsPerSymbol at a time (first bit lowest), or one period of 2^order - 1 words of the PN
// register of `bitSelect`, each the window of bitsPerSymbol bits that starts at its step.
// Empty when no symbol can be made.
std::vector<uint32_t> ofdmSymbolSource(const OFDMResource& resource, int bitsPerSymbol);
