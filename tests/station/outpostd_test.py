"""The daemon as people run it, beside a simulated receiver, a window and UDP servers."""

import contextlib
import fcntl
import os
import re
import signal
import stat
import subprocess
import time
import unittest

from demo_test import MIN_SURE_DB, planned_stations
from outpostd import Outpostd, ReceiverTable, UdpServer, configuration
from recording import write_silence
from station import (PROGRAMS, BridgeClient, Display, Home, Receiver, Station, free_port,
                     run_along, wait_for)

DECODED_SECONDS = 100  # until the first decodes of a receiver
END_SECONDS = 5
PASSWORD = "only-for-the-receiver"
ROW = re.compile(r"(\d{4}-\d\d-\d\d \d\d:\d\d:\d\d)  (.{20}) *(\d+\.\d{3})  *(-?\d+)  *(-?\d+\.\d)"
                 r"  *(\d+)  (\S.*)")
# A decoder that runs on, with a process of its own.
ENDLESS_DECODER = """#!/bin/sh
sleep 1000 &
echo $$ $! > "{pids}.new"
mv "{pids}.new" "{pids}"
wait
"""


def answer(home, *arguments):
    return subprocess.run([PROGRAMS / "kiwi-outpostd", *arguments], env=home.environment(None),
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=60,
                          check=False)


def is_running(process_id):
    try:
        with open(f"/proc/{process_id}/stat", encoding="utf-8") as file:
            return file.read().rpartition(")")[2].split()[0] != "Z"
    except FileNotFoundError:
        return False


def full_pipe():
    """A pipe that takes nothing more; its ends."""
    reading, writing = os.pipe()
    flags = fcntl.fcntl(writing, fcntl.F_GETFL)
    fcntl.fcntl(writing, fcntl.F_SETFL, flags | os.O_NONBLOCK)
    with contextlib.suppress(BlockingIOError):
        while True:
            os.write(writing, b"x" * 512)
    fcntl.fcntl(writing, fcntl.F_SETFL, flags)
    return reading, writing


class CommandLine(unittest.TestCase):
    """Without any receiver on the air."""

    def test_check_says_what_would_run(self):
        with Home() as home:
            password = home.path / "password"
            password.write_text(PASSWORD + "\n")
            file = home.path / "outpostd.toml"
            file.write_text(configuration(
                [ReceiverTable("20m", 8074, 14.074, 'password_file = "password"')], [2237]))
            result = answer(home, "--config", file, "--check")
            self.assertEqual((result.returncode, result.stderr), (0, ""))
            for part in ("20m", "127.0.0.1:8074", "14.074", "127.0.0.1:2237"):
                self.assertIn(part, result.stdout)
            self.assertNotIn(PASSWORD, result.stdout)

    def test_a_broken_file_is_refused_by_file_and_line(self):
        with Home() as home:
            file = home.path / "outpostd.toml"
            file.write_text('[[receiver]]\nname = "20m"\nhost = "127.0.0.1"\nmhzz = 14.074\n')
            for arguments in (["--check"], []):
                result = answer(home, "--config", file, *arguments)
                self.assertEqual((result.returncode, result.stdout), (2, ""))
                self.assertIn(f"{file}:4: ", result.stderr)
                self.assertRegex(result.stderr, "mhzz: .* mhz$")

    def test_nothing_to_receive_is_a_sentence(self):
        with Home() as home:
            empty = home.path / "outpostd.toml"
            empty.write_text("")
            for arguments in ([], ["--config", empty], ["--config", empty, "--check"]):
                result = answer(home, *arguments)
                self.assertEqual((result.returncode, result.stdout), (2, ""))
                self.assertRegex(result.stderr, r"\Akiwi-outpostd: No receiver is .*\.\n\Z")


