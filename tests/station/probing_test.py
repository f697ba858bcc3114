"""Endpoints that fail in different ways, and one that works."""

import re
import unittest

from station import BridgeClient, Display, Home, Receiver, Station, wait_for

COMMANDS = [
    "SET auth t=kiwi p=",
    "SET ident_user=PELQ_Kiwi_Outpost",
    "SET keepalive",
    "SET AR OK in=12000 out=12000",
    "SET compression=1",
    "SET mod=usb low_cut=300 high_cut=3000 freq=7074.000",
    "SET agc=1 hang=0 thresh=-100 slope=6 decay=1000 manGain=50",
]


def trying(port, endpoint):
    return [f"Kiwi WebSocket probe trying: ws://127.0.0.1:{port}/kiwi/{endpoint}/SND"]


def opened(endpoint):
    return [f"Kiwi WebSocket open: /kiwi/{endpoint}/SND. Waiting for real SND data.",
            *(f"Kiwi WS sent: {command}" for command in COMMANDS)]


def given_up(endpoint):
    return [f"No verified SND data at /kiwi/{endpoint}/SND; trying next endpoint."]


class Probing(unittest.TestCase):
    def test_fourth_endpoint_delivers_after_three_failed_in_different_ways(self):
        failures = [f"--endpoint={number}={fault}"
                    for number, fault in enumerate(["no-answer", "monitor", "http-404"])]
        with Home() as home, Receiver(home, *failures) as receiver, Display(home) as display, \
                Station(home, display) as station, \
                BridgeClient(station.bridge_port) as client:
            dialog = station.open_receiver_dialog()
            station.apply_and_connect(receiver.port, "40")
            verified = "REAL KIWI SND DATA VERIFIED at /kiwi/3/SND."
            station.wait_for_line(re.escape(verified), 60)
            self.check_steps(station.log(), receiver.port, verified)
            self.check_refusals(station.log())

            wait_for(client.decodes, "decode at the bridge", 60)
            station.wait_for_line("Good receiver recorded: ")
            self.check_good_receiver(home, receiver.port)
            display.screenshot(dialog, "receiver-dialog")
            display.close(dialog)
            display.screenshot(display.window(r"PELQ Kiwi Outpost \(FT8 Decode Complete\)"),
                               "main-window-connected")

    def check_steps(self, log, port, last):
        """The log from the request to the verified link, without lines about single frames."""
        first = next(i for i, line in enumerate(log) if line.startswith("Native Kiwi connection"))
        steps = [line for line in log[first:log.index(last) + 1]
                 if not line.startswith(("RX ", "Kiwi WebSocket error at "))]
        self.assertEqual(steps, [
            f"Native Kiwi connection requested: 127.0.0.1:{port}, 7.074000 MHz.",
            *trying(port, 0), *given_up(0),
            *trying(port, 1), *opened(1), "Receiver says: monitor", *given_up(1),
            *trying(port, 2),
            *trying(port, 3), *opened(3), last])

    def check_refusals(self, log):
        refusals = [line for line in log if "Kiwi WebSocket error at" in line]
        self.assertTrue(refusals)
        for line in refusals:
            self.assertRegex(line, "^Kiwi WebSocket error at /kiwi/2/SND: .*404 ")

    def check_good_receiver(self, home, port):
        [entry] = home.read_json("good-kiwi-receivers.json")
        self.assertEqual((entry["Host"], entry["Port"], entry["FrequencyMhz"]),
                         ("127.0.0.1", port, 7.074))
        self.assertGreater(entry["LastDecodeCount"], 0)


if __name__ == "__main__":
    unittest.main()
