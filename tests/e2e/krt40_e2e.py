# SPDX-License-Identifier: MIT
# Shared pieces of the end-to-end tests: the application as a child process, a pyvisa client,
# polling helpers and a reader of the simulated device's recording.
"""Import from the tests in this folder; run under /usr/bin/python3 (Debian's pyvisa)."""

import argparse
import array
import json
import os
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import traceback

import pyvisa

SERIAL = "21000001"
# Enough for a few seconds of slow modes or a fraction of a second at 50e6, small enough to
# keep the temporary directory at a few tens of megabytes.
RECORD_MAX = 4000000


class Results:
    """Counts checks; a failed check is reported and the run goes on."""

    def __init__(self):
        self.passed = 0
        self.failed = 0

    def check(self, name, ok, detail=""):
        if ok:
            self.passed += 1
        else:
            self.failed += 1
            print("FAIL %s%s" % (name, (": " + detail) if detail else ""))
        return ok

    def equal(self, name, got, expected):
        return self.check(name, got == expected, "expected %r, got %r" % (expected, got))


def free_port():
    # The port is free once the socket is closed; nothing else on this machine races for it.
    with socket.socket(socket.AF_INET, socket.SOCK_STREAM) as s:
        s.bind(("127.0.0.1", 0))
        return s.getsockname()[1]


def closed_port_url():
    # The version check must fail at once instead of waiting on a name look-up.
    return "http://127.0.0.1:%d/krt40_version.txt" % free_port()


class App:
    """The application as a child process with a private HOME and simulated device."""

    def __init__(self, path, workdir, record_max=RECORD_MAX, env_overrides=None,
                 preferences_extra=""):
        self.port = free_port()
        self.record = os.path.join(workdir, "out")
        self.events = os.path.join(workdir, "events.jsonl")
        self.log_path = os.path.join(workdir, "app.log")
        home = os.path.join(workdir, "home")
        prefs_dir = os.path.join(home, "Documents", "Tarnwick", "krt40")
        self.data_dir = prefs_dir
        os.makedirs(prefs_dir)
        with open(os.path.join(prefs_dir, "Preferences.ini"), "w") as f:
            f.write("[Preferences]\nSCPIEnabled=true\nSCPIPort=%d\n" % self.port)
            f.write(preferences_extra)
        env = {k: v for k, v in os.environ.items()
               if not k.startswith("KRT40_") and not k.startswith("XDG_")}
        env.update({
            "HOME": home,
            "QT_QPA_PLATFORM": "offscreen",
            "KRT40_SIM_DEVICES": SERIAL,
            "KRT40_SIM_OPEN_MS": "100",
            "KRT40_SIM_SPEED": "1",
            "KRT40_SIM_RECORD": self.record,
            "KRT40_SIM_RECORD_MAX": str(record_max),
            "KRT40_SIM_EVENTS": self.events,
            "KRT40_VERSION_URL": closed_port_url(),
        })
        env.update(env_overrides or {})
        self.log = open(self.log_path, "wb")
        self.proc = subprocess.Popen([os.path.abspath(path)], env=env, stdout=self.log,
                                     stderr=subprocess.STDOUT, cwd=workdir)

    def wait_exit(self, seconds):
        try:
            return self.proc.wait(timeout=seconds)
        except subprocess.TimeoutExpired:
            return None

    def kill(self):
        if self.proc.poll() is None:
            self.proc.kill()
            self.proc.wait()
        self.log.close()

    def rss_mb(self):
        """Resident size of the program in MB, None once it has ended."""
        try:
            with open("/proc/%d/status" % self.proc.pid) as f:
                for line in f:
                    if line.startswith("VmRSS:"):
                        return int(line.split()[1]) / 1024.0
        except OSError:
            pass
        return None

    def log_tail(self, lines=20):
        with open(self.log_path, "rb") as f:
            return b"\n".join(f.read().splitlines()[-lines:]).decode("utf-8", "replace")


def open_client(rm, app, seconds):
    """Connects as soon as the server listens (it is closed while another client is served)."""
    deadline = time.monotonic() + seconds
    while True:
        if app.proc.poll() is not None:
            raise RuntimeError("application exited with %s" % app.proc.returncode)
        inst = None
        try:
            inst = rm.open_resource("TCPIP::127.0.0.1::%d::SOCKET" % app.port,
                                    read_termination="\n", write_termination="\n",
                                    timeout=2000, open_timeout=500)
            # pyvisa-py connects without blocking; a refusal only shows at the first transfer.
            inst.query("*IDN?")
            return inst
        except (pyvisa.errors.VisaIOError, OSError):
            if inst is not None:
                inst.close()
            if time.monotonic() > deadline:
                raise
            time.sleep(0.05)


