"""Runs the installed decoder on one recorded period, and merges its output as the station does."""

import os
import re
import subprocess
import tempfile
from concurrent.futures import ThreadPoolExecutor
from typing import NamedTuple

BANDS_HZ = [(0, 825), (725, 1550), (1450, 2275), (2175, 3000)]
TWIN_HZ = 12
LINE = re.compile(r"\s*(\d{6})\s+([+-]?\d+)\s+([+-]?\d+(?:\.\d+)?)\s+([+-]?\d+)\s+~\s+(.+?)\s*")


class Decode(NamedTuple):
    """One decode with the numbers as the decoder printed them."""

    snr: str  # dB
    dt: str  # seconds
    hz: str
    message: str

    def is_twin_of(self, other):
        same_message = self.message.upper() == other.message.upper()
        return same_message and abs(int(self.hz) - int(other.hz)) <= TWIN_HZ


def decode_band(wav, low_hz, high_hz):
    with tempfile.TemporaryDirectory() as folder:
        # The decoder writes files to its home and to its working folder.
        environment = dict(os.environ, HOME=folder)
        command = ["jt9", "--ft8", "-d", "2", "-L", str(low_hz), "-H", str(high_hz), wav]
        output = subprocess.run(command, cwd=folder, env=environment, text=True, check=True,
                                stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    found = [LINE.fullmatch(line) for line in output.splitlines()]
    return [Decode(line[2], line[3], line[4], " ".join(line[5].split())) for line in found if line]


def decode_period(wav):
    """The lines of all four sub-bands, those near an edge twice."""
    with ThreadPoolExecutor() as pool:
        found = pool.map(lambda band: decode_band(wav, *band), BANDS_HZ)
        return [line for lines in found for line in lines]


def is_better(candidate, kept):
    """Whether it is stronger, or equally strong with a smaller DT."""
    def rank(line):
        return int(line.snr), -abs(float(line.dt))
    return rank(candidate) > rank(kept)


def merged(lines):
    """One line per message and frequency, sorted by frequency."""
    rows = []
    for line in lines:
        twin = next((i for i, row in enumerate(rows) if line.is_twin_of(row)), None)
        if twin is None:
            rows.append(line)
        elif is_better(line, rows[twin]):
            rows[twin] = line
    return sorted(rows, key=lambda row: (int(row.hz), row.message.upper()))
