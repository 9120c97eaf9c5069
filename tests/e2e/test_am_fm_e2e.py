# SPDX-License-Identifier: MIT
# AM and FM end to end: set up over SCPI, play on the simulated KRT40, measure the recording.
"""Starts krt40 headless against the simulated device, selects AM and then FM over SCPI (rows
56 to 71), lets each play for a moment, ends the program and checks the recording: the capture
segment's sample rate is the expected S, one AM period of I matches the formula within float
precision, and the FM samples have magnitude 1 and an instantaneous frequency that peaks at the
deviation.

Usage: /usr/bin/python3 test_am_fm_e2e.py --app <path of krt40> [--keep]
"""

import array
import cmath
import math
import sys
import time

from krt40_e2e import open_client, poll_until, read_recording, run_e2e

FREQUENCY = 1.5e9
LEVEL = -12.0
# AM: rate 100 Hz keeps N = 16384 at S = 1638400/s; triangle, 80 %.
AM_RATE, AM_DEPTH, AM_SHAPE = 100.0, 80.0, "triangle"
AM_N, AM_S = 16384, 1638400.0
# FM: rate 1 kHz, deviation 5 kHz: W = 3e6, N = 3000, S = 3e6; sine.
FM_RATE, FM_DEVIATION = 1000.0, 5000.0
FM_N, FM_S = 3000, 3e6
PLAY_SECONDS = 0.3


def to_float32(x):
    return array.array("f", [x])[0]


def am_expected():
    """One AM period of I, from its formula, rounded to float as the builder does."""
    n, d = AM_N, AM_DEPTH / 200.0
    h = n // 2
    q = h // 2
    out = []
    for i in range(n):
        t = i if i < h else n - i
        m = t / q - 1.0  # triangle
        out.append(to_float32(m * d + 0.5))
    return out


def play(r, inst, name):
    """RF on, wait until *ESR? reports the output running, play a while, RF off."""
    inst.write(":OUTP ON;*OPC")
    took = poll_until(inst, "*ESR?", "1", 10)
    r.check("%s output runs (*ESR? 1)" % name, took is not None, "still 0 after 10 s")
    time.sleep(PLAY_SECONDS)
    inst.write(":OUTP OFF")
    r.equal("%s RF off" % name, inst.query(":OUTP?"), "0")


def check_session(r, rm, app):
    inst = open_client(rm, app, 20)
    try:
        r.check("device opens", poll_until(inst, ":SYST:DEV:ACT?", "1", 10) is not None)
        inst.write(":OUTP OFF")
        inst.write(":FREQ 1.5 GHz")  # nextFrequency reads one exponent digit
        inst.write(":POW %g" % LEVEL)
        inst.write(":OUTP:MOD ON")

        inst.write(":AM ON")
        inst.write(":AM:FREQ %g;:AM:DEPT %g;:AM:SHAP tri" % (AM_RATE, AM_DEPTH))
        r.equal("AM set", inst.query(":AM?;:AM:FREQ?;:AM:DEPT?;:AM:SHAP?"), "1;100;80;" + AM_SHAPE)
        play(r, inst, "AM")

        inst.write(":FM ON;:FM:FREQ %g;:FM:DEV %g;:FM:SHAP sine" % (FM_RATE, FM_DEVIATION))
        r.equal("FM set", inst.query(":FM?;:AM?;:FM:FREQ?;:FM:DEV?;:FM:SHAP?"), "1;0;1000;5000;sine")
        play(r, inst, "FM")

        inst.write(":SYST:CLOS")
    finally:
        inst.close()
    code = app.wait_exit(10)
    r.check(":SYST:CLOS ends the program", code == 0, "exit code %r after 10 s" % code)


def find_segment(captures, rate):
    for c in captures:
        if (c.get("krt40:sample_rate") == rate and c.get("core:frequency") == FREQUENCY
                and c["end"] > c["core:sample_start"]):
            return c
    return None


def check_am(r, captures, samples):
    seg = find_segment(captures, AM_S)
    if not r.check("AM capture at %g/s" % AM_S, seg is not None, "captures: %r" % captures):
        return
    r.equal("AM level uncorrected", seg.get("krt40:level_dbm"), LEVEL)
    start, end = seg["core:sample_start"], seg["end"]
    if not r.check("AM segment holds a period", end - start >= AM_N, "%d samples" % (end - start)):
        return
    got = samples(start, end)
    expected = am_expected()
    # The submit loop starts at sample 0 of the period right after the retune.
    worst = max(abs(got[k][0] - expected[k]) for k in range(AM_N))
    r.check("first AM period of I matches the formula", worst <= 1e-6, "worst error %g" % worst)
    r.check("AM Q is zero", all(q == 0.0 for _, q in got[:AM_N]))
    # The rest of the segment repeats the period without a seam.
    bad = sum(1 for k in range(len(got)) if abs(got[k][0] - expected[k % AM_N]) > 1e-6)
    r.check("whole AM segment is the period repeated", bad == 0, "%d of %d differ" % (bad, len(got)))
    lo, hi = min(i for i, _ in got), max(i for i, _ in got)
    depth = 100.0 * (hi - lo) / (hi + lo)
    r.check("AM depth from the envelope", abs(depth - AM_DEPTH) < 0.01, "measured %.4f %%" % depth)
    print("info: AM segment of %d samples (%.1f periods), depth %.4f %%"
          % (len(got), len(got) / AM_N, depth))


def check_fm(r, captures, samples):
    seg = find_segment(captures, FM_S)
    if not r.check("FM capture at %g/s" % FM_S, seg is not None, "captures: %r" % captures):
        return
    r.equal("FM level", seg.get("krt40:level_dbm"), LEVEL)
    start, end = seg["core:sample_start"], seg["end"]
    if not r.check("FM segment holds two periods", end - start >= 2 * FM_N, "%d samples" % (end - start)):
        return
    got = [complex(i, q) for i, q in samples(start, end)]
    worst_mag = max(abs(abs(s) - 1.0) for s in got)
    r.check("FM magnitude 1", worst_mag < 1e-3, "worst %g" % worst_mag)
    freq = [cmath.phase(got[k] * got[k - 1].conjugate()) * FM_S / (2 * math.pi)
            for k in range(1, len(got))]
    peak, trough = max(freq), min(freq)
    r.check("FM instantaneous frequency peaks at +deviation", abs(peak - FM_DEVIATION) < 5.0,
            "peak %.3f Hz" % peak)
    r.check("FM instantaneous frequency reaches -deviation", abs(trough + FM_DEVIATION) < 5.0,
            "trough %.3f Hz" % trough)
    # The modulation repeats every N samples, across the wraps of the buffer too.
    repeat = max(abs(freq[k] - freq[k - FM_N]) for k in range(FM_N, len(freq)))
    r.check("FM modulation period is N samples", repeat < 1.0, "worst %.4f Hz" % repeat)
    # Sine, so the first step of the segment is sample 1 of the period: 5 kHz x sin(2 pi / N).
    r.check("FM starts at the period's start",
            abs(freq[0] - FM_DEVIATION * math.sin(2 * math.pi / FM_N)) < 1.0, "%.4f Hz" % freq[0])
    print("info: FM segment of %d samples, peak %.3f Hz, trough %.3f Hz, magnitude error %g"
          % (len(got), peak, trough, worst_mag))

def check_recording(r, app):
    _, captures, samples = read_recording(app)
    check_am(r, captures, samples)
    check_fm(r, captures, samples)


if __name__ == "__main__":
    sys.exit(run_e2e(check_session, check_recording, "amfm"))
