# SPDX-License-Identifier: MIT
# The SoapySDR backend end to end: the program plays CW, AM and multitone into a fake SoapySDR
# transmitter, which then reports underruns and vanishes.
"""Starts krt40 headless with KRT40_BACKEND=soapy and the test module "krt40fake" (found
through SOAPY_SDR_PLUGIN_PATH, set by CTest), whose sample rates end at 40e6 and whose gain
runs 0 to 60 dB, with a calibration of -40 dBm at gain 0 in Preferences.ini. Over SCPI it
plays CW (5e7 asked, 4e7 played, said once in the error log), AM, multitone and CW at a level
below the gain range; then the module reports its underruns and vanishes, and the program must
drop the device and stay alive. The module's files show the rate, frequency, gain and samples
of each setting.

Usage: /usr/bin/python3 soapy_backend_e2e.py --app <path of krt40> [--keep]
"""

import array
import json
import math
import os
import sys
import time

from krt40_e2e import open_client, play, poll_until, run_e2e

FREQUENCY = 1.5e9
LEVEL = -12.0
LOW_LEVEL = -70.0
CALIBRATION = -40.0
UNDERRUNS = 2
AM_RATE, AM_DEPTH = 1000.0, 50.0
AM_S = AM_RATE * 16384
MT_TONES, MT_SPACING, MT_S, MT_L = 8, 1e5, 9e5, 9 * 1024
RATE_MESSAGE = ("-1,Setting clamped;Sample rate 50000000 Hz not supported by the device, "
                "40000000 Hz played, clamped")


def fake_serial():
    """The serial number the backend derives from the module's driver and serial (FNV-1a)."""
    h = 2166136261
    for c in b"krt40fake:FAKE0001":
        h = ((h ^ c) * 16777619) & 0xFFFFFFFF
    return 90000000 + h % 10000000


def error_entries(inst):
    entries = []
    for _ in range(100):
        entry = inst.query(":SYST:ERR:NEXT?")
        if entry.startswith("0,"):
            break
        entries.append(entry.rstrip(";"))
    return entries


def check_session(r, rm, app):
    inst = open_client(rm, app, 20)
    try:
        r.check("fake transmitter opens", poll_until(inst, ":SYST:DEV:ACT?", "1", 10) is not None)
        r.check("serial number from its identity", str(fake_serial()) in inst.query("*IDN?"),
                inst.query("*IDN?"))
        inst.write(":OUTP OFF;:FREQ 1.5 GHz;:POW %g;:OUTP:MOD OFF" % LEVEL)
        play(r, inst, "CW", 0.2)
        inst.write(":OUTP:MOD ON;:AM ON;:AM:FREQ %g;:AM:DEPT %g" % (AM_RATE, AM_DEPTH))
        play(r, inst, "AM", 0.2)
        inst.write(":MTON ON;:MTON:NTON %d;:MTON:FSP %g" % (MT_TONES, MT_SPACING))
        play(r, inst, "multitone", 0.2)
        inst.write(":OUTP:MOD OFF;:POW %g" % LOW_LEVEL)
        play(r, inst, "low CW", 0.2)
        entries = error_entries(inst)
        r.equal("rate difference said once", entries.count(RATE_MESSAGE), 1)

        open(os.path.join(app.data_dir, "..", "vanish"), "w").close()
        inst.write(":OUTP ON")
        r.check("vanished device is dropped",
                poll_until(inst, ":SYST:DEV:ACT?", "0", 10) is not None)
        r.equal("no device listed while it is gone", inst.query(":SYST:DEV:COUN?"), "0")
        inst.write(":SYST:CLOS")
    finally:
        inst.close()
    code = app.wait_exit(10)
    r.check("program ends normally after the loss", code == 0, "exit code %r" % code)


