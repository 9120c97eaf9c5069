# SPDX-License-Identifier: MIT
# The digital modulation mode end to end, demodulated from the simulated KRT40's recording.
"""Starts krt40 headless against the simulated device and, over SCPI, plays QPSK and 16QAM
with a root-raised-cosine filter, 2FSK and 4FSK, all from PN9; then QPSK again with the
a channel filter recalled from a preset, and last with the impairments' noise at 20 dB SNR. Checks
the recording as a receiver would: matched filter, symbol centres, decisions, EVM, the bits of
the PN9 register; the FSK bits from the instantaneous frequency with no phase jump anywhere;
the noise's power and band; the channel filter's response.

Usage: /usr/bin/python3 test_digital_mod_e2e.py --app <path of krt40> [--keep]
"""

import os
import re
import sys

import numpy as np

from krt40_e2e import open_client, play, poll_until, read_recording, run_e2e

FREQUENCY = 1e9
LEVEL = -10.0
SYMBOL_RATE = 1e6
OS = 4
ALPHA = 0.35
SPAN = 32                       # filter length in symbols
PN9_SYMBOLS = 511               # every PN9 play has 2^9 - 1 symbols
LINEAR_RATE = SYMBOL_RATE * OS
FSK_SYMBOL_RATE = 1e5
FSK_OS = 8
FSK_RATE = FSK_SYMBOL_RATE * FSK_OS
FSK_DEVIATION = 37e3          # no whole number of cycles a record: the loop must rotate
SNR_DB = 20.0
NOISE_BANDWIDTH = 1e7         # the panel's default
NOISE_RATE = 5e7
CHANNEL_TAPS = 31


def pn9_bits(seed=23):
    """The PN9 register as a receiver knows it: x^9 + x^5 + 1 from a 32-bit seed, the fed-back
    bit emitted and shifted in."""
    state, bits = seed, []
    for _ in range(511):
        bit = ((state >> 8) ^ (state >> 4)) & 1
        bits.append(bit)
        state = ((state << 1) | bit) & 0xFFFFFFFF
    return np.array(bits, dtype=np.uint8)


def rrc_taps(alpha, sps, span):
    """Root raised cosine from its textbook formula, unit energy: the receiver's matched filter."""
    t = (np.arange(sps * span + 1) - sps * span / 2) / sps
    h = np.empty_like(t)
    for i, x in enumerate(t):
        if abs(x) < 1e-12:
            h[i] = 1 - alpha + 4 * alpha / np.pi
        elif abs(abs(x) - 1 / (4 * alpha)) < 1e-9:
            h[i] = alpha / np.sqrt(2) * ((1 + 2 / np.pi) * np.sin(np.pi / (4 * alpha))
                                         + (1 - 2 / np.pi) * np.cos(np.pi / (4 * alpha)))
        else:
            h[i] = (np.sin(np.pi * x * (1 - alpha)) + 4 * alpha * x * np.cos(np.pi * x * (1 + alpha))) \
                / (np.pi * x * (1 - (4 * alpha * x) ** 2))
    return h / np.sqrt(np.sum(h ** 2))


