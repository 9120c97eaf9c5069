#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
# The output monitor's figures computed independently with numpy from the simulated device's
# recording, for tests/core/output_monitor_test.cpp. Prints one JSON object.
#
#   monitor_reference.py <recording prefix> ccdf
#       mean power (dBFS) and the dB above it that 1 %, 0.1 % and 0.01 % of the samples exceed
#   monitor_reference.py <recording prefix> spectrum <bins> <bin> [<bin> ...]
#       Welch periodogram (4-term Blackman-Harris, half overlap, full-scale tone on a bin = 0 dB)
#       at the given bins counted from DC, and its median over the bins from DC+lo to DC+hi
#       given as "median:lo:hi"
import json
import sys

import numpy as np


def samples_of_last_capture(prefix):
    with open(prefix + ".sigmf-meta") as f:
        meta = json.load(f)
    start = max(int(c.get("core:sample_start", 0)) for c in meta["captures"])
    data = np.fromfile(prefix + ".sigmf-data", dtype=np.complex64)
    return data[start:].astype(np.complex128)


def ccdf(x):
    p = np.abs(x) ** 2
    mean = p.mean()
    rel = 10 * np.log10(np.maximum(p, 1e-30) / mean)
    # The level that a fraction q of the samples exceed.
    level = lambda q: float(np.quantile(rel, 1 - q))
    return {"mean_dbfs": float(10 * np.log10(mean)), "p1": level(0.01), "p0.1": level(0.001),
            "p0.01": level(0.0001), "count": int(len(x))}


def welch(x, n):
    k = np.arange(n)
    a = (0.35875, 0.48829, 0.14128, 0.01168)
    w = (a[0] - a[1] * np.cos(2 * np.pi * k / n) + a[2] * np.cos(4 * np.pi * k / n)
         - a[3] * np.cos(6 * np.pi * k / n))
    starts = range(0, len(x) - n + 1, n // 2)
    power = sum(np.abs(np.fft.fft(x[s:s + n] * w)) ** 2 for s in starts) / len(starts)
    return 10 * np.log10(np.maximum(power / w.sum() ** 2, 1e-30))


def spectrum(x, n, picks):
    levels = welch(x, n)
    out = {}
    for pick in picks:
        if pick.startswith("median:"):
            lo, hi = (int(v) for v in pick.split(":")[1:])
            out[pick] = float(np.median(np.concatenate([levels[lo:hi], levels[n - hi:n - lo]])))
        else:
            out[pick] = float(levels[int(pick) % n])
    return out


def main():
    prefix, what = sys.argv[1], sys.argv[2]
    x = samples_of_last_capture(prefix)
    if what == "ccdf":
        result = ccdf(x)
    else:
        result = spectrum(x, int(sys.argv[3]), sys.argv[4:])
    print(json.dumps(result))


if __name__ == "__main__":
    main()
