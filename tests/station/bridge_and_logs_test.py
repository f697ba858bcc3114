"""Two periods on their way to the bridge's clients, the windows and the data files."""

import datetime
import unittest

import recording
from decoder import decode_period, merged
from station import BridgeClient, Display, Home, Receiver, Station, synthetic_band, wait_for


def bridge_keys(decodes):
    """What identifies a decode on the bridge: time, frequency and message."""
    return [(time, hz, message) for time, _, _, hz, message in decodes]


class Period:
    """A period as the receiver's client heard it, and the decodes that jt9 finds in it."""

    def __init__(self, recording):
        # YYYYMMDD_HHMMSS-client-N.wav
        self.start = datetime.datetime.strptime(recording.name[:15], "%Y%m%d_%H%M%S")
        self.time = self.start.strftime("%H%M%S")
        self.label = self.start.strftime("%H:%M:%S")
        self.lines = decode_period(recording)
        self.rows = merged(self.lines)
        self.keys = {(self.time, line.hz, line.message) for line in self.lines}

    def has_reached(self, client):
        return self.keys <= set(bridge_keys(client.decodes()))


class BridgeAndLogs(unittest.TestCase):
    def test_clients_windows_and_logs_agree_with_two_periods_of_a_receiver(self):
        with Home() as home, self.receiver_of_two_periods(home) as receiver, \
                Display(home) as display, Station(home, display) as station, \
                BridgeClient(station.bridge_port) as first:
            dialog = station.open_receiver_dialog()
            station.apply_and_connect(receiver.port, "20")
            station.wait_for_line("REAL KIWI SND DATA VERIFIED at /kiwi/0/SND.")
            display.close(dialog)

            one = Period(receiver.heard_period(0))
            wait_for(lambda: one.has_reached(first), "whole first period")
            with BridgeClient(station.bridge_port) as second:
                wait_for(second.decodes, "second period at the bridge", 120)
                station.wait_until_decoded(second.decodes()[0][0])
                # Only noise follows, so the counts stay.
                two = Period(receiver.heard_period(2))
                wait_for(lambda: two.has_reached(first), "whole second period")
                wait_for(lambda: two.has_reached(second), "whole second period, second client")
                self.check_station_display(station, display, receiver.port, one, two)
                self.check_bridge_status(station, display)
                receiver.kill()
                station.wait_for_line("Verified Kiwi SND stream ended.")
                self.check_client(first, [one, two])
                self.check_client(second, [two])
            display.screenshot(station.window(), "main-window-disconnected")
            self.check_status_log(home, receiver.port, one, two)
            self.check_status_log_window(station, display, home, receiver.port, one, two)
            self.check_good_receivers(home, receiver.port, one)

    def receiver_of_two_periods(self, home):
        """The silence between them gives a busy machine time to finish the first."""
        first, second = synthetic_band(home)[:2]
        silence = home.path / "silence.wav"
        recording.write_silence(silence)
        return Receiver(home, first, silence, second)

    def check_client(self, client, periods):
        """Every decode once; besides the table's rows only near duplicates from band edges."""
        keys = bridge_keys(client.decodes())
        self.assertEqual(len(keys), len(set(keys)))
        self.assertEqual(set(keys), set().union(*(period.keys for period in periods)))
        received = set(client.decodes())
        for period in periods:
            self.assertGreater(len(period.rows), 20)
            for row in period.rows:
                self.assertIn((period.time, row.hz, row.message), keys)
            others = [line for line in period.lines if line not in period.rows]
            for line in others:
                self.assertTrue(any(line.is_twin_of(row) for row in period.rows), line)
            sent = {decode for decode in received if decode[0] == period.time}
            self.assertLessEqual(sent, {(period.time, *line) for line in period.lines})

    def check_station_display(self, station, display, port, one, two):
        window = station.open_view(1, "PELQ Kiwi Outpost Station Display")
        display.screenshot(window, "station-display")
        text = display.copied_text(window, 20, 20).split("\n")
        connected = text.pop(2)
        self.assertRegex(connected, r"^Connected time: 00:0[01]:\d\d$")
        strengths = [int(row.snr) for row in two.rows]
        self.assertEqual(text, [
            f"Receiver: 127.0.0.1:{port}",
            "Frequency: 14.074000 MHz",
            f"Session decodes: {len(one.rows) + len(two.rows)}",
            f"Latest FT8 period: {two.label}",
            f"Latest-period decodes: {len(two.rows)}",
            f"Strongest / weakest SNR: {max(strengths)} / {min(strengths)} dB",
            "Local WSJT bridge: Listening — 2 client(s)"])
        display.close(window)

    def check_bridge_status(self, station, display):
        window = station.open_view(2, "PELQ Kiwi Outpost Bridge Status")
        display.screenshot(window, "bridge-status")
        text = display.copied_text(window, 20, 14).split("\n")
        self.assertEqual(
            text[0], f"Bridge: Listening on 127.0.0.1:{station.bridge_port} — 2 client(s)")
        self.assertRegex(text[1], r"^Last output: \d\d:\d\d:\d\d UTC — \d+ FT8 decodes sent$")
        display.close(window)

    def check_status_log(self, home, port, one, two):
        log = home.read_json("receiver-status-log.json")
        [session], [total] = log["Sessions"], log["Receivers"]
        decodes = len(one.rows) + len(two.rows)
        self.assertEqual(
            (session["Host"], session["Port"], session["FrequencyMhz"], session["Decodes"]),
            ("127.0.0.1", port, 14.074, decodes))
        start, end = (datetime.datetime.strptime(session[key], "%Y-%m-%dT%H:%M:%SZ")
                      for key in ("StartUtc", "EndUtc"))
        self.assertAlmostEqual((end - start).total_seconds(), session["DurationSeconds"], delta=1)
        self.assertGreaterEqual(session["DurationSeconds"], 30)
        self.assertLess(start, one.start)
        self.assertEqual(total, {
            "Host": "127.0.0.1", "Port": port, "Sessions": 1, "TotalDecodes": decodes,
            "TotalSeconds": session["DurationSeconds"], "LastConnectedUtc": session["EndUtc"],
            "LastFrequencyMhz": 14.074})

    def check_status_log_window(self, station, display, home, port, one, two):
        window = station.open_view(0, "PELQ Kiwi Outpost Status Log")
        display.screenshot(window, "status-log")
        text = display.copied_text(window, 100, 100).split("\n")
        [session] = home.read_json("receiver-status-log.json")["Sessions"]
        duration = f"00:{session['DurationSeconds'] // 60:02}:{session['DurationSeconds'] % 60:02}"
        decodes = len(one.rows) + len(two.rows)
        self.assertEqual(text, [
            "PELQ KIWI OUTPOST STATUS LOG",
            f"Data file: {home.data / 'receiver-status-log.json'}",
            "", "CURRENT CONNECTION", "Disconnected",
            "", "RECEIVER TOTALS",
            f"127.0.0.1:{port} | Sessions: 1 | Time: {duration} | Decodes: {decodes}"
            f" | Last UTC: {session['EndUtc']}",
            "", "RECENT COMPLETED SESSIONS",
            f"{session['StartUtc']} | 127.0.0.1:{port} | 14.074000 MHz | {duration}"
            f" | {decodes} decodes"])

    def check_good_receivers(self, home, port, one):
        [entry] = home.read_json("good-kiwi-receivers.json")
        self.assertEqual((entry["Host"], entry["Port"], entry["FrequencyMhz"]),
                         ("127.0.0.1", port, 14.074))
        # The count is that of the worker that finished first.
        self.assertIn(entry["LastDecodeCount"], range(1, len(one.rows) + 1))


if __name__ == "__main__":
    unittest.main()
