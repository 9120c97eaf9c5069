# SPDX-License-Identifier: MIT
# The arb mode end to end: files loaded through the remote rows, played by the simulated KRT40.
"""Starts krt40 headless against the simulated device and, over SCPI, loads a CSV file with a
bad line 500, a Midas Blue file packed here from its header table, and samples sent in the
command; plays each with an offset, a count and a period, then one in single shot for two
"*TRG". Checks the recording: the file's samples from the offset, scaled by their peak
component, zeros up to the period, the level less the mean power, and one period per trigger.

Usage: /usr/bin/python3 test_arb_e2e.py --app <path of krt40> [--keep]
"""

import os
import struct
import sys
import time

import numpy as np

from krt40_e2e import open_client, play, poll_until, read_recording, run_e2e

LEVEL = -20.0
RATE = 1e6
MIDAS_RATE = 250e3


def write_csv(path):
    """499 good lines, then a line split by ";" that ends the reading, then one more."""
    values = np.linspace(-0.5, 0.25, 499)
    with open(path, "w") as f:
        for v in values:
            f.write("%r,%r\n" % (float(np.float32(v)), float(np.float32(-v / 2))))
        f.write("1;1\n0.9,0.9\n")
    return (values.astype(np.float32) + 1j * (-values / 2).astype(np.float32)).astype(np.complex64)


def write_midas(path, iq16):
    """A type 1000 complex 16-bit file, header packed from the field table."""
    data = np.asarray(iq16, dtype="<i2").tobytes()
    head = b"BLUE" + b"EEEI" + b"EEEI" + struct.pack("<i", 0) + bytes(8)
    head += struct.pack("<ii", 0, 0) + struct.pack("<dd", 512.0, float(len(data)))
    head += struct.pack("<i", 1000) + b"CI"
    head = head.ljust(256, b"\0") + bytes(8) + struct.pack("<d", 1.0 / MIDAS_RATE)
    with open(path, "wb") as f:
        f.write(head.ljust(512, b"\0") + data)


def check_session(r, rm, app):
    inst = open_client(rm, app, 20)
    workdir = os.path.dirname(app.record)
    try:
        r.check("device opens", poll_until(inst, ":SYST:DEV:ACT?", "1", 10) is not None)
        inst.write(":OUTP OFF;:FREQ 1 GHz;:POW %g;:OUTP:MOD ON;:RAD:ARB ON" % LEVEL)
        write_csv(os.path.join(workdir, "wave.csv"))
        inst.write(':RAD:ARB:WAV:LOAD:CSV "%s"' % os.path.join(workdir, "wave.csv"))
        r.equal("CSV stops before its bad line", inst.query(":RAD:ARB:WAV?;:RAD:ARB:WAV:LEN?"),
                '"wave.csv";499')
        inst.write(":RAD:ARB:SRAT 1 MHz;:RAD:ARB:SAMP:OFFS 100;:RAD:ARB:SAMP:COUN 300")
        inst.write(":RAD:ARB:SAMP:PER 400")
        play(r, inst, "CSV", 0.05)
        write_midas(os.path.join(workdir, "wave.tmp"), [16384, -8192, 0, 32767, -100, 100])
        inst.write(':RAD:ARB:WAV:LOAD:MIDAS "%s"' % os.path.join(workdir, "wave.tmp"))
        r.equal("Midas rate and length", inst.query(":RAD:ARB:SRAT?;:RAD:ARB:WAV:LEN?"),
                "250000;3")
        play(r, inst, "Midas", 0.05)
        inst.write(":RAD:ARB:WAV:LOAD:IQ:ASCII 0.5,0,0,0.5;:RAD:ARB:SRAT 1 MHz")
        inst.write(":RAD:ARB:SAMP:PER 3;:RAD:ARB:TRIG:TYPE SING;:OUTP ON;*OPC")
        r.check("single shot armed", poll_until(inst, "*ESR?", "1", 10) is not None)
        for _ in range(2):
            inst.write("*TRG")
            time.sleep(0.1)
        inst.write(":SYST:CLOS")
    finally:
        inst.close()
    r.check(":SYST:CLOS ends the program", app.wait_exit(10) == 0)


def expected_period(samples, period):
    peak = np.max(np.abs(np.concatenate([samples.real, samples.imag])))
    scaled = (samples * np.float32(1.0 / peak)).astype(np.complex64)
    mean_db = 10 * np.log10(np.mean(np.abs(scaled.astype(np.complex128)) ** 2))
    return np.concatenate([scaled, np.zeros(period - len(scaled), np.complex64)]), mean_db


def check_play(r, name, seg, x, expected, mean_db):
    n = len(expected)
    r.check(name + " holds two periods", len(x) >= 2 * n, "%d samples" % len(x))
    err = np.max(np.abs(x[:2 * n] - np.tile(expected, 2)))
    r.check(name + " plays the range scaled and padded", err < 1e-6, "error %.2e" % err)
    r.check(name + " level less the mean power",
            abs(seg["krt40:level_dbm"] - (LEVEL - mean_db)) < 1e-6,
            "%r for %.4f dB" % (seg["krt40:level_dbm"], mean_db))


def check_recording(r, app):
    _, captures, samples = read_recording(app)

    def iq(seg):
        return np.array([complex(i, q) for i, q in samples(seg["core:sample_start"], seg["end"])],
                        dtype=np.complex64)

    plays = [c for c in captures if c["end"] > c["core:sample_start"]]
    rates = [c.get("krt40:sample_rate") for c in plays]
    if not r.check("three plays at 1e6, 250e3 and 1e6", rates == [RATE, MIDAS_RATE, RATE],
                   repr(rates)):
        return
    file = write_csv(os.devnull)
    check_play(r, "CSV", plays[0], iq(plays[0]), *expected_period(file[100:400], 400))
    midas = np.array([16384 - 8192j, 0 + 32767j, -100 + 100j]) / 32767.0
    check_play(r, "Midas", plays[1], iq(plays[1]),
               *expected_period(midas.astype(np.complex64), 3))
    single = iq(plays[2])
    r.equal("one period per trigger, less its last sample", len(single), 2 * 2)


if __name__ == "__main__":
    sys.exit(run_e2e(check_session, check_recording, "arb"))