class Decoding(unittest.TestCase):
    """Several daemons beside one receiver, which refuses a repeated client number silently."""

    @classmethod
    def setUpClass(cls):
        resources = contextlib.ExitStack()
        cls.addClassCleanup(resources.close)

        def start(*options):
            home = resources.enter_context(Home())
            return resources.enter_context(Outpostd(home, *options))
        home = resources.enter_context(Home())
        cls.receiver = resources.enter_context(Receiver(home))
        place = f"127.0.0.1:{cls.receiver.port}"
        cls.all_txt = home.path / "blocked.txt"
        file = home.path / "outpostd.toml"
        file.write_text(configuration([ReceiverTable("20m", cls.receiver.port, 14.074),
                                       ReceiverTable("40m", cls.receiver.port, 7.074)]))
        # One after the other: programs that connect in the same ms use the same client number.
        cls.table = start(place, "14.074")
        cls.table.wait_for_log("receiving")
        cls.json = start("--config", file, "--json")
        cls.json.wait_for_log("receiving", 2)
        cls.start_blocked(resources, place)

    @classmethod
    def start_blocked(cls, resources, place):
        """One whose standard output nobody reads."""
        home = resources.enter_context(Home())
        reading, writing = full_pipe()
        resources.callback(os.close, reading)
        log = resources.enter_context(open(home.path / "log", "w", encoding="utf-8"))
        cls.blocked = subprocess.Popen(
            run_along([PROGRAMS / "kiwi-outpostd", place, "14.074", "--all-txt", cls.all_txt]),
            env=home.environment(None), stdout=writing, stderr=log)
        os.close(writing)
        resources.callback(cls.blocked.wait)
        resources.callback(cls.blocked.kill)

    def check_messages(self, messages):
        """Those of the first period of the band."""
        sure = {station.message for station in planned_stations(0)
                if station.snr_db >= MIN_SURE_DB}
        self.assertGreater(len(sure), 15)
        self.assertGreaterEqual(len(sure & set(messages)), 0.9 * len(sure), messages)

    def test_decodes_stand_in_a_table(self):
        wait_for(lambda: len(self.table.lines) > 10, "rows", DECODED_SECONDS)
        head, *lines = list(self.table.lines)
        self.assertRegex(head, r"^UTC +Receiver +MHz +dB +DT +Hz +Message$")
        rows = [ROW.fullmatch(line) for line in lines]
        self.assertNotIn(None, rows, lines)
        first = [row for row in rows if row[1] == rows[0][1]]
        self.assertEqual({(row[2].strip(), row[3]) for row in first},
                         {("127.0.0.1 14.074", "14.074")})
        self.check_messages([row[7] for row in first])

    def test_two_bands_of_one_receiver_are_decoded_at_the_same_time(self):
        def both():
            return {decode["receiver"] for decode in self.json.decodes()} == {"20m", "40m"}
        wait_for(both, "decodes of both bands", DECODED_SECONDS)
        decodes = self.json.decodes()
        for band, dial in (("20m", 14074000), ("40m", 7074000)):
            of_band = [decode for decode in decodes if decode["receiver"] == band]
            first = [decode for decode in of_band
                     if decode["timestamp"] == of_band[0]["timestamp"]]
            self.check_messages([decode["msg"] for decode in first])
            for decode in first:
                self.assertEqual((decode["dial"], decode["freq"], decode["mode"]),
                                 (dial, dial + decode["audio"], "FT8"))
                self.assertEqual(decode["timestamp"] % 15000, 0)
            self.assertIn("callsign", first[0])
        refused = [event for event in self.receiver.events() if "already live" in event[3]]
        self.assertEqual(refused, [])

    def test_output_that_nobody_reads_holds_back_neither_all_txt_nor_the_end(self):
        wait_for(self.all_txt.exists, "ALL.TXT", DECODED_SECONDS)
        lines = wait_for(lambda: self.all_txt.read_text().splitlines()[:40], "lines")
        self.check_messages([line[48:] for line in lines])
        started = time.monotonic()
        self.blocked.send_signal(signal.SIGTERM)
        self.assertEqual(self.blocked.wait(60), 0)
        self.assertLess(time.monotonic() - started, END_SECONDS)