def poll_until(inst, query, expected, seconds):
    """Queries until the reply is `expected`; returns the seconds it took, or None."""
    start = time.monotonic()
    while time.monotonic() - start < seconds:
        if inst.query(query) == expected:
            return time.monotonic() - start
        time.sleep(0.005)
    return None


def play(r, inst, name, seconds):
    """RF on, wait until *ESR? reports the output running, play `seconds`, RF off."""
    inst.write(":OUTP ON;*OPC")
    r.check("%s output runs" % name, poll_until(inst, "*ESR?", "1", 10) is not None)
    time.sleep(seconds)
    inst.write(":OUTP OFF")


def read_recording(app):
    """The recording's meta (dict), its captures sorted by start with an "end" added, and a
    function that reads samples [start, end) as a list of (I, Q) pairs.

    A capture's start is moved to the last abort inside it. The streaming thread reads the
    front panel when it starts, so a thread launched for one change that starts only after the
    next one plays a moment of the next one's output before that change stops it: the same
    settings, one segment, its signal begun twice. What follows the last abort is the play."""
    meta_path = app.record + ".sigmf-meta"
    data_path = app.record + ".sigmf-data"
    with open(meta_path) as f:
        meta = json.load(f)
    total = os.path.getsize(data_path) // 8
    captures = sorted(meta.get("captures", []), key=lambda c: c["core:sample_start"])
    for i, c in enumerate(captures):
        c["end"] = captures[i + 1]["core:sample_start"] if i + 1 < len(captures) else total
    aborts = [a["core:sample_start"] for a in meta.get("annotations", [])
              if a.get("core:label") == "abort"]
    for c in captures:
        inside = [a for a in aborts if c["core:sample_start"] < a < c["end"]]
        if inside:
            c["core:sample_start"] = max(inside)

    def samples(start, end):
        with open(data_path, "rb") as f:
            f.seek(start * 8)
            iq = array.array("f")
            iq.frombytes(f.read((end - start) * 8))
        if sys.byteorder != "little":
            iq.byteswap()
        return list(zip(iq[0::2], iq[1::2]))

    return meta, captures, samples


def run_e2e(session, recording, name, record_max=RECORD_MAX, env_overrides=None,
            preferences_extra=""):
    """Runs one end-to-end test and returns its exit code: starts the program in a temporary
    folder, lets `session(r, rm, app)` talk to it over pyvisa, stops it, then lets
    `recording(r, app)` check what the device recorded. Prints "N passed, N failed".
    "{workdir}" in the values of `env_overrides` stands for the temporary folder;
    `preferences_extra` is appended to the program's Preferences.ini."""
    parser = argparse.ArgumentParser()
    parser.add_argument("--app", required=True)
    parser.add_argument("--keep", action="store_true", help="keep the temporary directory")
    args = parser.parse_args()

    r = Results()
    workdir = tempfile.mkdtemp(prefix="krt40-e2e-%s-" % name)
    try:
        env = {k: v.format(workdir=workdir) for k, v in (env_overrides or {}).items()}
        _run(r, args.app, workdir, session, recording, record_max, env, preferences_extra)
    finally:
        if args.keep:
            print("kept " + workdir)
        else:
            shutil.rmtree(workdir, ignore_errors=True)
    print("%d passed, %d failed" % (r.passed, r.failed))
    return 1 if r.failed else 0


def _run(r, app_path, workdir, session, recording, record_max, env, preferences_extra):
    try:
        app = App(app_path, workdir, record_max=record_max, env_overrides=env,
                  preferences_extra=preferences_extra)
    except OSError:
        r.check("application starts", False, traceback.format_exc())
        return
    rm = pyvisa.ResourceManager("@py")
    try:
        session(r, rm, app)
    except Exception:
        r.check("remote session", False, traceback.format_exc())
    finally:
        app.kill()
        rm.close()
    if r.failed:
        print("application output:\n" + app.log_tail())
    try:
        recording(r, app)
    except Exception:
        r.check("recording", False, traceback.format_exc())
