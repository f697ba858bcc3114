"""Ten minutes of four receivers with faults: what their sound holds arrives at every output, once.
OUTPOST_LONG_TESTS sets the number of periods.

    OUTPOST_BUILD=build/dev OUTPOST_LONG_TESTS=40 python3 -B tests/station/daemon_long_test.py
"""

import calendar
import os
import signal
import time
import unittest
from collections import Counter

from decoder import decode_band
from fourbands import BANDS, PERIOD_MS, FourBands
from outpostd import UdpDaemon, UdpServer
from station import Home, free_port, synthetic_band, wait_for

BAND_PERIODS = 8  # then the simulator's band repeats
FAULTS = {"40m": "drop:115", "30m": "stall:130", "20m": "kick:100", "17m": "bursty:3"}
DECODING_SECONDS = 120
# A cut that is some ms off may lose a signal at the decoder's threshold, or find another.
LEAST_SHARE = 0.97


def start_and_client(recording):
    """Of <UTC start>-client-<number>.wav: ms since the epoch, and the number."""
    start, _, client = recording.stem.split("-")
    return calendar.timegm(time.strptime(start, "%Y%m%d_%H%M%S")) * 1000, int(client)


def heard_periods(receiver, until_ms):
    """By start, the number in the band of each period that the daemon got wholly. The band begins
    again with each connection."""
    heard, counts = {}, Counter()
    for recording in receiver.heard_periods():
        start, client = start_and_client(recording)
        if start < until_ms:
            heard[start] = counts[client] % BAND_PERIODS
        counts[client] += 1
    return heard


class FourReceivers(unittest.TestCase):
    """One run; the figures are printed."""

    @classmethod
    def setUpClass(cls):
        cls.periods = int(os.environ["OUTPOST_LONG_TESTS"])
        with Home() as home, UdpServer() as server:
            recordings = synthetic_band(home)
            cls.messages = [{decode.message for decode in decode_band(path, 200, 3000)}
                            for path in recordings]
            port = free_port()
            with UdpDaemon(home, port) as console, \
                    FourBands(home, FAULTS, [server.port, port], home.path) as station:
                cls.run_station(station)
                cls.collect(home, server, console, station)

    @classmethod
    def run_station(cls, station):
        first = time.time() * 1000 // PERIOD_MS * PERIOD_MS + PERIOD_MS
        until = first + cls.periods * PERIOD_MS
        time.sleep(max(0, until / 1000 - time.time()))

        def all_decoded():
            cls.heard = {band: heard_periods(receiver, until)
                         for band, receiver in station.receivers.items()}
            return all(set(heard) <= station.decoded_periods(band)
                       for band, heard in cls.heard.items())
        try:
            wait_for(all_decoded, "end of decoding", DECODING_SECONDS)
        except AssertionError as failure:
            print(failure)
        cls.status = station.daemon.end(signal.SIGTERM)
        cls.log = station.daemon.log()

    @classmethod
    def collect(cls, home, server, console, station):
        """By receiver, start and message, how often a decode arrived at each output."""
        bands = {f"{mhz:10.3f}": band for band, mhz in BANDS.items()}
        json = station.daemon.decodes()
        lines = (home.path / "ALL.TXT").read_text().splitlines()
        cls.arrived = {
            "JSON": Counter((decode["receiver"], decode["timestamp"] % 86400000, decode["audio"],
                             decode["msg"]) for decode in json),
            "UDP": Counter((decode.sender.split()[-1], decode.time, decode.hz, decode.message)
                           for decode in server.decodes() if decode.new),
            "ALL.TXT": Counter((bands[line[13:23]], cls.time_of_day(line[7:13]), int(line[42:47]),
                                line[48:]) for line in lines),
        }
        wait_for(lambda: len(console.decoded()) >= len(server.decodes()), "decodes at the console")
        cls.at_console = Counter((sender.split()[-1], message)
                                 for sender, message in console.decoded())

    @staticmethod
    def time_of_day(hhmmss):
        return (int(hhmmss[:2]) * 3600 + int(hhmmss[2:4]) * 60 + int(hhmmss[4:])) * 1000

    def expected(self):
        return {(band, start % 86400000, message)
                for band, heard in self.heard.items() for start, number in heard.items()
                for message in self.messages[number]}

    def test_what_the_receivers_sent_arrives(self):
        expected = self.expected()
        print(f"{self.periods} periods:", ", ".join(
            f"{band} ({FAULTS[band]}) {len(heard)} whole" for band, heard in self.heard.items()))
        print("expected", len(expected))
        for output, decodes in self.arrived.items():
            found = {(band, time, message) for band, time, _, message in decodes}
            print(f"{output}: {sum(decodes.values())} decodes, {len(expected & found)} expected, "
                  f"{len(found - expected)} others")
            self.assertGreaterEqual(len(expected & found), LEAST_SHARE * len(expected))
        for band in FAULTS:
            self.assertGreater(len(self.heard[band]), self.periods / 3)

    def test_each_output_gets_each_decode_once(self):
        for output, decodes in self.arrived.items():
            self.assertEqual(decodes, self.arrived["JSON"], output)
            self.assertEqual(set(decodes.values()), {1}, output)
        self.assertEqual(self.at_console,
                         Counter((band, message) for band, _, _, message in self.arrived["JSON"]))

    def test_receivers_came_back_after_each_fault(self):
        for band, reason in (("20m", "all channels are taken"), ("30m", "its sound stopped"),
                             ("40m", "the connection ended")):
            waits = [line for line in self.log if f" {band}: waiting" in line]
            print(f"{band}: {len(waits)} waits, as in", *waits[:1])
            self.assertGreaterEqual(len(waits), self.periods // 20)
            self.assertIn(reason, waits[0])
        self.assertEqual(self.status, 0)


if __name__ == "__main__":
    unittest.main()