class Ending(unittest.TestCase):
    """While decoders run that would never end."""

    @staticmethod
    def decoder(home):
        folder = home.path / "bin"
        folder.mkdir()
        decoder = folder / "jt9"
        decoder.write_text(ENDLESS_DECODER.format(pids=home.path / "pids"))
        for program in (decoder, folder / "wsjtx"):  # which is what tells it from strangers
            program.touch()
            program.chmod(0o755)
        return decoder

    def start(self, home, receiver, server):
        file = home.path / "outpostd.toml"
        file.write_text(configuration([ReceiverTable("20m", receiver.port, 14.074)],
                                      [server.port], jt9=self.decoder(home)))
        return Outpostd(home, "--config", file)

    def check_end(self, number, home, daemon, server):
        pids = wait_for((home.path / "pids").exists, "decoder") and \
            (home.path / "pids").read_text().split()
        self.assertTrue(all(map(is_running, pids)))
        started = time.monotonic()
        self.assertEqual(daemon.end(number), 0)
        self.assertLess(time.monotonic() - started, END_SECONDS)
        self.assertFalse(any(map(is_running, pids)))
        sender = "PELQ Kiwi Outpost 20m"
        wait_for(lambda: server.CLOSE in server.types_of(sender), "Close")
        self.assertEqual(server.types_of(sender)[-2:], [server.CLEAR, server.CLOSE])

    def test_requests_to_end(self):
        requests = [signal.SIGTERM, signal.SIGINT]
        with contextlib.ExitStack() as stack:
            home = stack.enter_context(Home())
            write_silence(home.path / "silence.wav")
            receiver = stack.enter_context(Receiver(home, home.path / "silence.wav"))
            running = []
            for number in requests:
                home = stack.enter_context(Home())
                server = stack.enter_context(UdpServer())
                daemon = stack.enter_context(self.start(home, receiver, server))
                running.append((number, home, daemon, server))
            for case in running:
                with self.subTest(case[0].name):
                    self.check_end(*case)

    def test_a_hang_up_ends_one_that_has_no_file_to_read_again(self):
        # Ignored signals are inherited, and the test may run under nohup.
        self.addCleanup(signal.signal, signal.SIGHUP,
                        signal.signal(signal.SIGHUP, signal.SIG_DFL))
        with Home() as home, \
                Outpostd(home, f"127.0.0.1:{free_port()}", "14.074") as daemon:
            daemon.wait_for_log("connecting, 14.074000 MHz")
            self.assertEqual(daemon.end(signal.SIGHUP), 0)


class Operating(unittest.TestCase):
    """A daemon that receives, while its configuration changes and others look at it."""

    def setUp(self):
        stack = contextlib.ExitStack()
        self.addCleanup(stack.close)
        self.home = stack.enter_context(Home())
        write_silence(self.home.path / "silence.wav")
        self.receiver = stack.enter_context(Receiver(self.home, self.home.path / "silence.wav"))
        password = self.home.path / "password"
        password.write_text(f"{PASSWORD}\n")
        password.chmod(0o600)
        self.kept = ReceiverTable("20m", self.receiver.port, 14.074,
                                  'password_file = "password"')
        self.file = self.home.path / "outpostd.toml"
        self.configure(self.kept, ReceiverTable("40m", self.receiver.port, 7.074))
        self.daemon = stack.enter_context(Outpostd(self.home, "--config", self.file))
        self.daemon.wait_for_log("20m: receiving")
        self.daemon.wait_for_log("40m: receiving")

    def configure(self, *receivers):
        self.file.write_text(configuration(receivers))

    def clients_that(self, kind):
        return {client for client, _, event, _ in self.receiver.events() if event == kind}

    def tuned(self):
        """Clients by the dial frequency that they asked for."""
        found = [(client, re.search(r"freq=([\d.]+)", text))
                 for client, _, kind, text in self.receiver.events() if kind == "command"]
        return {match[1]: client for client, match in found if match}

    def test_a_hang_up_changes_only_what_differs(self):
        before = self.tuned()
        self.configure(self.kept, ReceiverTable("30m", self.receiver.port, 10.136))
        self.daemon.send(signal.SIGHUP)
        self.daemon.wait_for_log("30m: receiving")
        after = self.tuned()
        self.assertEqual(set(after), {"14074.000", "7074.000", "10136.000"})
        self.assertEqual(self.clients_that("connect"), set(after.values()))
        wait_for(lambda: self.clients_that("closed"), "end of the connection")
        self.assertEqual(self.clients_that("closed"), {before["7074.000"]})
        self.assertEqual(self.daemon.end(signal.SIGTERM), 0)

    def test_a_broken_file_changes_nothing_and_the_log_says_why(self):
        self.file.write_text(self.file.read_text() + "[[receiver]]\nhosts = 1\n")
        line = len(self.file.read_text().splitlines())
        self.daemon.send(signal.SIGHUP)
        self.daemon.wait_for_log(re.escape(f"The configuration stays as it is. {self.file}:{line}:"))
        self.file.write_text("")
        self.daemon.send(signal.SIGHUP)
        self.daemon.wait_for_log("stays as it is. The file names no receiver")
        self.assertEqual(len(self.clients_that("connect")), 2)
        self.assertEqual(self.clients_that("closed"), set())
        self.assertEqual(self.daemon.end(signal.SIGTERM), 0)

    def test_the_password_reaches_only_the_receiver(self):
        given = [text for _, _, kind, text in self.receiver.events()
                 if kind == "command" and text.startswith("SET auth")]
        self.assertEqual(sorted(given), sorted(["SET auth t=kiwi p=", "SET auth t=kiwi p=" + PASSWORD]))
        masked = self.daemon.wait_for_log(r"SET auth t=kiwi p=\*\*\*$", 2)
        self.assertEqual(len(masked), 2)
        self.assertNotIn(PASSWORD, "\n".join(self.daemon.log() + self.daemon.lines))
        for file in ("cmdline", "environ", "comm"):
            # The system may keep the memory of a process that holds a password to root.
            with contextlib.suppress(PermissionError), \
                    open(f"/proc/{self.daemon.process_id}/{file}", "rb") as shown:
                self.assertNotIn(PASSWORD.encode(), shown.read())
        self.assertEqual(self.daemon.end(signal.SIGTERM), 0)
        self.assertNotIn(PASSWORD, "\n".join(self.daemon.log()))

    def test_status_is_shown_to_the_owner_alone(self):
        result = answer(self.home, "--status")
        self.assertEqual((result.returncode, result.stderr), (0, ""))
        head, *rows = result.stdout.splitlines()
        self.assertEqual(head.split()[:3], ["NAME", "MHZ", "PERIOD"])
        self.assertEqual([(row.split()[:2], row.split()[-1]) for row in rows],
                         [(["20m", "14.074000"], "receiving"), (["40m", "7.074000"], "receiving")])
        socket = self.home.path / "kiwi-outpostd.sock"
        self.assertTrue(stat.S_ISSOCK(socket.stat().st_mode))
        self.assertEqual(socket.stat().st_mode & 0o077, 0)
        self.assertEqual(self.daemon.end(signal.SIGTERM), 0)
        result = answer(self.home, "--status")
        self.assertEqual((result.returncode, result.stdout), (1, ""))
        self.assertIn("no kiwi-outpostd", result.stderr)