def read_fake(prefix):
    """Segments of the module's recording: dicts of rate, frequency, gain and samples."""
    iq = array.array("f")
    with open(prefix + ".cf32", "rb") as f:
        iq.frombytes(f.read())
    if sys.byteorder != "little":
        iq.byteswap()
    state, segments, start = {}, [], 0
    with open(prefix + ".log") as f:
        lines = [line.split() for line in f]
    for call, value, position in lines + [["end", "0", str(len(iq) // 2)]]:
        position = int(position)
        if position > start and {"rate", "frequency", "gain"} <= state.keys():
            segments.append(dict(state, samples=list(zip(iq[2 * start:2 * position:2],
                                                         iq[2 * start + 1:2 * position:2]))))
        start = position
        state[call] = float(value)
    return segments


def segments_at(segments, rate):
    return [s for s in segments if s["rate"] == rate and s["frequency"] == FREQUENCY]


def check_cw(r, segments):
    cw = segments_at(segments, 40e6)
    if not r.check("CW segments at 4e7", len(cw) >= 2, "%d" % len(cw)):
        return
    full = [s for s in cw if s["gain"] == LEVEL - CALIBRATION]
    low = [s for s in cw if s["gain"] == 0.0]
    r.check("CW at gain 28 dB, samples untouched",
            full and all(x == (1.0, 0.0) for x in full[0]["samples"]))
    scale = 10 ** ((LOW_LEVEL - CALIBRATION) / 20)
    r.check("CW below the gain range: gain 0, samples scaled by %.6f" % scale,
            low and all(abs(i - scale) < 1e-7 and q == 0.0 for i, q in low[0]["samples"]),
            "first %r" % (low[0]["samples"][:2] if low else None))


def check_am(r, segments):
    am = segments_at(segments, AM_S)
    if not r.check("AM segment at %g/s" % AM_S, len(am) >= 1):
        return
    s = am[0]
    r.equal("AM gain uncorrected", s["gain"], LEVEL - CALIBRATION)
    i_values = [i for i, _ in s["samples"]]
    d = AM_DEPTH / 200
    r.check("AM envelope 0.5 +- depth/2", abs(max(i_values) - (0.5 + d)) < 1e-6
            and abs(min(i_values) - (0.5 - d)) < 1e-6, "%g..%g" % (min(i_values), max(i_values)))


def check_multitone(r, segments):
    mt = segments_at(segments, MT_S)
    if not r.check("multitone segment at %g/s" % MT_S, len(mt) >= 1):
        return
    s = mt[0]
    period = s["samples"][:MT_L]
    power = sum(i * i + q * q for i, q in period) / len(period)
    mean_db = 10 * math.log10(power)
    r.check("multitone gain carries the mean power correction",
            abs(s["gain"] - (LEVEL - mean_db - CALIBRATION)) < 0.01,
            "gain %g, mean power %g dB" % (s["gain"], mean_db))
    peak = max(math.hypot(i, q) for i, q in period)
    r.check("multitone peak at full scale", abs(peak - 1.0) < 1e-5, "%g" % peak)


def check_events(r, app):
    with open(app.events) as f:
        lines = [json.loads(line) for line in f]
    device = [e for e in lines if e["fn"] == "device" and e["handle"] >= 1 << 20]
    underruns = [e for e in device if e["args"]["event"] == "underrun"]
    r.equal("module's underruns in the events log", len(underruns), UNDERRUNS)
    r.check("loss in the events log", any(e["args"]["event"] == "usb_failed" for e in device))


def check_recording(r, app):
    segments = read_fake(os.path.join(os.path.dirname(app.events), "fake"))
    check_cw(r, segments)
    check_am(r, segments)
    check_multitone(r, segments)
    check_events(r, app)


if __name__ == "__main__":
    sys.exit(run_e2e(
        check_session, check_recording, "soapy",
        env_overrides={
            "KRT40_BACKEND": "soapy",
            "KRT40_FAKE_SOAPY_RECORD": "{workdir}/fake",
            "KRT40_FAKE_SOAPY_MAX_RATE": "40e6",
            "KRT40_FAKE_SOAPY_UNDERRUNS": str(UNDERRUNS),
            "KRT40_FAKE_SOAPY_VANISH_FILE": "{workdir}/home/Documents/Tarnwick/vanish",
        },
        preferences_extra="[LevelCalibration]\n%d=%g\n" % (fake_serial(), CALIBRATION)))
