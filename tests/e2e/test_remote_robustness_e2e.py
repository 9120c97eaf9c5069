# SPDX-License-Identifier: MIT
# Remote clients that leave, wait, close or never read, and settings that would ask for memory
# without bound, against the real program over raw sockets.
"""Each scenario starts krt40 headless against the simulated device (an open takes 1.5 s) and
drives it as a test program might: lines sent while a connect runs, a client that leaves
during its connect while another one arrives, a client that never reads its replies,
:SYST:CLOS during a connect and during the first open, a multitone preset asking for 1e11
samples a second and a step sweep of 1 us dwells. The program must answer, stay within its
memory and end when told to.

Usage: /usr/bin/python3 test_remote_robustness_e2e.py --app <path of krt40>
"""

import argparse
import os
import shutil
import socket
import sys
import tempfile
import time

from krt40_e2e import SERIAL, App, Results

IDENTITY = "Tarnwick,KRT40A,%s,3" % SERIAL
OPEN_SECONDS = {"KRT40_SIM_OPEN_MS": "1500"}
# A sanitized build keeps freed memory in quarantine: its resident size says nothing of ours.
SANITIZED = "ASAN_OPTIONS" in os.environ


def check_growth(r, name, growth, bound):
    if SANITIZED:
        print("info: %s: grew %.0f MB (not checked in a sanitized build)" % (name, growth))
        return
    r.check(name, growth < bound, "grew %.0f MB" % growth)


class Client:
    """A line client on a raw socket: it can leave abruptly and leave replies unread."""

    def __init__(self, app, seconds=20):
        # While a client is served the server doesn't listen: connect until it does.
        deadline = time.monotonic() + seconds
        while True:
            try:
                self.sock = socket.create_connection(("127.0.0.1", app.port), timeout=1)
                break
            except OSError:
                if time.monotonic() > deadline or app.proc.poll() is not None:
                    raise
                time.sleep(0.02)
        self.pending = b""

    def send(self, line):
        self.sock.sendall(line.encode() + b"\n")

    def line(self, seconds=5):
        """The next reply line, or None after `seconds`."""
        deadline = time.monotonic() + seconds
        while b"\n" not in self.pending:
            left = deadline - time.monotonic()
            if left <= 0:
                return None
            self.sock.settimeout(left)
            try:
                chunk = self.sock.recv(65536)
            except socket.timeout:
                return None
            if not chunk:
                return None
            self.pending += chunk
        text, self.pending = self.pending.split(b"\n", 1)
        return text.decode()

    def query(self, line, seconds=5):
        self.send(line)
        return self.line(seconds)

    def close(self):
        self.sock.close()


def wait_active(client, seconds=10):
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        if client.query(":SYST:DEV:ACT?") == "1":
            return True
        time.sleep(0.05)
    return False


def peak_growth_mb(app, seconds):
    """How far the resident size rises above its first reading within `seconds`."""
    start = app.rss_mb()
    peak = start
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline and app.proc.poll() is None:
        peak = max(peak, app.rss_mb() or peak)
        time.sleep(0.1)
    return peak - start


def connect_scenarios(r, app):
    c = Client(app)
    r.check("first device opens", wait_active(c))

    # Lines that arrive while a connect runs are answered when it ends, with no further byte.
    r.equal("disconnect", c.query(":SYST:DEV:DISC?"), "1")
    c.send(":SYST:DEV:CON? " + SERIAL)
    time.sleep(0.1)
    c.send("*IDN?")
    r.equal("connect answered", c.line(10), "1")
    r.equal("line sent during the connect answered", c.line(5), IDENTITY)

    # A client that leaves while its connect runs, and a second one that arrives meanwhile:
    # no crash, and the first one's reply doesn't reach the second.
    r.equal("disconnect again", c.query(":SYST:DEV:DISC?"), "1")
    c.send(":SYST:DEV:CON? " + SERIAL)
    time.sleep(0.1)
    c.close()
    c = Client(app)
    r.equal("the second client gets its own reply", c.query("*IDN?", 10), IDENTITY)
    r.check("the connect of the first went through", wait_active(c))
    r.check("still running", app.proc.poll() is None)

    # A client that never reads is dropped once its replies pile up, and memory stays bounded.
    before = app.rss_mb()
    dropped = False
    c.sock.settimeout(20)
    try:
        for _ in range(100):  # up to 60 MB of queries, 270 MB of replies
            c.sock.sendall(b"*IDN?\n" * 100000)
    except OSError:
        dropped = True
    growth = app.rss_mb() - before
    r.check("a client that never reads is dropped", dropped)
    check_growth(r, "owed replies stay bounded", growth, 100)
    c.close()
    c = Client(app)
    r.equal("a new client is served", c.query("*IDN?"), IDENTITY)

    # ":SYST:CLOS" before a connect on the same line ends the program once the open is done.
    r.equal("disconnect before closing", c.query(":SYST:DEV:DISC?"), "1")
    c.send(":SYST:CLOS;:SYST:DEV:CON? " + SERIAL)
    r.equal("closed during a connect", app.wait_exit(15), 0)


def close_at_start(r, app):
    # The server listens while the first device opens; a close then ends the program.
    c = Client(app)
    c.send(":SYST:CLOS")
    r.equal("closed during the first open", app.wait_exit(15), 0)


def memory_scenarios(r, app):
    c = Client(app)
    r.check("device opens", wait_active(c))
    # 1 us dwells are more than the loop can feed: it underruns, and every point is a capture
    # segment of the recording; memory stays flat all the same.
    c.send(":STEP:DWEL 1us;:STEP ON;:OUTP ON;:OUTP:MOD ON")
    r.equal("step sweep selected", c.query(":STEP?;:STEP:DWEL?", 10), "1;1e-06")
    growth = peak_growth_mb(app, 3)
    check_growth(r, "the 1 us step sweep keeps memory flat", growth, 50)

    # Presets are not clamped: 4001 tones 25 MHz apart ask for 1e11 samples a second.
    with open(os.path.join(app.data_dir, "Preset1.ini"), "w") as f:
        f.write("Mode=4\nOutputState=true\nModulationState=true\n"
                "[Mtone]\nNtones=4001\nFspacing=2.5e7\nPhase=0\n")
    c.send("*RCL 1")
    r.equal("multitone recalled", c.query(":MTON?;:MTON:NTON?", 10), "1;4001")
    growth = peak_growth_mb(app, 3)
    check_growth(r, "the comb asked of 1e11/s keeps memory flat", growth, 100)
    c.send(":SYST:CLOS")
    r.equal("closed", app.wait_exit(15), 0)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--app", required=True)
    args = parser.parse_args()
    r = Results()
    for name, scenario, env in (("connect", connect_scenarios, OPEN_SECONDS),
                                ("start", close_at_start, OPEN_SECONDS),
                                ("memory", memory_scenarios, {"KRT40_SIM_RECORD_MAX": "20000000"})):
        workdir = tempfile.mkdtemp(prefix="krt40-e2e-%s-" % name)
        app = App(args.app, workdir, env_overrides=env)
        try:
            scenario(r, app)
        except Exception as error:  # a scenario that breaks off is one failure
            r.check(name + " scenario", False, repr(error))
        finally:
            if app.proc.poll() is None:
                r.check(name + ": program ended", False, "killed")
            if r.failed:
                print("application output:\n" + app.log_tail())
            app.kill()
            shutil.rmtree(workdir, ignore_errors=True)
    print("%d passed, %d failed" % (r.passed, r.failed))
    return 1 if r.failed else 0


if __name__ == "__main__":
    sys.exit(main())