class WindowAsSource(unittest.TestCase):
    """A running window's decodes go to a UDP server."""

    SENDER = "PELQ Kiwi Outpost window"

    @staticmethod
    def hhmmss(decode):
        return time.strftime("%H%M%S", time.gmtime(decode.time // 1000))

    def test_each_decode_of_the_window_arrives_once_with_its_frequency(self):
        with Home() as home, Receiver(home) as receiver, Display(home) as display, \
                UdpServer() as server, Station(home, display) as station, \
                BridgeClient(station.bridge_port) as client, \
                Outpostd(home, "--bridge", station.bridge_port,
                         "--wsjtx", f"127.0.0.1:{server.port}") as daemon:
            dialog = station.open_receiver_dialog()
            station.apply_and_connect(receiver.port, "20")
            station.wait_for_line("REAL KIWI SND DATA VERIFIED at /kiwi/0/SND.")
            display.close(dialog)
            first = wait_for(client.decodes, "decodes", DECODED_SECONDS)[0][0]
            station.wait_until_decoded(first)

            def sent():
                return {(hhmmss, message) for hhmmss, _, _, _, message in client.decodes()
                        if hhmmss == first}

            def arrived():
                return [decode for decode in server.decodes() if self.hhmmss(decode) == first]
            wait_for(lambda: {decode.message for decode in arrived()} ==
                     {message for _, message in sent()}, "all decodes at the server")
            self.check_each_once(arrived(), sent())
            self.assertEqual(server.dial_at_first_decode(self.SENDER), 14074000)
            self.assertEqual(daemon.end(signal.SIGTERM), 0)

    def check_each_once(self, arrived, sent):
        self.assertGreater(len(arrived), 15)
        self.assertEqual(sorted(decode.message for decode in arrived),
                         sorted(message for _, message in sent))
        self.assertEqual({(decode.sender, decode.new) for decode in arrived},
                         {(self.SENDER, True)})


if __name__ == "__main__":
    unittest.main()
