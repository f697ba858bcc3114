"""The demonstration of the daemon as ./outpost demo-daemon runs it."""

import os
import re
import signal
import subprocess
import sys
import unittest
from pathlib import Path

from station import Home, Program

DEMO = [sys.executable, "-B", Path(__file__).with_name("daemon_demo.py")]
LONGEST_SECONDS = 200


def family_of(process_id):
    """The processes that it started and they started."""
    children = subprocess.run(["pgrep", "-P", str(process_id)], text=True, check=False,
                              stdout=subprocess.PIPE).stdout.split()
    return children + [one for child in children for one in family_of(child)]


def running(process_ids):
    return [one for one in process_ids if os.path.exists(f"/proc/{one}")]


class DaemonDemo(unittest.TestCase):
    def demo(self, *options):
        home = Home()
        self.addCleanup(home.__exit__)
        environment = dict(os.environ, TMPDIR=str(home.path))
        return home, Program([*DEMO, *options], environment)

    def test_decodes_of_four_receivers_scroll_by(self):
        _, demo = self.demo("--periods", "1")
        with demo:
            self.assertEqual(demo.exit_status(LONGEST_SECONDS), 0, demo.lines)
            sums, ended = demo.lines[-2:]
            counts = [int(count) for count in re.findall(r"m (\d+)", sums)]
            shown = [line for line in demo.lines if re.match(r"PELQ Kiwi Outpost \d+m  \d\d:", line)]
            self.assertEqual(len(counts), 4)
            self.assertGreater(min(counts), 15)
            self.assertEqual(len(shown), sum(counts))
            self.assertEqual(ended, "kiwi-outpostd ended with exit code 0.")

    def test_ctrl_c_leaves_nothing(self):
        home, demo = self.demo()
        with demo:
            for band in ("40m", "30m", "20m", "17m"):
                demo.wait_for_line(f"{band}: receiving")
            family = family_of(demo.process_id)
            self.assertGreaterEqual(len(family), 6)
            demo.send(signal.SIGINT)
            self.assertEqual(demo.exit_status(60), 0)
            self.assertEqual(demo.lines[-1], "kiwi-outpostd ended with exit code 0.")
            self.assertEqual(running(family), [])
            self.assertEqual([path.name for path in home.path.iterdir()], ["data"])


if __name__ == "__main__":
    unittest.main()
