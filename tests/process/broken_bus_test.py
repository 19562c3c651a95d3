#!/usr/bin/env python3
"""The tool on a system bus that takes the connection and is no use: the option says so, and the next
one works."""

import contextlib
import os
import pathlib
import socket
import struct
import sys
import threading
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "support"))
sys.path.insert(0, str(pathlib.Path(__file__).parent))

import tap  # noqa: E402
from programs import (  # noqa: E402
    ASK_ALL,
    MAIN_MENU,
    MODULE_TYPES,
    SIM,
    SLOT_42,
    TOOL,
    Scratch,
    run,
)

QUICK_CLOCK = os.environ["QUICK_CLOCK"]

# How sd-bus tells the caller of a broken connection, whatever broke it.
GONE = "System.Error.ENOTCONN: Transport endpoint is not connected"


class Client:
    """The bus's end of a connection."""

    def __init__(self, connection):
        self.connection = connection
        self.received = connection.makefile("rb")

    def lines(self):
        """The lines of the authentication, up to the one that ends it."""
        self.received.read(1)  # a NUL comes first
        for line in self.received:
            yield line.removesuffix(b"\r\n").decode()
            if line == b"BEGIN\r\n":
                return

    def say(self, *lines):
        self.connection.sendall("".join(line + "\r\n" for line in lines).encode())

    def authenticate(self):
        answers = {
            "AUTH EXTERNAL": "DATA",
            "DATA": "OK 0123456789abcdef0123456789abcdef",
            "NEGOTIATE_UNIX_FD": "AGREE_UNIX_FD",
        }
        for line in self.lines():
            if line != "BEGIN":
                self.say(answers[line])

    def call(self):
        """Reads a call without arguments and returns its serial number."""
        head = self.received.read(16)
        serial, fields = struct.unpack("<8xII", head)
        self.received.read(aligned(fields))
        return serial

    def refuse(self, serial, error, text):
        """Answers a call with an error."""
        body = string(text)
        fields = b""
        for code, kind, value in (
            (5, "u", struct.pack("<I", serial)), (4, "s", string(error)), (8, "g", b"\1s\0"),
        ):
            fields += bytes(aligned(len(fields)) - len(fields))
            fields += struct.pack("BB2s", code, 1, kind.encode()) + value
        padding = bytes(aligned(len(fields)) - len(fields))
        head = struct.pack("<cBBBIII", b"l", 3, 0, 1, len(body), 1, len(fields))
        self.connection.sendall(head + fields + padding + body)

    def wait_for_the_end(self):
        while self.received.read(1):
            pass


def aligned(size):
    return (size + 7) // 8 * 8


def string(text):
    return struct.pack("<I", len(text)) + text.encode() + b"\0"


class Bus:
    """Serves every connection in the same way: serve(client), and then its end."""

    def __init__(self, test, path, serve):
        self.serve = serve
        self.socket = socket.socket(socket.AF_UNIX)
        test.addCleanup(self.socket.close)
        self.socket.bind(str(path))
        self.socket.listen()
        self.thread = threading.Thread(target=self.run)
        self.thread.start()
        test.addCleanup(self.thread.join)
        test.addCleanup(self.socket.shutdown, socket.SHUT_RDWR)

    def run(self):
        while True:
            try:
                connection, _ = self.socket.accept()
            except OSError:
                return  # shut down
            # The client may be the first to close.
            with connection, contextlib.suppress(ConnectionError):
                client = Client(connection)
                with client.received:
                    self.serve(client)


def info_failed(error):
    return f"PrintZoltInfoProperties: catch error: {error}\n\n"


def list_failed(error):
    return (
        f"failed to get managed objects err{error}\n"
        "PrintAllDevicesPath: GetManagedObjects() failed to get GetManagedObjects !.\n"
    )


class BrokenBus(unittest.TestCase):
    def setUp(self):
        self.scratch = Scratch()
        self.addCleanup(self.scratch.close)

    def on_bus(self, serve, *command, **options):
        """Runs a command on the demo board, whose system bus serves its clients in that way."""
        path = self.scratch.path / "bus"
        Bus(self, path, serve)
        done = run(
            SIM, "--", "env", f"DBUS_SYSTEM_BUS_ADDRESS=unix:path={path}", "SYSTEMD_BUS_TIMEOUT=1s",
            *command, **options,
        )
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def expect(self, serve, error, *before):
        """Both options of the bus fail with that error, and the registers still show."""
        self.assertEqual(
            self.on_bus(serve, *before, TOOL, input="11\n12\n3\n1\n42\n100\n"),
            MAIN_MENU + info_failed(error)
            + MAIN_MENU + MODULE_TYPES + list_failed(error)
            + MAIN_MENU + ASK_ALL + SLOT_42
            + MAIN_MENU,
        )

    def test_that_closes_at_once(self):
        # Who is first decides which call hears of it: the bus that closes, or the tool that greets.
        output = self.on_bus(lambda client: None, TOOL, "-o", "11")
        self.assertIn(
            output,
            (
                info_failed(f"sd_bus_message_new_method_call: {GONE}"),
                info_failed(f"sd_bus_call: {GONE}"),
            ),
        )

    def test_that_closes_when_it_is_greeted(self):
        self.expect(lambda client: client.received.read(1), f"sd_bus_call: {GONE}")

    def test_that_refuses_to_authenticate(self):
        def serve(client):
            for line in client.lines():
                if line != "BEGIN":
                    client.say("REJECTED DBUS_COOKIE_SHA1" if line == "AUTH EXTERNAL" else "ERROR")

        self.expect(
            serve,
            "sd_bus_call: org.freedesktop.DBus.Error.AccessDenied: Operation not permitted",
        )

    def test_that_never_authenticates(self):
        self.expect(
            Client.wait_for_the_end, f"sd_bus_call: {GONE}",
            "sh", "-c", 'LD_PRELOAD="$LD_PRELOAD:$1"; shift; exec "$@"', "sh", QUICK_CLOCK,
        )

    def test_that_answers_the_first_call_with_an_error(self):
        def serve(client):
            client.authenticate()
            client.refuse(
                client.call(), "org.freedesktop.DBus.Error.LimitsExceeded", "too many connections"
            )
            client.wait_for_the_end()

        # sd-bus keeps the number of that error, and neither its name nor its text.
        self.expect(
            serve,
            "sd_bus_call: org.freedesktop.DBus.Error.LimitsExceeded: No buffer space available",
        )

    def test_that_closes_in_place_of_an_answer(self):
        def serve(client):
            client.authenticate()
            client.call()

        self.expect(serve, f"sd_bus_call: {GONE}")

    def test_that_never_answers(self):
        def serve(client):
            client.authenticate()
            client.wait_for_the_end()

        self.expect(serve, f"sd_bus_call: {GONE}")


if __name__ == "__main__":
    tap.main()
