#!/usr/bin/env python3
"""Prints every decode that PELQ Kiwi Outpost broadcasts on this computer."""
import base64
import socket

with socket.create_connection(("127.0.0.1", 27777)) as bridge:
    for line in bridge.makefile("rb"):
        tag, _, payload = line.rstrip(b"\n").partition(b"|")
        if tag == b"PELQOUTPOST2":
            time, snr, dt, hz, message = base64.b64decode(payload).decode("utf-8").split("\t")
            print(f"{time} {snr:>3} dB {dt:>5} s {hz:>4} Hz  {message}", flush=True)
