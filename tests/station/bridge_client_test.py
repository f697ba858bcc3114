"""The sample client in the documents, with a bridge that is stopped and started."""
import pathlib
import socket
import subprocess
import sys
import unittest

DOCS = pathlib.Path(__file__).resolve().parents[2] / "docs"
CLIENT = DOCS / "bridge-client.py"

READY = b"PELQBRIDGE2|READY\n"
DECODE = b"PELQOUTPOST2|MTAxNTMwCS0xMgkwLjMJMTIzNAlDUSBLMUFCQyBGTjQy\n"
PRINTED = "101530 -12 dB   0.3 s 1234 Hz  CQ K1ABC FN42\n"


class BridgeClient(unittest.TestCase):
    def setUp(self):
        self.bridge = socket.socket()
        self.bridge.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        self.bridge.bind(("127.0.0.1", 0))  # refuses connections until it listens
        self.client = subprocess.Popen(
            [sys.executable, CLIENT, str(self.bridge.getsockname()[1])],
            stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)

    def tearDown(self):
        self.client.kill()
        self.client.communicate()
        self.bridge.close()

    def serve(self, *lines):
        self.bridge.settimeout(60)
        connection, _ = self.bridge.accept()
        with connection:
            connection.sendall(b"".join(lines))

    def test_waits_for_a_bridge_that_refuses_and_for_one_that_has_gone(self):
        self.assertIn("refused", self.client.stderr.readline())
        self.bridge.listen()
        self.serve(READY, DECODE, DECODE[:30])
        self.serve(READY, b"NEWTAG|x\n", DECODE)
        for _ in range(2):
            self.assertEqual(self.client.stdout.readline(), PRINTED)

    def test_is_the_one_that_the_page_shows(self):
        code = CLIENT.read_text(encoding="utf-8").split('"""\n', 1)[1]
        page = (DOCS / "bridge-protocol.md").read_text(encoding="utf-8")
        self.assertIn(f"```python\n{code}```\n", page)


if __name__ == "__main__":
    unittest.main()
