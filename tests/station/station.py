"""An operator, a receiver and a display for the built programs. Uses only temporary folders and the
build folder, which CTest passes in OUTPOST_BUILD."""

import base64
import json
import os
import re
import shutil
import socket
import subprocess
import tempfile
import threading
import time
from pathlib import Path

BUILD = Path(os.environ["OUTPOST_BUILD"])
PROGRAMS = BUILD / "bin"
# Making the synthetic band takes 10 s; all station tests share it.
CACHE = BUILD / "cache"
CAPTURE = BUILD / "capture"
SCREENSHOTS = BUILD / "screenshots"


def wait_for(condition, what, seconds=60):
    """Returns the condition's first true value. The limit allows for a busy machine."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        value = condition()
        if value:
            return value
        time.sleep(0.05)
    raise AssertionError(f"no {what} within {seconds} s")


def run_along(command):
    """The command, wrapped so that it ends with this test in any case."""
    return ["setpriv", "--pdeathsig", "KILL", *(str(part) for part in command)]


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as server:
        return server.getsockname()[1]


class Home:
    """A temporary home for the test, removed at the end."""

    def __init__(self):
        self._folder = tempfile.TemporaryDirectory(prefix="station-")
        self.path = Path(self._folder.name)
        self.data = self.path / "data" / "PELQ" / "KiwiOutpost"
        self.data.mkdir(parents=True)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._folder.cleanup()

    def environment(self, display):
        changes = {
            "HOME": self.path,
            "XDG_DATA_HOME": self.path / "data",
            "XDG_CONFIG_HOME": self.path / "config",
            "XDG_CACHE_HOME": CACHE,
            "XDG_RUNTIME_DIR": self.path,
            "PELQ_KIWI_STAGE_CAPTURE_DIR": self.path,
            "QT_FORCE_STDERR_LOGGING": "1",
            "TZ": "UTC",
        }
        kept = {name: value for name, value in os.environ.items()
                if name not in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "PELQ_JT9_PATH")}
        kept.update({name: str(value) for name, value in changes.items()})
        kept.update({"DISPLAY": display} if display else {"QT_QPA_PLATFORM": "offscreen"})
        return kept

    def write_profile(self, **fields):
        (self.data / "default-profile.json").write_text(json.dumps(fields))

    def read_json(self, name):
        return json.loads((self.data / name).read_text())


class Program:
    """A running program and its output so far, line by line. A Ctrl-C at the terminal does not reach
    it."""

    def __init__(self, command, environment, errors=subprocess.STDOUT):
        self._process = subprocess.Popen(
            run_along(command), env=environment, text=True, start_new_session=True,
            stdout=subprocess.PIPE, stderr=errors, stdin=subprocess.DEVNULL)
        self.lines = []
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def _read(self):
        for line in self._process.stdout:
            self.lines.append(line.rstrip("\n"))

    def __enter__(self):
        return self

    def __exit__(self, failure, *_):
        self.kill()
        if failure:
            print(*self.lines, sep="\n")

    @property
    def process_id(self):
        return self._process.pid

    def kill(self):
        self._process.kill()
        self._process.wait()
        self._reader.join()
        self._process.stdout.close()

    def send(self, number):
        self._process.send_signal(number)

    def exit_status(self, seconds):
        status = self._process.wait(seconds)
        self._reader.join()
        return status

    def wait_for_line(self, pattern, seconds=60):
        """Waits for the first line that contains the pattern; returns the match."""
        def find():
            return next(filter(None, (re.search(pattern, line) for line in list(self.lines))), None)
        return wait_for(find, f"line {pattern!r}", seconds)


class Receiver(Program):
    """The receiver simulator; its folder contains the periods as its clients heard them."""

    def __init__(self, home, *options, folder="heard"):
        self._saved = home.path / folder
        self._events = home.path / f"{folder}.log"
        command = [PROGRAMS / "kiwi-sim", "--port", "0", "--save", self._saved, "--log",
                   self._events, *options]
        super().__init__(command, home.environment(None))
        self.port = int(self.wait_for_line(r"^listening on 127\.0\.0\.1 port (\d+)", 60)[1])

    def events(self):
        """Its log: of each event the client's number, the path, the kind and a text."""
        found = [re.fullmatch(r"\d+ \S+ client (\d+) (\S+) (\S+) (.*)", line)
                 for line in self._events.read_text(encoding="utf-8").splitlines()]
        return [(int(match[1]), *match.groups()[1:]) for match in found if match]

    def heard_periods(self):
        """All recordings, by their start."""
        return sorted(self._saved.glob("*.wav"))

    def heard_period(self, number, seconds=120):
        """The recording of the first client's period, numbered from 0."""
        def find():
            return self.heard_periods()[number:number + 1]
        return wait_for(find, f"period {number}", seconds)[0]


def synthetic_band(home):
    """The recordings of the simulator's band in order, made first if they are not in the cache."""
    with Receiver(home):
        folder = max(CACHE.glob("kiwi-sim/band-*"), key=lambda path: path.stat().st_mtime)
    return sorted(folder.glob("period-*.wav"))


