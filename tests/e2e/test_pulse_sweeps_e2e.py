# SPDX-License-Identifier: MIT
# Pulse, ramp sweep and step sweep end to end: set over SCPI, checked in the simulated KRT40's
# recording and events log.
"""Starts krt40 headless against the simulated device, plays a continuous pulse, a ramp sweep,
a single-shot pulse and a single step sweep, each set up with RF off and played briefly, and
checks the samples, capture segments and device calls they leave behind.

Usage: /usr/bin/python3 test_pulse_sweeps_e2e.py --app <path of krt40>
"""

import array
import math
import os
import sys
import time

from krt40_e2e import events, open_client, poll_until, read_recording, run_e2e

# Four periods of phases 1 and 2 take a few million samples; the cap only guards the disk.
RECORD_MAX = 30000000


def f32(value):
    """value rounded to a 32-bit float, as the application stores samples."""
    return array.array("f", [value])[0]


def pulse_period(width, period):
    """One pulse period as defined: n = width x 4e7, S = 1 / (width / n), L = S x period."""
    n = int(width * 4e7)
    rate = 1.0 / (width / n)
    length = int(rate * period)
    edges = 2 if n + 2 < length else 0
    iq = [(0.0, 0.0)] * length
    for i in range(min(n + edges, length)):
        iq[i] = (1.0, 0.0)
    for k in range(edges):
        w = f32(0.5 * math.cos(k / edges * math.pi - math.pi) + 0.5)
        iq[k] = (w, 0.0)
        iq[n + edges - 1 - k] = (w, 0.0)
    return rate, iq


def ramp_period(span, sweep_time, period):
    """One ramp period by the same double recursion, rounded to float as the builder does."""
    length, sweep = int(period * 5e7), int(sweep_time * 5e7)
    b = span / 5e7
    f0, s = b * -0.5, b / sweep
    c, d = math.cos(2 * math.pi * f0), math.sin(2 * math.pi * f0)
    cs, ds = math.cos(2 * math.pi * s), math.sin(2 * math.pi * s)
    x, y = 1.0, 0.0
    iq = [(1.0, 0.0)] + [(0.0, 0.0)] * (length - 1)
    for k in range(1, sweep):
        x, y = c * x - d * y, y * c + d * x
        iq[k] = (f32(x), f32(y))
        c, d = cs * c - ds * d, d * cs + ds * c
    if sweep < length:
        for k in range(4):
            w = math.cos(k * 0.25 * math.pi - math.pi) * 0.5 + 0.5
            for i in (k, sweep - 1 - k):
                iq[i] = (f32(iq[i][0] * w), f32(iq[i][1] * w))
    return iq


def calls_since(app, mark, names):
    """(fn, args) of the named calls logged after the first `mark` lines."""
    return [(e["fn"], e.get("args", {})) for e in events(app)[mark:] if e.get("fn") in names]


def wait_for_call(app, mark, name, seconds):
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        if calls_since(app, mark, {name}):
            return True
        time.sleep(0.01)
    return False


def play_briefly(r, inst, name):
    """RF on until a tenth of a second of output is handed over, then off again."""
    inst.write(":OUTP ON;*OPC")
    r.check(name + " plays", poll_until(inst, "*ESR?", "1", 10) is not None)
    time.sleep(0.05)
    inst.write(":OUTP OFF")


