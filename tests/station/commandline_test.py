"""How the programs answer their command lines, without a display, and what their man pages say
about them."""

import json
import os
import re
import subprocess
import unittest
from pathlib import Path

from recording import write_silence
from station import PROGRAMS, Home, Program, Receiver, free_port

WINDOWS = ["kiwi-outpost", "kiwi-outpost-demo"]
# CTest says whether this build has the daemon.
NAMES = [*WINDOWS, "kiwi-sim"] + ["kiwi-outpostd"] * int(os.environ["OUTPOST_DAEMON"])
INSTALLED = [name for name in NAMES if name != "kiwi-outpost-demo"]
PAGES = Path(__file__).parents[2] / "packaging" / "linux"


def without_display():
    return {name: value for name, value in os.environ.items()
            if name not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM")}


def run(name, *arguments, **environment):
    return subprocess.run([PROGRAMS / name, *arguments], env={**without_display(), **environment},
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True, timeout=60,
                          check=False)


def page(name):
    return (PAGES / f"{name}.1").read_text()


class Answers(unittest.TestCase):
    def test_help(self):
        for name in NAMES:
            result = run(name, "--help")
            self.assertEqual((result.returncode, result.stderr), (0, ""))
            self.assertTrue(result.stdout.startswith(f"Usage: {name} [options]"), result.stdout)

    def test_version(self):
        for name in NAMES:
            result = run(name, "--version")
            self.assertEqual((result.returncode, result.stderr), (0, ""))
            self.assertRegex(result.stdout, rf"^{name} v\d+\.\d\d\n$")

    def test_unknown_option(self):
        for name in NAMES:
            result = run(name, "--nonsense")
            self.assertEqual((result.returncode, result.stdout), (2, ""))
            self.assertEqual(result.stderr, f"{name}: Unknown option 'nonsense'.\n")

    def test_argument_that_nobody_asked_for(self):
        for name in WINDOWS:
            result = run(name, "profile.json")
            self.assertEqual((result.returncode, result.stdout), (2, ""))
            self.assertEqual(result.stderr, f"{name}: Unexpected argument 'profile.json'.\n")

    def test_an_answer_that_nobody_reads(self):
        for name in NAMES:
            reader, writer = os.pipe()
            os.close(reader)
            with os.fdopen(writer) as unread:
                result = subprocess.run([PROGRAMS / name, "--nonsense"], env=without_display(),
                                        stderr=unread, timeout=60, check=False)
            self.assertEqual(result.returncode, 2)

    def test_options_of_qt(self):
        with Home() as home:
            for name in WINDOWS:
                result = run(name, "-platform", "nowhere", "--style", "fusion", "--geometry",
                             "400x300", XDG_RUNTIME_DIR=str(home.path))
                self.assertIn('Could not find the Qt platform plugin "nowhere"', result.stderr)

    def test_no_display(self):
        result = run("kiwi-outpost", "--mhz", "7.074", DISPLAY="")
        self.assertEqual((result.returncode, result.stdout), (1, ""))
        self.assertEqual(result.stderr,
                         "kiwi-outpost: There is no display. Start it in a desktop session.\n")

    def test_display_named_by_an_option_of_qt(self):
        with Home() as home:
            result = run("kiwi-outpost", "-display", ":4711", XDG_RUNTIME_DIR=str(home.path))
            self.assertIn("could not connect to display :4711", result.stderr)

    def test_number_of_periods_that_is_none(self):
        for number in ("0", "-1", "two"):
            result = run("kiwi-outpost-demo", f"--periods={number}")
            self.assertEqual((result.returncode, result.stdout), (2, ""))
            self.assertIn("--periods takes a whole number from 1 on", result.stderr)


class Profiles(unittest.TestCase):
    def test_one_that_cannot_be_used(self):
        with Home() as home:
            for content, reason in (
                    (None, "No such file or directory"),
                    ("{", "The profile is not valid JSON: unterminated object"),
                    ("[]", "The profile is not a JSON object.")):
                path = home.path / "Jürgen.json"
                if content:
                    path.write_text(content)
                result = run("kiwi-outpost", "--profile", path)
                self.assertEqual((result.returncode, result.stdout), (2, ""))
                self.assertEqual(result.stderr, f"kiwi-outpost: {path}: {reason}\n")

    def test_a_start_with_every_option(self):
        with Home() as home:
            silence = home.path / "silence.wav"
            write_silence(silence)
            with Receiver(home, silence) as receiver:
                bridge_port = free_port()
                profile = home.path / "Jürgen.json"
                profile.write_text(json.dumps({"Host": "127.0.0.1", "Port": receiver.port,
                                               "BridgePort": bridge_port}))
                before = profile.read_bytes()
                command = [PROGRAMS / "kiwi-outpost", "--profile", profile, "--mhz", "7.074",
                           "--connect"]
                with Program(command, home.environment(None)) as station:
                    station.wait_for_line(f"Local WSJT bridge listening on 127.0.0.1:{bridge_port}")
                    station.wait_for_line("Native Kiwi connection requested: "
                                          rf"127\.0\.0\.1:{receiver.port}, 7\.074000 MHz\.")
                    station.wait_for_line("REAL KIWI SND DATA VERIFIED")
            self.assertEqual(profile.read_bytes(), before)
            self.assertEqual([path.name for path in home.data.iterdir()
                              if path.name != "receiver-status-log.json"], [])


class ManPages(unittest.TestCase):
    """The man pages of the installed programs."""

    def test_options_are_those_of_the_help(self):
        for name in INSTALLED:
            told = re.findall(r"^  (?:-\w, )?--([\w-]+)", run(name, "--help").stdout, re.MULTILINE)
            explained = re.findall(r"^\.It (?:Fl \w , )?Fl -([\w-]+)", page(name), re.MULTILINE)
            self.assertGreater(len(told), 4)
            self.assertEqual(sorted(told), sorted(explained))

    def test_synopsis_has_every_option(self):
        for name in INSTALLED:
            synopsis = page(name).split(".Sh SYNOPSIS")[1].split(".Sh")[0]
            summed_up = re.findall(r"Fl -([\w-]+)", synopsis)
            explained = re.findall(r"^\.It (?:Fl \w , )?Fl -([\w-]+)", page(name), re.MULTILINE)
            self.assertEqual(set(summed_up), set(explained))

    def test_keys_of_the_configuration_are_those_of_the_example(self):
        example = (PAGES / "outpostd.toml").read_text()
        shown = re.findall(r"^#(\w+)(?= = )|^#(\[+\w+\]+)$", example, re.MULTILINE)
        section = page("kiwi-outpostd").split(".Sh CONFIGURATION")[1].split(".Sh")[0]
        explained = re.findall(r"^(?:\.It )?\.?Cm ([\w\[\]]+)", section, re.MULTILINE)
        self.assertEqual({key or table for key, table in shown}, set(explained))

    def test_system_is_the_version_of_the_program(self):
        for name in INSTALLED:
            version = run(name, "--version").stdout.split(" v")[1].strip()
            self.assertIn(f'\n.Os "PELQ Kiwi Outpost {version}"\n', page(name))


if __name__ == "__main__":
    unittest.main()