class Display:
    """A separate display with a window manager, a keyboard and a mouse."""

    def __init__(self, home):
        number, self._number_end = os.pipe()
        self._server = subprocess.Popen(
            run_along(["Xvfb", "-displayfd", self._number_end, "-screen", "0", "1024x768x24",
                       "-nolisten", "tcp"]),
            pass_fds=[self._number_end], stderr=subprocess.DEVNULL)
        os.close(self._number_end)
        with os.fdopen(number) as pipe:
            self.name = ":" + pipe.readline().strip()
        self._environment = home.environment(self.name)
        self._manager = subprocess.Popen(run_along(["openbox"]), env=self._environment,
                                         stderr=subprocess.DEVNULL)

    def __enter__(self):
        wait_for(lambda: "window id" in self.run("xprop", "-root", "_NET_SUPPORTING_WM_CHECK"),
                 "window manager")
        return self

    def __exit__(self, *_):
        for process in (self._manager, self._server):
            process.terminate()
            process.wait()

    def run(self, *command):
        return subprocess.run([str(part) for part in command], env=self._environment, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=60,
                              check=False).stdout

    def window(self, title, seconds=60):
        """The visible window with exactly this title, raised and with the keyboard focus."""
        def find():
            return self.run("xdotool", "search", "--onlyvisible", "--name", f"^{title}$").split()
        window = wait_for(find, f"window {title!r}", seconds)[0]
        self.run("xdotool", "windowactivate", "--sync", window)
        return window

    def close(self, window):
        """Closes a dialog with Escape."""
        self.run("xdotool", "windowactivate", "--sync", window)
        self.press("Escape")
        wait_for(lambda: "IsViewable" not in self.run("xwininfo", "-id", window), "closing")

    def press(self, *keys):
        self.run("xdotool", "key", "--delay", "40", *keys)

    def fill(self, text):
        """Replaces the contents of the focused field."""
        self.press("ctrl+a")
        self.write(text)

    def write(self, text):
        self.run("xdotool", "type", "--delay", "20", text)

    def click(self, window, x, y):
        self.run("xdotool", "mousemove", "--sync", "--window", window, x, y, "click", "1")

    def copied_text(self, window, x, y):
        """The text that a person gets by clicking there, selecting all and copying."""
        def clipboard():
            return self.run(BUILD / "tests" / "station_clipboard")

        def copy():
            self.click(window, x, y)
            self.press("ctrl+a", "ctrl+c")
            text = clipboard()
            return text if text != before else None
        before = clipboard()
        return wait_for(copy, "copied text")

    def screenshot(self, window, name):
        """Saves a picture for people to look at, once the window has been painted."""
        SCREENSHOTS.mkdir(exist_ok=True)
        picture = SCREENSHOTS / f"{name}.png"

        def taken():
            self.run("import", "-window", window, picture)
            return int(self.run("identify", "-format", "%k", picture)) > 16  # colours
        wait_for(taken, f"picture of {name}")


class Station(Program):
    """The program, operated by keyboard and mouse."""

    TITLE = r"PELQ Kiwi Outpost( \(FT8 Decode Complete\))?"

    def __init__(self, home, display):
        self.bridge_port = free_port()
        self._display = display
        home.write_profile(BridgePort=self.bridge_port)
        super().__init__([PROGRAMS / "kiwi-outpost"], home.environment(display.name))
        self.wait_for_line(f"Local WSJT bridge listening on 127.0.0.1:{self.bridge_port}.")
        self.window()

    def window(self):
        return self._display.window(self.TITLE)

    def log(self):
        """The program's log without the local time in front of each line."""
        return [line[9:] for line in list(self.lines) if re.match(r"\d\d:\d\d:\d\d ", line)]

    def wait_until_decoded(self, hhmmss):
        """Waits until all decoders of the period have removed their files; one has reported."""
        wait_for(lambda: not list(CAPTURE.glob(f"WORKER_*_{hhmmss}_*")), "end of decoding", 120)

    def kill(self):
        super().kill()
        for left in CAPTURE.glob("WORKER_*"):
            shutil.rmtree(left, ignore_errors=True)  # a decoder may still write

    def open_view(self, entry, title):
        """Chooses an entry (from 0) of Settings > View; returns the window that it opens."""
        self.window()
        self._display.press("alt+s", "Up", "Right", *["Down"] * entry, "Return")
        return self._display.window(title)

    def open_receiver_dialog(self):
        self.window()
        self._display.press("alt+s", "Return")
        return self._display.window("Kiwi Receiver")

    def apply_and_connect(self, port, band):
        """In the open receiver dialog: host, port, the first letters of the band, Enter."""
        self._display.fill("127.0.0.1")
        self._display.press("Tab")
        self._display.fill(port)
        self._display.press("Tab")
        self._display.write(band)
        self._display.press("Tab", "Return")
        self.wait_for_line("Native Kiwi connection requested")


class BridgeClient:
    """A local program that listens on the bridge."""

    READY = b"PELQBRIDGE2|READY\n"
    TAG = "PELQOUTPOST2|"

    def __init__(self, port):
        self._socket = socket.create_connection(("127.0.0.1", port))
        self._received = b""
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()
        wait_for(lambda: self._received.startswith(self.READY), "ready line")

    def _read(self):
        for chunk in iter(lambda: self._socket.recv(4096), b""):
            self._received += chunk

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._socket.shutdown(socket.SHUT_RDWR)
        self._reader.join()
        self._socket.close()

    def decodes(self):
        """The fields time, SNR, DT, Hz and message of each whole decode line, as they came."""
        lines = self._received[len(self.READY):].decode("ascii").split("\n")[:-1]
        assert all(line.startswith(self.TAG) for line in lines), lines
        return [tuple(base64.b64decode(line[len(self.TAG):], validate=True).decode().split("\t"))
                for line in lines]
