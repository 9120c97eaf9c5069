# SPDX-License-Identifier: MIT
# Multitone end to end: the comb set over SCPI, checked in the simulated device's recording.
"""Starts krt40 headless against the simulated KRT40, plays three multitone settings over SCPI
(5 random-phase tones at 100 kHz, the same comb with every tone in the notch, 4 tones of phase 0
at 50 kHz), ends it with :SYST:CLOS and checks the recording: the rate of each capture segment,
the tones in one buffer of samples, and the level correction in krt40:level_dbm.

Usage: /usr/bin/python3 test_multitone_e2e.py --app <path of krt40>
"""

import cmath
import math
import sys
import time

from krt40_e2e import events, open_client, poll_until, read_recording, run_e2e

LEVEL = -20.0
# (tones, spacing Hz, rate S, buffer L, offsets of the tones in units of half the spacing)
FIRST = (5, 1e5, 6e5, 3072, [-4, -2, 0, 2, 4])
LAST = (4, 5e4, 2e5, 4096, [-3, -1, 1, 3])


def settle(r, inst, name):
    """Waits until the change plays (*OPC, then *ESR? reads 1) and lets it play a while."""
    inst.write("*OPC")
    r.check(name + " plays", poll_until(inst, "*ESR?", "1", 5) is not None, "*ESR? still 0 after 5 s")
    time.sleep(0.4)


def drive(r, rm, app):
    inst = open_client(rm, app, 20)
    try:
        r.check("device opens", poll_until(inst, ":SYST:DEV:ACT?", "1", 10) is not None)
        # Set up while the RF is off, so that the first samples played are the comb's.
        for line in (":POW %g" % LEVEL, ":OUTP:MOD ON", ":MTON:NTON 5", ":MTON:FSP 100 kHz",
                     ":MTON:PHAS random", ":MTON:PHAS:SEED 7", ":MTON ON"):
            inst.write(line)
        r.equal("multitone selected", inst.query(":MTON?;:MTON:NTON?;:MTON:FSP?;:MTON:PHAS?"),
                "1;5;100000;random")
        inst.write(":OUTP ON")
        settle(r, inst, "5 tones")

        inst.write(":MTON:FNOT 1 MHz")
        settle(r, inst, "every tone in the notch")
        r.equal("still answering after the empty comb", inst.query(":MTON:FNOT?;:MTON?"), "1e+06;1")

        inst.write(":MTON:FNOT 0;:MTON:PHAS fix;:MTON:NTON 4;:MTON:FSP 50 kHz")
        settle(r, inst, "4 tones")
        inst.write(":SYST:CLOS")
    finally:
        inst.close()
    code = app.wait_exit(5)
    r.check(":SYST:CLOS ends the program", code == 0, "exit code %r" % code)


def tone_powers(iq, rate, spacing):
    """Power of the buffer at every multiple of half the spacing within +-rate/2, by offset."""
    n = len(iq)
    x = [complex(i, q) for i, q in iq]
    steps = int(round(rate / (spacing / 2)))
    powers = {}
    for m in range(-steps // 2, steps // 2):
        turn = -2j * math.pi * m * (spacing / 2) / rate
        acc = sum(v * cmath.exp(turn * k) for k, v in enumerate(x))
        powers[m] = abs(acc / n) ** 2
    return powers


def check_comb(r, name, captures, samples, setting):
    count, spacing, rate, length, offsets = setting
    segment = next((c for c in captures if c.get("krt40:sample_rate") == rate
                    and c["end"] - c["core:sample_start"] >= length), None)
    if not r.check(name + ": capture at %g samples a second" % rate, segment is not None,
                   "captures: %r" % captures):
        return
    iq = samples(segment["core:sample_start"], segment["core:sample_start"] + length)
    mean = sum(i * i + q * q for i, q in iq) / length
    peak = max(math.hypot(i, q) for i, q in iq)
    r.check(name + ": peak magnitude 1", abs(peak - 1.0) < 1e-6, "peak %r" % peak)
    correction = 10 * math.log10(mean)
    level = segment.get("krt40:level_dbm")
    r.check(name + ": level raised by the mean power", level is not None
            and abs(level - (LEVEL - correction)) < 1e-6,
            "krt40:level_dbm %r, mean power %.6f dB" % (level, correction))

    powers = tone_powers(iq, rate, spacing)
    strongest = max(powers.values())
    found = sorted(m for m, p in powers.items() if p > strongest * 1e-6)
    r.equal(name + ": tones at the spacing's grid", found, offsets)
    tones = [powers[m] for m in offsets]
    spread = 10 * math.log10(max(tones) / min(tones))
    r.check(name + ": tones within 0.01 dB", spread < 0.01, "spread %.5f dB" % spread)
    # Parseval: the tones hold all the power, so nothing lies between them.
    r.check(name + ": no power off the grid", abs(sum(tones) - mean) < mean * 1e-5,
            "tones %r, mean %r" % (sum(tones), mean))


def check_recording(r, app):
    meta, captures, samples = read_recording(app)
    check_comb(r, "5 tones", captures, samples, FIRST)
    check_comb(r, "4 tones", captures, samples, LAST)

    # The empty comb: zeros at the first comb's rate, its infinite level refused by the device.
    rate = FIRST[2]
    longest = 0
    for c in captures:
        if c.get("krt40:sample_rate") != rate:
            continue
        run = 0
        for i, q in samples(c["core:sample_start"], c["end"]):
            run = run + 1 if i == 0.0 and q == 0.0 else 0
            longest = max(longest, run)
    r.check("zeros play while every tone is notched", longest >= rate * 0.2,
            "longest run of zeros %d" % longest)
    r.check("every capture has a finite level", all(
        isinstance(c.get("krt40:level_dbm"), (int, float)) and math.isfinite(c["krt40:level_dbm"])
        for c in captures), "captures: %r" % captures)
    refused = [e for e in events(app) if e.get("fn") == "krtSetLevel"
               and not isinstance(e["args"].get("level"), (int, float))]
    r.check("the infinite level is refused with a warning",
            len(refused) == 1 and refused[0].get("ret") == 1, "calls: %r" % refused)


if __name__ == "__main__":
    sys.exit(run_e2e(drive, check_recording, "multitone"))
