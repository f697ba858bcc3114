"""Two made-up receivers' decodes in the servers that people have: a console program and a window."""

import subprocess
import unittest

from outpostd import UdpDaemon
from station import BUILD, Display, Home, Program, free_port, run_along, wait_for

WINDOW_PORT = 2237  # the only one that it starts with
IDS = {"20m": "PELQ Kiwi Outpost 20m", "40m": "PELQ Kiwi Outpost 40m"}
TIMES = ["17:52:30", "17:52:45", "17:53:00", "17:53:15"]


def message(band, period, number):
    return (f"CQ K{number}ABC FN{period}{number}" if band == "20m" else
            f"CQ W{number}XYZ EN{period}{number}")


class Feeder:
    """The two receivers; they bring what they are told to."""

    def __init__(self, port):
        self._process = subprocess.Popen(
            run_along([BUILD / "tests" / "station_udpfeeder", f"127.0.0.1:{port}"]),
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._process.kill()
        self._process.communicate()

    def _tell(self, line):
        self._process.stdin.write(line + "\n")
        self._process.stdin.flush()

    def bring_period(self, count):
        self._tell(f"period {count}")
        assert self._process.stdout.readline() == "sent\n"

    def end(self):
        self._tell("end")
        return self._process.wait(60)


class Console(UdpDaemon):
    """The server for the console, once it knows both receivers."""

    def wait_for_both(self):
        for name in IDS.values():
            self.wait_for_line(f"Discovered WSJT-X instance: {name}\\(")


def expected_messages(periods, count):
    return sorted((name, message(band, period, number)) for band, name in IDS.items()
                  for period in periods for number in range(count))


def expected_numbers(periods, count, new):
    return sorted((new, TIMES[period], str(number - 12), f"{number / 10:g}", str(1000 + number))
                  for _ in IDS for period in periods for number in range(count))


class UdpServers(unittest.TestCase):
    def test_each_decode_of_two_receivers_arrives_once_as_new(self):
        port = free_port()
        with Home() as home, Console(home, port) as console, Feeder(port) as feeder:
            console.wait_for_both()
            feeder.bring_period(10)
            feeder.bring_period(7)
            console.wait_for_decodes(34)
            self.assertEqual(feeder.end(), 0)
            for name in IDS.values():
                console.wait_for_line(f"Removed WSJT-X instance: {name}\\(")
            self.assertEqual(sorted(console.decoded()),
                             sorted(expected_messages([0], 10) + expected_messages([1], 7)))
            self.assertEqual(sorted(console.numbers()),
                             sorted(expected_numbers([0], 10, "true") +
                                    expected_numbers([1], 7, "true")))
            for name, hz in zip(IDS.values(), ("14074000", "7074000")):
                console.wait_for_line(f"{name}\\(.*\\): Dial frequency changed to {hz}$")

    def test_a_server_that_starts_late_gets_the_last_three_periods(self):
        port = free_port()
        with Home() as home, Feeder(port) as feeder:
            for _ in range(4):
                feeder.bring_period(3)
            with Console(home, port) as console:
                console.wait_for_both()
                console.wait_for_decodes(18)
                self.assertEqual(feeder.end(), 0)
                for name in IDS.values():
                    console.wait_for_line(f"Removed WSJT-X instance: {name}\\(")
                self.assertEqual(sorted(console.decoded()), expected_messages([1, 2, 3], 3))
                self.assertEqual(sorted(console.numbers()),
                                 expected_numbers([1, 2, 3], 3, "false"))

    def test_a_window_shows_both_receivers_until_they_end(self):
        def windows():
            return [display.run("xdotool", "search", "--onlyvisible", "--name", name).split()
                    for name in IDS.values()]
        with Home() as home, Display(home) as display, \
                Program(["message_aggregator"], home.environment(display.name)), \
                Feeder(WINDOW_PORT) as feeder:
            wait_for(lambda: all(windows()), "windows of both receivers")
            feeder.bring_period(3)
            display.screenshot("root", "udpservers")
            self.assertEqual(feeder.end(), 0)
            wait_for(lambda: not any(windows()), "end of both windows")


if __name__ == "__main__":
    unittest.main()
