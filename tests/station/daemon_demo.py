"""Shows the daemon decoding four simulated receivers, one of which kicks its listeners, as another
program gets the decodes by UDP. Ends with Ctrl-C or after the given number of periods."""

import argparse
import re
import signal
import sys
import time

from fourbands import BANDS, FourBands
from outpostd import UdpDaemon
from station import Home, free_port

KICKING = "30m"
KICKED_AFTER_SECONDS = 40
END_SECONDS = 20


def whole_number(text):
    number = int(text)
    if number < 1:
        raise ValueError
    return number


class Scroll:
    """Prints what is new in the daemon's log and at the UDP server."""

    def __init__(self, station, server):
        self._sources = [lambda: self._news(station.daemon.log()), lambda: self._decodes(server)]
        self._shown = [0, 0]

    @staticmethod
    def _news(log):
        """Without what each connection sends and gets."""
        return [line for line in log if not re.search(r": (Native )?Kiwi ", line)]

    @staticmethod
    def _decodes(server):
        return [f"{sender}  {time} {snr:>4} {dt:>5} {hz:>5}  {message}"
                for (sender, message), (_, time, snr, dt, hz)
                in zip(server.decoded(), server.numbers())]

    def show(self):
        for number, source in enumerate(self._sources):
            lines = source()
            for line in lines[self._shown[number]:]:
                print(line, flush=True)
            self._shown[number] = len(lines)


def ended(station, periods):
    """Whether all receivers that never kick have been decoded for so many periods."""
    steady = [band for band in BANDS if band != KICKING]
    return all(len(station.decoded_periods(band)) >= periods for band in steady)


def watch(station, scroll, periods):
    """Until the periods are decoded or Ctrl-C; returns whether all went well."""
    late = time.monotonic() + ((periods or 0) + 8) * 15
    try:
        while not (periods and ended(station, periods)):
            scroll.show()
            if periods and time.monotonic() > late:
                return False
            time.sleep(0.2)
    except KeyboardInterrupt:
        print()
    return True


def summary(server):
    counts = {band: sum(sender.endswith(f" {band}") for sender, _ in server.decoded())
              for band in BANDS}
    print("Decodes at the UDP server:",
          ", ".join(f"{band} {count}" for band, count in counts.items()))
    return counts


def run(periods):
    port = free_port()
    kicks = {KICKING: f"kick:{KICKED_AFTER_SECONDS}"}
    with Home() as home, UdpDaemon(home, port) as server, \
            FourBands(home, kicks, [port]) as station:
        scroll = Scroll(station, server)
        in_time = watch(station, scroll, periods)
        status = station.daemon.end(signal.SIGTERM, END_SECONDS)
        scroll.show()
        counts = summary(server)
        print(f"kiwi-outpostd ended with exit code {status}.")
        everywhere = all(counts.values()) or not periods
        return 0 if in_time and status == 0 and everywhere else 1


def interrupt(*_):
    raise KeyboardInterrupt


if __name__ == "__main__":
    parser = argparse.ArgumentParser(prog="outpost demo-daemon", description=__doc__)
    parser.add_argument("--periods", type=whole_number, metavar="N", help="stop after N periods")
    arguments = parser.parse_args()
    for request in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(request, interrupt)
    try:
        sys.exit(run(arguments.periods))
    except KeyboardInterrupt:
        sys.exit(130)
