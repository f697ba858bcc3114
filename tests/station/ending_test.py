"""Ways to end the program while a receiver is heard."""

import contextlib
import signal
import subprocess
import unittest

from recording import write_silence
from station import PROGRAMS, Display, Home, Receiver, Station, free_port, run_along

VIEWS = ["PELQ Kiwi Outpost Status Log", "PELQ Kiwi Outpost Station Display",
         "PELQ Kiwi Outpost Bridge Status"]
REQUESTS = [signal.SIGTERM, signal.SIGINT, signal.SIGHUP]


class Ending(unittest.TestCase):
    def setUp(self):
        """The station inherits ignored signals, and these tests may run under nohup."""
        for number in REQUESTS:
            self.addCleanup(signal.signal, number, signal.signal(number, signal.SIG_DFL))

    @contextlib.contextmanager
    def connected_station(self, keeps_dialog=False):
        """A station that has received its first sound."""
        with contextlib.ExitStack() as stack:
            home = stack.enter_context(Home())
            write_silence(home.path / "silence.wav")
            receiver = stack.enter_context(Receiver(home, home.path / "silence.wav"))
            display = stack.enter_context(Display(home))
            station = stack.enter_context(Station(home, display))
            dialog = station.open_receiver_dialog()
            station.apply_and_connect(receiver.port, "20")
            station.wait_for_line("REAL KIWI SND DATA VERIFIED at /kiwi/0/SND.")
            if not keeps_dialog:
                display.close(dialog)
            yield home, station, display, receiver.port

    def check_end(self, home, station, port):
        self.assertEqual(station.exit_status(60), 0)
        self.assertEqual(station.log()[-1], "Local WSJT bridge stopped.")
        [session] = home.read_json("receiver-status-log.json")["Sessions"]
        self.assertEqual((session["Host"], session["Port"]), ("127.0.0.1", port))

    def test_exit_from_the_menu_with_every_window_open(self):
        with self.connected_station() as (home, station, display, port):
            for entry, title in enumerate(VIEWS):
                station.open_view(entry, title)
            station.window()
            display.press("alt+f", "Up", "Return")
            self.check_end(home, station, port)

    def test_requests_to_end(self):
        for number in REQUESTS:
            with self.subTest(number.name), \
                    self.connected_station() as (home, station, _, port):
                station.send(number)
                self.check_end(home, station, port)

    def test_two_requests_at_once_as_a_log_off_sends_them(self):
        with self.connected_station() as (home, station, _, port):
            station.send(signal.SIGTERM)
            station.send(signal.SIGHUP)
            self.check_end(home, station, port)

    def test_a_request_to_end_while_the_receiver_dialog_is_open(self):
        with self.connected_station(keeps_dialog=True) as (home, station, _, port):
            station.send(signal.SIGTERM)
            self.check_end(home, station, port)

    def test_a_log_reader_that_is_gone_ends_nothing(self):
        with Home() as home:
            home.write_profile(BridgePort=free_port())
            command = run_along([PROGRAMS / "kiwi-outpost"])
            with subprocess.Popen(command, env=home.environment(None),
                                  stderr=subprocess.PIPE) as station:
                self.assertIn(b"Local WSJT bridge listening", station.stderr.readline())
                station.stderr.close()
                station.send_signal(signal.SIGTERM)  # the station writes a line when it ends
                self.assertEqual(station.wait(60), 0)

    def test_a_hang_up_that_it_was_started_to_ignore_does_not_end_it(self):
        signal.signal(signal.SIGHUP, signal.SIG_IGN)
        with self.connected_station() as (home, station, display, port):
            station.send(signal.SIGHUP)
            window = station.open_view(1, VIEWS[1])  # still in use by the operator
            display.close(window)
            station.send(signal.SIGTERM)
            self.check_end(home, station, port)


if __name__ == "__main__":
    unittest.main()
