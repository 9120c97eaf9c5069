# SPDX-License-Identifier: MIT
# The AWGN mode and the impairment panel end to end, measured on the simulated KRT40's recording.
"""Starts krt40 headless against the simulated device and, over SCPI, plays the AWGN mode with
seeds 5, 6 and 5 again, then a carrier with the impairments' AWGN switched on, then AWGN again
with a frequency offset and a sample-rate error. Checks the recording: the rate and the record's
period, a flat band and the 65-tap filter's stop band, the peak at full scale, the level
corrected by the mean power, equal records for equal seeds, the carrier left as it stands, the
retune corrections, and the I/Q and timebase offsets sent at each restart (events log).

Usage: /usr/bin/python3 test_awgn_impairments_e2e.py --app <path of krt40> [--keep]
"""

import json
import sys

import numpy as np

from krt40_e2e import open_client, play, poll_until, read_recording, run_e2e

FREQUENCY = 2.4e9
LEVEL = -20.0
BANDWIDTH = 1e6
RATE = 1.25e6            # 1.25 x bandwidth
PERIOD = 250000          # 0.2 s at RATE (":RAD:AWGN:LEN 1" lands on 0.2 s)
OFFSET_HZ = 100e3
RATE_ERROR_PPM = 50.0


def check_session(r, rm, app):
    inst = open_client(rm, app, 20)
    try:
        r.check("device opens", poll_until(inst, ":SYST:DEV:ACT?", "1", 10) is not None)
        inst.write(":OUTP OFF;:FREQ 2.4 GHz;:POW %g;:OUTP:MOD ON" % LEVEL)
        inst.write(":OUTP:IMP:IOFF -12;:OUTP:IMP:QOFF 34;:ROSC:MULT 0.75")
        inst.write(":RAD:AWGN ON;:RAD:AWGN:BWID 1e6;:RAD:AWGN:LEN 1;:RAD:AWGN:SEED 5")
        r.equal("AWGN set", inst.query(":RAD:AWGN?;:RAD:AWGN:BWID?;:RAD:AWGN:LEN?;:RAD:AWGN:SEED?"),
                "1;1e+06;0.2;5")
        for seed in (5, 6, 5):
            inst.write(":RAD:AWGN:SEED %d" % seed)
            play(r, inst, "AWGN seed %d" % seed, 0.45)
        inst.write(":OUTP:IMP:FREQ:OFFS 100 kHz;:OUTP:IMP:SRAT:MULT %g" % RATE_ERROR_PPM)
        play(r, inst, "AWGN with offsets", 0.05)
        # The carrier, with the panel's noise on: no mode built the noise record. Last, since
        # at 50e6 it fills the rest of the recording.
        inst.write(":OUTP:IMP:FREQ:OFFS 0;:OUTP:IMP:SRAT:MULT 0")
        inst.write(":OUTP:MOD OFF;:OUTP:IMP:AWGN ON;:OUTP:IMP:AWGN:SNR 10")
        play(r, inst, "CW with AWGN", 0.0)
        inst.write(":SYST:CLOS")
    finally:
        inst.close()
    r.check(":SYST:CLOS ends the program", app.wait_exit(10) == 0)


def segments(captures, rate, frequency):
    return [c for c in captures if c.get("krt40:sample_rate") == rate
            and c.get("core:frequency") == frequency and c["end"] > c["core:sample_start"]]


def band_powers_db(period):
    """Power spectrum of one period (its lines), in dB, over relative frequencies -0.5 to 0.5."""
    spectrum = np.abs(np.fft.fftshift(np.fft.fft(period))) ** 2
    freqs = np.fft.fftshift(np.fft.fftfreq(len(period)))
    return freqs, spectrum


def check_awgn_segment(r, seg, x):
    name = "AWGN segment at %d" % seg["core:sample_start"]
    if not r.check(name + " holds two periods", len(x) >= 2 * PERIOD, "%d samples" % len(x)):
        return None
    period = x[:PERIOD]
    r.check(name + " repeats every record length", np.array_equal(x[PERIOD:2 * PERIOD], period))
    peak = np.max(np.abs(period))
    r.check(name + " peak at full scale", abs(peak - 1.0) < 1e-6, "peak %.9f" % peak)
    mean_db = 10 * np.log10(np.mean(np.abs(period.astype(np.complex128)) ** 2))
    r.check(name + " level corrected by the mean power",
            abs(seg.get("krt40:level_dbm") - (LEVEL - mean_db)) < 1e-6,
            "level %r, mean power %.4f dB" % (seg.get("krt40:level_dbm"), mean_db))
    freqs, spectrum = band_powers_db(period.astype(np.complex128))
    inband = spectrum[np.abs(freqs) < 0.3]
    # 16 slices of the band, each the mean of thousands of lines: flat within 0.5 dB.
    slices = [10 * np.log10(np.mean(s)) for s in np.array_split(inband, 16)]
    r.check(name + " flat in the band", max(slices) - min(slices) < 0.5,
            "slices span %.3f dB" % (max(slices) - min(slices)))
    stop = 10 * np.log10(np.mean(spectrum[np.abs(freqs) > 0.47]) / np.mean(inband))
    r.check(name + " stop band of the 65-tap filter", stop < -55.0, "%.1f dB" % stop)
    print("info: %s mean power %.3f dB, band spread %.3f dB, stop band %.1f dB"
          % (name, mean_db, max(slices) - min(slices), stop))
    return period


def check_events(r, app):
    with open(app.events) as f:
        events = [json.loads(line) for line in f if line.strip()]
    iq = [e["args"] for e in events if e.get("fn") == "krtSetIQOffset"]
    timebase = [e["args"]["ppm"] for e in events if e.get("fn") == "krtSetTimebaseOffset"]
    restarts = [e for e in events if e.get("fn") == "krtAbort"]
    r.check("I/Q offset sent at each restart", len(iq) >= 8 and len(iq) >= len(restarts) - 2,
            "%d offsets for %d aborts" % (len(iq), len(restarts)))
    r.equal("I/Q offset as set", iq[-1], {"iOffset": -12, "qOffset": 34})
    r.check("timebase offset as set", timebase and timebase[-1] == 0.75, repr(timebase[-3:]))


def check_recording(r, app):
    _, captures, samples = read_recording(app)

    def iq(seg):
        return np.array([complex(i, q) for i, q in samples(seg["core:sample_start"], seg["end"])],
                        dtype=np.complex64)

    awgn = segments(captures, RATE, FREQUENCY)
    if r.check("three AWGN plays at %g/s" % RATE, len(awgn) == 3, repr(captures)):
        periods = [check_awgn_segment(r, seg, iq(seg)) for seg in awgn]
        if all(p is not None for p in periods):
            r.check("equal seeds give equal records", np.array_equal(periods[0], periods[2]))
            r.check("another seed another record", not np.array_equal(periods[0], periods[1]))

    cw = segments(captures, 50e6, FREQUENCY)
    if r.check("carrier played", len(cw) == 1, repr(captures)):
        x = iq(cw[0])
        r.check("AWGN on leaves the carrier as it stands (no record built)",
                len(x) > 0 and np.all(x == np.complex64(1.0)))

    shifted = segments(captures, RATE * (1 + RATE_ERROR_PPM * 1e-6), FREQUENCY + OFFSET_HZ)
    r.check("frequency offset and rate error in the retune", len(shifted) == 1, repr(captures[-2:]))
    check_events(r, app)


if __name__ == "__main__":
    sys.exit(run_e2e(check_session, check_recording, "awgn"))
