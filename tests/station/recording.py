"""Recordings of one FT8 period, like a person's own: signals in noise."""

import array
import math
import random
import subprocess
import sys
import tempfile
import wave
from pathlib import Path

RATE_HZ = 12000
SAMPLES = 15 * RATE_HZ
NOISE_RMS = 300
FULL_SCALE = 32767


def read(path):
    with wave.open(str(path)) as recording:
        samples = array.array("h", recording.readframes(recording.getnframes()))
    if sys.byteorder == "big":
        samples.byteswap()
    return samples


def write(path, samples):
    pcm = array.array("h", (max(-FULL_SCALE, min(FULL_SCALE, round(value))) for value in samples))
    if sys.byteorder == "big":
        pcm.byteswap()
    with wave.open(str(path), "wb") as recording:
        recording.setnchannels(1)
        recording.setsampwidth(2)
        recording.setframerate(RATE_HZ)
        recording.writeframes(pcm.tobytes())


def signal(message, hz):
    """A full-scale signal without noise, 0.2 s late."""
    with tempfile.TemporaryDirectory() as folder:
        # DT, Doppler spread, delay, one file, SNR 99 for no noise
        subprocess.run(["ft8sim", message, str(hz), "0.2", "0", "0", "1", "99"],
                       cwd=folder, stdout=subprocess.DEVNULL, check=True)
        return read(Path(folder) / "000000_000001.wav")


def amplitude(snr_db):
    """The amplitude of a sine with this SNR in 2500 of the noise's 6000 Hz."""
    return NOISE_RMS * math.sqrt(2 * 2500 / 6000 * 10 ** (snr_db / 10))


def write_band(path, stations, seed):
    """Writes a recording of the stations (Hz, dB, message) in noise."""
    noise = random.Random(seed)
    mixed = [noise.gauss(0, NOISE_RMS) for _ in range(SAMPLES)]
    for hz, snr_db, message in stations:
        gain = amplitude(snr_db) / FULL_SCALE
        mixed = [value + gain * tone for value, tone in zip(mixed, signal(message, hz))]
    write(path, mixed)


def write_silence(path):
    write(path, [0] * SAMPLES)
