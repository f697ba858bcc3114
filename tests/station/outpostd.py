"""The daemon as people run it, and servers of the UDP protocol that take its decodes."""

import itertools
import json
import re
import socket
import struct
import threading
from typing import NamedTuple

from station import PROGRAMS, Program, free_port, wait_for


class ReceiverTable(NamedTuple):
    """A [[receiver]] of the configuration; `more` are further lines."""

    name: str
    port: int
    mhz: float
    more: str = ""

    def text(self):
        return (f'[[receiver]]\nname = "{self.name}"\nhost = "127.0.0.1"\nport = {self.port}\n'
                f"mhz = {self.mhz}\n{self.more}\n")


def configuration(receivers, servers=(), all_txt=None, jt9=None):
    """The text of a configuration."""
    text = f'[decoder]\njt9 = "{jt9}"\n' if jt9 else ""
    text += "".join(receiver.text() for receiver in receivers)
    if servers:
        targets = ", ".join(f'"127.0.0.1:{port}"' for port in servers)
        text += f"[[wsjtx]]\ntargets = [ {targets} ]\n"
    return text + (f'[all_txt]\nfolder = "{all_txt}"\n' if all_txt else "")


class Outpostd(Program):
    """The daemon: `lines` are its standard output, its log goes to a file."""

    def __init__(self, home, *options):
        self._log = home.path / f"daemon-{free_port()}.log"
        with open(self._log, "w", encoding="utf-8") as log:
            super().__init__([PROGRAMS / "kiwi-outpostd", *options], home.environment(None),
                             errors=log)

    def __exit__(self, failure, *arguments):
        super().__exit__(failure, *arguments)
        if failure:
            print(*self.log(), sep="\n")

    def log(self):
        return self._log.read_text(encoding="utf-8").splitlines()

    def wait_for_log(self, pattern, count=1, seconds=60):
        """Waits until this many lines of the log contain the pattern; returns them."""
        def find():
            found = [line for line in self.log() if re.search(pattern, line)]
            return found if len(found) >= count else None
        return wait_for(find, f"log line {pattern!r}", seconds)

    def decodes(self):
        """What it printed with --json."""
        return [json.loads(line) for line in list(self.lines)]

    def end(self, number, seconds=60):
        self.send(number)
        return self.exit_status(seconds)


class UdpDecode(NamedTuple):
    """A Decode message; the time is that of the day, in ms."""

    sender: str
    new: bool
    time: int
    snr: int
    dt: float
    hz: int
    message: str


class UdpServer:
    """Takes the messages of senders and never answers."""

    HEARTBEAT, STATUS, DECODE, CLEAR, CLOSE = 0, 1, 2, 3, 6
    MAGIC = 0xadbccbda

    def __init__(self):
        self._socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self._socket.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 1 << 20)
        self._socket.bind(("127.0.0.1", 0))
        self.port = self._socket.getsockname()[1]
        self.messages = []  # type, sender, the rest
        self._reader = threading.Thread(target=self._read, daemon=True)
        self._reader.start()

    def _read(self):
        for datagram in iter(lambda: self._socket.recv(4096), b""):
            magic, _, kind = struct.unpack_from(">III", datagram)
            assert magic == self.MAGIC, datagram
            sender, rest = self._text(datagram, 12)
            self.messages.append((kind, sender, datagram[rest:]))

    @staticmethod
    def _text(data, at):
        """The text at this place and where it ends."""
        size, = struct.unpack_from(">I", data, at)
        end = at + 4 + size
        return data[at + 4:end].decode(), end

    def __enter__(self):
        return self

    def __exit__(self, *_):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as ending:
            ending.sendto(b"", ("127.0.0.1", self.port))
        self._reader.join()
        self._socket.close()

    def types_of(self, sender):
        return [kind for kind, name, _ in list(self.messages) if name == sender]

    def dial_at_first_decode(self, sender):
        """The dial frequency in Hz of the last Status message before the first decode."""
        before = itertools.takewhile(lambda message: message[0] != self.DECODE,
                                     [message for message in self.messages if message[1] == sender])
        return [struct.unpack_from(">Q", rest)[0] for kind, _, rest in before
                if kind == self.STATUS][-1]

    def decodes(self):
        return [self._decode(sender, rest) for kind, sender, rest in list(self.messages)
                if kind == self.DECODE]

    def _decode(self, sender, rest):
        new, time, snr, dt, hz = struct.unpack_from(">?IidI", rest)
        _, end = self._text(rest, struct.calcsize(">?IidI"))
        return UdpDecode(sender, new, time, snr, dt, hz, self._text(rest, end)[0])


class UdpDaemon(Program):
    """Debian's server for the console; the numbers of a decode stand before or behind its text."""

    def __init__(self, home, port):
        super().__init__(["udp_daemon", "--port", port], home.environment(None))

    def decoded(self):
        """Sender and message of each decode."""
        found = [re.match(r"(PELQ .*)\(.*\): Decoded (.*)", line) for line in list(self.lines)]
        return [(match[1], match[2]) for match in found if match]

    def numbers(self):
        """Of each decode: new, time, SNR, DT, audio frequency."""
        pattern = r'new: (\w+) t: QTime\("([\d:]+)\.000"\) snr: (\S+) Dt: (\S+) Df: (\d+) mode: "~"'
        found = [re.search(pattern, line) for line in list(self.lines)]
        return [match.groups() for match in found if match]

    def wait_for_decodes(self, count):
        wait_for(lambda: len(self.decoded()) >= count and len(self.numbers()) >= count,
                 f"{count} decodes")