def circular_filter(x, taps):
    """Circular convolution with the taps centred: output i is centred on input i."""
    h = np.zeros(len(x), dtype=np.complex128)
    for k, tap in enumerate(taps):
        h[(k - len(taps) // 2) % len(x)] += tap
    return np.fft.ifft(np.fft.fft(x) * np.fft.fft(h))


def enable_channel_filter(path, taps):
    """The saved preset with the impairments' channel filter on and set to `taps`."""
    with open(path) as f:
        text = f.read()
    head, _, rest = text.partition("[Impairments]\n")
    body, sep, tail = rest.partition("\n[")
    lines = [ln for ln in body.split("\n")
             if ln and not ln.startswith("ChannelFilter")]
    lines.append("ChannelFilterEnabled=true")
    lines += ["ChannelFilter\\%d\\Real=%r\nChannelFilter\\%d\\Imag=0" % (i + 1, t, i + 1)
              for i, t in enumerate(taps)]
    lines.append("ChannelFilter\\size=%d" % len(taps))
    with open(path, "w") as f:
        f.write(head + "[Impairments]\n" + "\n".join(lines) + "\n" + sep + tail)


def channel_taps():
    n = np.arange(CHANNEL_TAPS) - CHANNEL_TAPS // 2
    return np.sinc(0.3 * n) * 0.3 * np.blackman(CHANNEL_TAPS)


def check_session(r, rm, app):
    inst = open_client(rm, app, 20)
    try:
        r.check("device opens", poll_until(inst, ":SYST:DEV:ACT?", "1", 10) is not None)
        inst.write(":OUTP OFF;:FREQ 1 GHz;:POW %g;:OUTP:MOD ON;:RAD:CUST ON" % LEVEL)
        inst.write(":RAD:CUST:DATA PN9;:RAD:CUST:FILT RNYQ;:RAD:CUST:FILT:ALPH %g" % ALPHA)
        inst.write(":RAD:CUST:FILT:LEN %d;:RAD:CUST:OVER %d;:RAD:CUST:SRAT 1 MHz" % (SPAN, OS))
        r.equal("settings read back",
                inst.query(":RAD:CUST:DATA?;:RAD:CUST:FILT?;:RAD:CUST:FILT:LENG?;"
                           ":RAD:CUST:OVER?;:RAD:CUST:SRAT?"),
                "pn9;rnyquist;%d;%d;1e+06" % (SPAN, OS))
        for mod in ("qpsk", "qam16"):
            inst.write(":RAD:CUST:MOD %s" % mod)
            play(r, inst, mod, 0.05)
        inst.write(":RAD:CUST:FILT GAUS;:RAD:CUST:FILT:ALPH 0.5;:RAD:CUST:FILT:LEN 4")
        inst.write(":RAD:CUST:OVER %d;:RAD:CUST:SRAT 100 kHz;:RAD:CUST:MOD:FSK:DEV 37 kHz"
                   % FSK_OS)
        for mod in ("fsk2", "fsk4"):
            inst.write(":RAD:CUST:MOD %s" % mod)
            play(r, inst, mod, 0.1)
        # The channel filter has no row: it comes with a preset.
        inst.write(":RAD:CUST:MOD qpsk;:RAD:CUST:FILT RNYQ;:RAD:CUST:FILT:ALPH %g" % ALPHA)
        inst.write(":RAD:CUST:FILT:LEN %d;:RAD:CUST:OVER %d;:RAD:CUST:SRAT 1 MHz" % (SPAN, OS))
        inst.write("*SAV 1;*SAV 2")
        inst.query("*IDN?")  # the saves are done once the next command is answered
        enable_channel_filter(os.path.join(app.data_dir, "Preset2.ini"), channel_taps())
        inst.write("*RCL 2")
        play(r, inst, "channel filter", 0.05)
        # The noise's band is the panel's 10 MHz, so the same record plays at 5e7 samples a
        # second; last, since at that rate it fills the rest of the recording.
        inst.write("*RCL 1;:RAD:CUST:SRAT 12.5 MHz")  # the reader takes no exponent sign
        inst.write(":OUTP:IMP:AWGN ON;:OUTP:IMP:AWGN:SNR %g" % SNR_DB)
        play(r, inst, "QPSK with noise", 0.02)
        r.equal("noise bandwidth as the build reported it",
                inst.query(":OUTP:IMP:AWGN:IBW?"), "1e+07")
        inst.write(":SYST:CLOS")
    finally:
        inst.close()
    r.check(":SYST:CLOS ends the program", app.wait_exit(10) == 0)


# ---- Receivers ----------------------------------------------------------------------------


def symbol_centres(period):
    """Matched filter, then the symbol centres, scaled so that their mean power is 1."""
    y = circular_filter(period.astype(np.complex128), rrc_taps(ALPHA, OS, SPAN))[::OS]
    return y / np.sqrt(np.mean(np.abs(y) ** 2))


def qpsk_bits(y):
    """Bit 0 of a symbol is the sign of I, bit 1 that of Q; the first bit is the low one."""
    return np.column_stack([y.real < 0, y.imag < 0]).astype(np.uint8).ravel()


def qam16_points():
    c, d = 0.7071067811865475, 0.47140452
    points = np.array([complex(c - i * d, c - q * d) for i in range(4) for q in range(4)])
    return points / np.sqrt(np.mean(np.abs(points) ** 2))


def evm_percent(y, ideal):
    gain = np.vdot(ideal, y) / np.vdot(ideal, ideal)
    return 100 * np.sqrt(np.mean(np.abs(y / gain - ideal) ** 2) / np.mean(np.abs(ideal) ** 2))


def check_linear(r, name, period, decide):
    y = symbol_centres(period)
    symbols, ideal = decide(y)
    bits = ((symbols[:, None] >> np.arange(BITS[name])) & 1).astype(np.uint8).ravel()
    expected = np.tile(pn9_bits(), BITS[name])
    r.check(name + " gives back PN9 exactly", np.array_equal(bits, expected),
            "%d of %d bits differ" % (np.sum(bits != expected), len(expected)))
    evm = evm_percent(y, ideal)
    r.check(name + " EVM below 1 %", evm < 1.0, "%.3f %%" % evm)
    print("info: %s EVM %.4f %%" % (name, evm))


BITS = {"QPSK": 2, "16QAM": 4}


def decide_qpsk(y):
    bits = qpsk_bits(y).reshape(-1, 2)
    symbols = bits[:, 0] + 2 * bits[:, 1]
    a = np.sqrt(0.5)
    ideal = np.array([complex(a, a), complex(-a, a), complex(a, -a), complex(-a, -a)])
    return symbols, ideal[symbols]


def decide_qam16(y):
    points = qam16_points()
    symbols = np.argmin(np.abs(y[:, None] - points[None, :]), axis=1)
    return symbols, points[symbols]


def check_fsk(r, name, x, levels):
    """Bits from the instantaneous frequency at the symbol centres, repetition after
    repetition; and no step of the phase larger than the highest tone's."""
    step = np.angle(x[1:] * np.conj(x[:-1])) / (2 * np.pi) * FSK_RATE  # Hz
    a = FSK_DEVIATION
    r.check(name + " phase continuous", np.max(np.abs(step)) < a * 1.05,
            "largest step %.0f Hz" % np.max(np.abs(step)))
    period = PN9_SYMBOLS * FSK_OS
    reps = (len(step) - FSK_OS) // period
    k = int(np.log2(levels))
    expected = np.tile(pn9_bits(), k)
    tones = np.array([(2 * s - (levels - 1)) / (levels - 1) * a for s in range(levels)])
    ok = reps >= 4
    for rep in range(reps):
        centres = step[rep * period + np.arange(PN9_SYMBOLS) * FSK_OS]
        symbols = np.argmin(np.abs(centres[:, None] - tones[None, :]), axis=1)
        bits = ((symbols[:, None] >> np.arange(k)) & 1).astype(np.uint8).ravel()
        ok = ok and np.array_equal(bits, expected)
    r.check(name + " gives back PN9 in each of %d repetitions" % reps, ok)


def segments(captures, rate):
    return [c for c in captures if c.get("krt40:sample_rate") == rate
            and c.get("core:frequency") == FREQUENCY and c["end"] > c["core:sample_start"]]


def check_recording(r, app):
    _, captures, samples = read_recording(app)

    def iq(seg, count=None):
        start = seg["core:sample_start"]
        end = seg["end"] if count is None else min(seg["end"], start + count)
        return np.array([complex(i, q) for i, q in samples(start, end)], dtype=np.complex64)

    period = PN9_SYMBOLS * OS
    linear = segments(captures, LINEAR_RATE)
    noisy = segments(captures, NOISE_RATE)
    if not r.check("three linear plays at %g/s and one at %g/s" % (LINEAR_RATE, NOISE_RATE),
                   len(linear) == 3 and len(noisy) == 1, repr(captures)):
        return
    qpsk, qam16, filtered = (iq(seg, 2 * period) for seg in linear)
    r.check("QPSK repeats every %d samples" % period, np.array_equal(qpsk[:period], qpsk[period:]))
    mean_db = 10 * np.log10(np.mean(np.abs(qpsk[:period].astype(np.complex128)) ** 2))
    r.check("level corrected by the burst's mean power",
            abs(linear[0]["krt40:level_dbm"] - (LEVEL - mean_db)) < 1e-6,
            "%r for mean power %.4f dB" % (linear[0]["krt40:level_dbm"], mean_db))
    check_linear(r, "QPSK", qpsk[:period], decide_qpsk)
    check_linear(r, "16QAM", qam16[:period], decide_qam16)
    check_noise(r, qpsk[:period], iq(noisy[0], 200 * period))
    expected = circular_filter(qpsk[:period].astype(np.complex128), channel_taps())
    err = np.max(np.abs(filtered[:period] - expected)) / np.max(np.abs(expected))
    r.check("channel filter's response in the recording", err < 1e-4, "error %.2e" % err)

    fsk = segments(captures, FSK_RATE)
    if r.check("two FSK plays at %g/s" % FSK_RATE, len(fsk) == 2, repr(captures)):
        check_fsk(r, "2FSK", iq(fsk[0]), 2)
        check_fsk(r, "4FSK", iq(fsk[1]), 4)


def check_noise(r, clean, noisy):
    """The noise is the recording less the known waveform: 20 dB below it, in the asked band."""
    reps = len(noisy) // len(clean)
    noise = (noisy[:reps * len(clean)] - np.tile(clean, reps)).astype(np.complex128)
    signal_db = 10 * np.log10(np.mean(np.abs(clean.astype(np.complex128)) ** 2))
    noise_db = 10 * np.log10(np.mean(np.abs(noise) ** 2))
    r.check("noise %g dB below the waveform" % SNR_DB,
            abs(signal_db - noise_db - SNR_DB) < 0.5, "%.3f dB" % (signal_db - noise_db))
    spectrum = np.abs(np.fft.fft(noise)) ** 2
    freqs = np.abs(np.fft.fftfreq(len(noise), 1 / NOISE_RATE))
    inside = np.mean(spectrum[freqs < 0.4 * NOISE_BANDWIDTH])
    outside = np.mean(spectrum[freqs > 0.8 * NOISE_BANDWIDTH])
    ratio = 10 * np.log10(outside / inside)
    r.check("noise limited to %g Hz" % NOISE_BANDWIDTH, ratio < -30, "%.1f dB outside" % ratio)
    print("info: SNR %.3f dB, noise outside the band %.1f dB" % (signal_db - noise_db, ratio))


if __name__ == "__main__":
    sys.exit(run_e2e(check_session, check_recording, "digital"))
