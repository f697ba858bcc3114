"""The demonstration as ./outpost demo runs it. Several run at once, since they mostly wait, but
only one decodes a crowded band."""

import contextlib
import re
import subprocess
import unittest
from typing import NamedTuple

import recording
from decoder import Decode, decode_period, merged
from station import PROGRAMS, Display, Home, Program, wait_for

LONGEST_SECONDS = 300
MIN_SURE_DB = -12

# Some are in the overlaps of the sub-bands; none is so weak that the codec matters.
EVENING = [(320, 0, "CQ K1ABC FN42"), (775, -3, "K1ABC W9XYZ EN37"), (800, 3, "CQ DL2XYZ JO62"),
           (1210, -8, "W9XYZ K1ABC -11"), (1500, -5, "CQ JA1XYZ PM95"),
           (2225, 2, "K1ABC W9XYZ R-09"), (2700, -6, "W9XYZ K1ABC RR73")]
MORNING = [(450, -4, "CQ G4ABC IO91"), (760, 1, "G4ABC F5XYZ JN18"),
           (1480, -7, "F5XYZ G4ABC +03"), (1900, 4, "G4ABC F5XYZ R-01"),
           (2250, -2, "F5XYZ G4ABC RR73"), (2600, 0, "G4ABC F5XYZ 73")]


class Station(NamedTuple):
    """A station in the simulator's band."""

    hz: float
    snr_db: int
    message: str


def planned_stations(period):
    plan = subprocess.run([PROGRAMS / "kiwi-sim", "--plan"], text=True, check=True,
                          stdout=subprocess.PIPE).stdout
    cells = [line.split(" ", 4) for line in plan.splitlines()[1:]]
    return [Station(float(hz), int(db), message)
            for number, hz, db, _, message in cells if int(number) == period]


class Demo(Program):
    """A demonstration. All run the same program, so each uses its own capture folder."""

    def __init__(self, home, *options, display=None):
        # The output that a person reads, without the log, which CTest keeps.
        super().__init__([PROGRAMS / "kiwi-outpost-demo", *options], home.environment(display),
                         errors=None)

    def periods(self):
        """The rows of each period by its label, in the order in which they were printed."""
        found = {}
        for line in self.lines:
            row = re.fullmatch(r"(\d\d:\d\d:\d\d) (-?\d+) (-?\d+\.\d) (\d+) (\S.*)", line)
            if row:
                found.setdefault(row[1], []).append(Decode(*row.groups()[1:]))
        return found


class DemoTest(unittest.TestCase):
    """Each test checks one of the demonstrations, which run in parallel."""

    @classmethod
    def setUpClass(cls):
        resources = contextlib.ExitStack()
        cls.addClassCleanup(resources.close)
        home = resources.enter_context(Home())
        cls.recordings = [home.path / "evening.wav", home.path / "morning.wav"]
        for path, stations in zip(cls.recordings, (EVENING, MORNING)):
            recording.write_band(path, stations, path.name)
        recording.write_silence(home.path / "silence.wav")
        display = resources.enter_context(Display(home))

        def start(*options, **where):
            return resources.enter_context(Demo(home, *options, **where))
        cls.silent = start("--wav", home.path / "silence.wav", "--periods", "1")
        cls.band = start("--periods", "2")
        cls.band.exit_status(LONGEST_SECONDS)
        evening, morning = (["--wav", path] for path in cls.recordings)
        cls.recorded = start(*evening, *morning, "--periods", "2")
        cls.display = display
        cls.shown = start(*evening, *morning, *evening, display=display.name)

    def test_decodes_the_stations_of_the_synthetic_band(self):
        self.assertEqual(self.band.exit_status(LONGEST_SECONDS), 0, self.band.lines)
        periods = self.band.periods()
        self.assertEqual(len(periods), 2)
        for number, rows in enumerate(periods.values()):
            sure = [station for station in planned_stations(number)
                    if station.snr_db >= MIN_SURE_DB]
            decoded = [station for station in sure
                       if any(row.message == station.message and
                              abs(int(row.hz) - station.hz) <= 3 for row in rows)]
            self.assertGreater(len(sure), 15)
            self.assertGreaterEqual(len(decoded), 0.9 * len(sure), rows)

    def test_prints_each_message_once_in_order_of_frequency_and_the_sum_last(self):
        self.assertEqual(self.band.exit_status(LONGEST_SECONDS), 0, self.band.lines)
        periods = self.band.periods()
        for rows in periods.values():
            frequencies = [int(row.hz) for row in rows]
            self.assertEqual(frequencies, sorted(frequencies))
            twins = [(row, other) for i, row in enumerate(rows) for other in rows[:i]
                     if row.is_twin_of(other)]
            self.assertEqual(twins, [])
        total = sum(map(len, periods.values()))
        self.assertEqual(self.band.lines[-1], f"2 periods, {total} decodes")

    def test_shows_in_recordings_what_the_decoder_finds_in_them(self):
        self.assertEqual(self.recorded.exit_status(LONGEST_SECONDS), 0, self.recorded.lines)
        shown = [[row.message for row in rows] for rows in self.recorded.periods().values()]
        found = [[row.message for row in merged(decode_period(path))] for path in self.recordings]
        self.assertEqual([len(messages) for messages in found], [len(EVENING), len(MORNING)])
        self.assertEqual(shown, found)

    def test_ends_on_a_display_only_when_its_window_is_closed(self):
        decoded = r"PELQ Kiwi Outpost \(FT8 Decode Complete\)"
        window = self.display.window(decoded, LONGEST_SECONDS)
        wait_for(lambda: len(self.shown.periods()) >= 3, "third period", LONGEST_SECONDS)
        self.display.screenshot(window, "demo")
        self.display.press("alt+F4")
        self.assertEqual(self.shown.exit_status(60), 0, self.shown.lines)
        periods = self.shown.periods()
        total = sum(map(len, periods.values()))
        self.assertEqual(self.shown.lines[-1], f"{len(periods)} periods, {total} decodes")

    def test_status_tells_of_a_period_without_decode(self):
        self.assertEqual(self.silent.exit_status(LONGEST_SECONDS), 1, self.silent.lines)
        self.assertEqual(self.silent.lines[-1], "1 period, 0 decodes")


if __name__ == "__main__":
    unittest.main()
