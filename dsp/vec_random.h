// SPDX-License-Identifier: MIT
// Seeded uniform and Gaussian random numbers with a sequence that is the same everywhere.
#pragma once

#include "dsp/vec_alloc.h"

// Both make a generator from seed, fill dst and drop the generator: equal seeds give equal
// arrays. The sequence is this program's own (xoshiro256++ seeded through splitmix64; Gaussian
// values by a 128-layer ziggurat) and uses only IEEE arithmetic and sqrt, so it is bit for bit
// the same on every platform and with every standard library. Changing it changes every
// noise record and random phase the instrument has produced; the tests pin it.

// Values in low to high (both may be reached through rounding).
int vecRandUniform32f(float* dst, int n, float low, float high, unsigned int seed);
// Normal distribution of the given mean and standard deviation.
int vecRandGauss32f(float* dst, int n, float mean, float stdDev, unsigned int seed);

// The Gaussian sequence of a seed as a stream: consecutive fills continue it, so that values
// filled in any split equal those of one vecRandGauss32f call. One thread at a time.
struct VecRandGauss : VecState {};
VecStatePtr<VecRandGauss> vecRandGaussCreate(float mean, float stdDev, unsigned int seed);
int vecRandGaussFill32f(VecRandGauss* stream, float* dst, int n);
