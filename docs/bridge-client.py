#!/usr/bin/env python3
"""Prints every decode that PELQ Kiwi Outpost broadcasts on this computer: bridge-client.py [PORT]"""
import base64
import socket
import sys
import time

PORT = int(sys.argv[1]) if len(sys.argv) > 1 else 27777


def print_decodes(bridge):
    for line in bridge:
        tag, _, payload = line.partition(b"|")
        if tag == b"PELQOUTPOST2" and payload.endswith(b"\n"):  # not cut off
            utc, snr, dt, hz, message = base64.b64decode(payload).decode("utf-8").split("\t")
            print(f"{utc} {snr:>3} dB {dt:>5} s {hz:>4} Hz  {message}", flush=True)


while True:
    try:
        with socket.create_connection(("127.0.0.1", PORT)) as connection:
            print_decodes(connection.makefile("rb"))
    except OSError as error:
        print(f"No bridge on port {PORT}: {error}", file=sys.stderr, flush=True)
    time.sleep(2)