def check_session(r, rm, app):
    inst = open_client(rm, app, 20)
    try:
        r.check("device opens", poll_until(inst, ":SYST:DEV:ACT?", "1", 10) is not None)
        inst.write(":OUTP OFF;:OUTP:MOD ON;:POW -10")

        # 1: continuous pulse, 10 us in 25 us, at 1 GHz.
        inst.write(":FREQ 1 GHz;:PULM:INT:PWID 10us;:PULM:INT:PER 25us;:PULM ON")
        r.equal("pulse selected", inst.query(":PULM?;:PULM:INT:PWID?;:PULM:INT:PER?"), "1;1e-05;2.5e-05")
        play_briefly(r, inst, "continuous pulse")

        # 2: ramp sweep of 10 MHz in 100 us, period 120 us, at 2 GHz.
        inst.write(":FREQ 2 GHz;:RAMP:FREQ:SPAN 10 MHz;:RAMP:SWE:TIME 100us;:RAMP:SWE:PER 120us;:RAMP ON")
        r.equal("ramp selected", inst.query(":RAMP?;:PULM?;:RAMP:SWE:TIME?"), "1;0;0.0001")
        play_briefly(r, inst, "ramp sweep")

        # 3: single-shot pulse at 3 GHz: silent until "*TRG", then one pass.
        inst.write(":FREQ 3 GHz;:PULM:TRIG:TYPE SING;:PULM ON")
        inst.query(":SYST:VER?")  # the lines before have been handled: the ramp has stopped
        mark = len(events(app))
        inst.write(":OUTP ON;*OPC")
        r.check("single pulse armed", poll_until(inst, "*ESR?", "1", 10) is not None)
        time.sleep(0.2)
        r.equal("nothing before the trigger",
                calls_since(app, mark, {"krtSubmitIQ", "krtSubmitTrigger"}), [])
        inst.write("*TRG")
        r.check("pass flushed", wait_for_call(app, mark, "krtFlushAndWait", 5))
        calls = calls_since(app, mark, {"krtSubmitIQ", "krtSubmitTrigger", "krtFlushAndWait"})
        r.equal("trigger mark first", [fn for fn, _ in calls[:1]], ["krtSubmitTrigger"])
        r.equal("flush last", [fn for fn, _ in calls[-1:]], ["krtFlushAndWait"])
        r.equal("one pass less its last sample",
                sum(a["count"] for fn, a in calls if fn == "krtSubmitIQ"), 999)
        inst.write(":OUTP OFF")

        # 4: single step sweep over three points, frequency and level.
        inst.write(":STEP:TRIG:TYPE SING;:STEP:TYPE FREQAMPL;:STEP:FREQ:STAR 1 GHz;"
                   ":STEP:FREQ:STOP 1.2 GHz;:STEP:POIN 3;:STEP:AMPL:STAR -10;:STEP:AMPL:STOP -20;"
                   ":STEP:DWEL 1ms;:STEP ON")
        r.equal("step selected", inst.query(":STEP?;:STEP:POIN?;:STEP:DWEL?"), "1;3;0.001")
        inst.write(":OUTP ON;*OPC")
        r.check("step sweep armed", poll_until(inst, "*ESR?", "1", 10) is not None)
        mark = len(events(app))
        inst.write("*TRG")
        r.check("sweep flushed", wait_for_call(app, mark, "krtFlushAndWait", 5))
        calls = calls_since(app, mark, {"krtSetFrequency", "krtSetLevel", "krtSubmitIQ", "krtFlushAndWait"})
        expected = []
        for frequency, level in ((1e9, -10), (1.1e9, -15), (1.2e9, -20)):
            expected += [("krtSetFrequency", {"frequency": frequency}), ("krtSetLevel", {"level": level}),
                         ("krtSubmitIQ", {"count": 50000})]
        expected.append(("krtFlushAndWait", {}))
        r.equal("step sweep calls in order", [(fn, {k: v for k, v in a.items() if k != "handle"})
                                              for fn, a in calls], expected)
        inst.write(":OUTP OFF;:SYST:CLOS")
    finally:
        inst.close()
    code = app.wait_exit(5)
    r.check(":SYST:CLOS ends the program", code == 0, "exit code %r after 5 s" % code)


def segment(captures, frequency, rate):
    return next((c for c in captures if c.get("core:frequency") == frequency
                 and abs(c.get("krt40:sample_rate", 0) - rate) < 1e-3 and c["end"] > c["core:sample_start"]),
                None)


def check_recording(r, app):
    if not r.check("recording written", os.path.exists(app.record + ".sigmf-meta")):
        return
    meta, captures, samples = read_recording(app)

    rate, pulse = pulse_period(10 / 1e6, 25 / 1e6)
    seg = segment(captures, 1e9, rate)
    if r.check("pulse segment at 1 GHz and ~4e7/s", seg is not None, "captures: %r" % captures):
        start = seg["core:sample_start"]
        r.equal("pulse level", seg.get("krt40:level_dbm"), -10)
        r.check("pulse segment holds two periods", seg["end"] - start >= 2 * len(pulse))
        r.check("first pulse period as defined", samples(start, start + len(pulse)) == pulse)
        r.check("second pulse period repeats it",
                samples(start + len(pulse), start + 2 * len(pulse)) == pulse)

    ramp = ramp_period(1e7, 100 / 1e6, 120 / 1e6)
    seg = segment(captures, 2e9, 5e7)
    if r.check("ramp segment at 2 GHz and 5e7/s", seg is not None, "captures: %r" % captures):
        start = seg["core:sample_start"]
        got = samples(start, start + 2 * len(ramp))
        r.check("ramp period as defined, bit for bit", got[:len(ramp)] == ramp,
                "first difference at %r" % next((i for i, (a, b) in enumerate(zip(got, ramp)) if a != b), None))
        r.check("ramp period repeats", got[len(ramp):] == ramp)

    triggers = [a for a in meta.get("annotations", []) if a.get("core:label") == "trigger"]
    if r.equal("one trigger mark", len(triggers), 1):
        start = triggers[0]["core:sample_start"]
        _, single = pulse_period(10 / 1e6, 25 / 1e6)
        r.check("single pass after the mark", samples(start, start + 999) == single[:999])

    # The step sweep retunes in stream order: a segment a point, each one dwell long.
    steps = [(c["core:frequency"], c["krt40:level_dbm"], c["end"] - c["core:sample_start"])
             for c in captures if c.get("krt40:sample_rate") == 5e7 and c["end"] - c["core:sample_start"] == 50000]
    r.equal("three dwells of 50000 samples", steps, [(1e9, -10, 50000), (1.1e9, -15, 50000),
                                                     (1.2e9, -20, 50000)])


if __name__ == "__main__":
    sys.exit(run_e2e(check_session, check_recording, "pulse-sweeps", record_max=RECORD_MAX))
