# SPDX-License-Identifier: MIT
# Remote control end to end: the headless application against the simulated KRT40, driven by pyvisa.
"""Starts krt40 headless with a private HOME, port, recording and events log, talks SCPI to it
over loopback with pyvisa, ends it with :SYST:CLOS and then checks what the device recorded.

Usage: /usr/bin/python3 test_scpi_e2e.py --app <path of krt40>
"""

import json
import os
import select
import socket
import sys

from krt40_e2e import (IDENTITY, RECORD_MAX, events, expect_silence, open_client, poll_until,
                       read_recording, run_e2e)


def second_client_is_refused(port):
    """A client that comes while another is served gets no answer (or no connection)."""
    try:
        s = socket.create_connection(("127.0.0.1", port), timeout=1.0)
    except ConnectionRefusedError:
        return True
    with s:
        s.sendall(b"*IDN?\n")
        readable, _, _ = select.select([s], [], [], 0.5)
        return not readable


def check_session(r, rm, app):
    inst = open_client(rm, app, 20)
    try:
        # The server listens before the device is open; wait for the open to finish.
        r.check("device opens", poll_until(inst, ":SYST:DEV:ACT?", "1", 10) is not None)
        r.equal("*IDN?", inst.query("*IDN?"), IDENTITY)

        # Settings reach the output; completion is polled with *OPC and *ESR?.
        inst.write(":FREQ 2.4 GHz")
        inst.write(":POW -7.5")
        # In one line the restart has only just begun when *ESR? is read: still pending.
        r.equal("*ESR? right after a change", inst.query(":OUTP ON;*OPC;*ESR?"), "0")
        took = poll_until(inst, "*ESR?", "1", 5)
        r.check("*ESR? reads 1 once the output runs", took is not None, "still 0 after 5 s")
        r.equal("*ESR? with nothing pending", inst.query("*OPC;*ESR?"), "1")
        r.equal(":FREQ?", inst.query(":FREQ?"), "2.4e+09")
        r.equal(":POW?", inst.query(":POW?"), "-7.5")
        r.equal(":OUTP?", inst.query(":OUTP?"), "1")

        # A clamped frequency: the value moves to the bound and the queue holds one entry.
        inst.write(":SYST:ERR:CLE")
        inst.write(":FREQ 1")
        r.equal(":SYST:ERR:COUN? after a clamp", inst.query(":SYST:ERR:COUN?"), "1")
        r.equal(":SYST:ERR? clamp entry", inst.query(":SYST:ERR?"),
                "-1,Setting clamped;Center frequency clamped")
        r.equal(":SYST:ERR? empty queue", inst.query(":SYST:ERR?"), "0,No Error;")

        # Answers of one line are joined by ";".
        r.equal(":FREQ?;:POW?", inst.query(":FREQ?;:POW?"), "3e+07;-7.5")
        r.equal(":FREQ?;:POW -7.5 leaves a ;", inst.query(":FREQ?;:POW -7.5"), "3e+07;")

        # Unknown headers are silent and leave the connection usable; a late reply would show
        # up as the answer of the next query.
        r.check("unknown header gets no reply", expect_silence(inst, ":FOO:BAR?"))
        r.check("query with a digit suffix gets no reply", expect_silence(inst, ":SOUR1:FREQ?"))
        r.equal("*IDN? after silence", inst.query("*IDN?"), IDENTITY)

        # One client at a time.
        r.check("second client gets no service", second_client_is_refused(app.port))
        r.equal("first client still served", inst.query(":POW?"), "-7.5")
    finally:
        inst.close()

    # Once the first has left, the server reopens for the next client.
    inst = open_client(rm, app, 5)
    try:
        r.equal("next client served", inst.query("*IDN?"), IDENTITY)
        r.equal("state kept across clients", inst.query(":FREQ?"), "3e+07")
        inst.write(":SYST:CLOS")
    finally:
        inst.close()
    code = app.wait_exit(5)
    r.check(":SYST:CLOS ends the program", code is not None, "still running after 5 s")
    if code is not None:
        r.equal("exit code", code, 0)


def check_recording(r, app):
    if not r.check("recording written", os.path.exists(app.record + ".sigmf-meta")
                   and os.path.exists(app.record + ".sigmf-data")):
        return
    meta, captures, samples = read_recording(app)
    r.equal("datatype", meta["global"].get("core:datatype"), "cf32_le")
    segment = next((c for c in captures
                    if c.get("core:frequency") == 2.4e9 and c.get("krt40:level_dbm") == -7.5
                    and c.get("krt40:sample_rate") == 50e6 and c["end"] > c["core:sample_start"]),
                   None)
    if not r.check("capture at 2.4 GHz, -7.5 dBm, 50e6/s", segment is not None,
                   "captures: %r" % captures):
        return
    if captures[-1]["end"] < RECORD_MAX:
        # The recording went on past the clamp, so the retune to the bound must show.
        r.check("30 MHz segment follows", any(
            c.get("core:frequency") == 30e6 and c["core:sample_start"] >= segment["end"]
            for c in captures), "captures: %r" % captures)

    iq = samples(segment["core:sample_start"], segment["end"])
    r.check("CW samples are (1, 0)", iq and all(s == (1.0, 0.0) for s in iq),
            "%d samples, first %r" % (len(iq), iq[:2]))

    # Underruns depend on the load of the machine; they are shown, not judged here.
    underruns = sum(1 for e in events(app) if e.get("fn") == "device" and "underrun" in json.dumps(e))
    print("info: %d samples at 2.4 GHz, %d underruns in the events log" % (len(iq), underruns))


if __name__ == "__main__":
    sys.exit(run_e2e(check_session, check_recording, "scpi"))
