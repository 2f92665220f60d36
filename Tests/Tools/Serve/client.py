# SPDX-License-Identifier: Apache-2.0
"""A running server, and clients of it that say exactly what a test wants."""

import base64
import contextlib
import http.client
import json
import os
import pathlib
import re
import signal
import socket
import struct
import subprocess
import time
import urllib.parse

PATIENCE = 60  # seconds; only a failure takes so long
CAMERAS = pathlib.Path(__file__).parent.parent / "Cameras.json"
SIMULATED = "90001"
UNCONNECTED = "90002"


class Server:
    """`quill serve` on a free port of loopback, with cameras described in a file and a device in software."""

    def __init__(self, folder, *options, device="", before=(), port=0):
        self.cameras = folder / "cameras.json"
        self.cameras.write_text(CAMERAS.read_text())
        environment = {**os.environ, "QUILL_TEST_CAMERA_LIST": str(self.cameras), "QUILL_TEST_DEVICE": device}
        self.process = subprocess.Popen(
            [*before, os.environ["QUILL_UNDER_TEST"], "serve", "--port", str(port), *options],
            env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.line = self.process.stdout.readline()
        self.port = int(re.match(r"Quill is at http://\S+:(\d+)/", self.line).group(1))

    def end(self, number=signal.SIGTERM):
        """Asks it to end. Returns the exit code, standard error, and the seconds it took."""
        begin = time.monotonic()
        self.process.send_signal(number)
        try:
            errors = self.process.communicate(timeout=PATIENCE)[1]
        finally:
            self.process.kill()
        return self.process.returncode, errors, time.monotonic() - begin

    def connect(self):
        return socket.create_connection(("127.0.0.1", self.port), PATIENCE)

    def raw(self, request):
        """Sends bytes, and returns all that comes until the server closes."""
        with self.connect() as connection:
            connection.sendall(request)
            connection.shutdown(socket.SHUT_WR)
            return b"".join(iter(lambda: connection.recv(65536), b""))

    def ask(self, method, target, body=None, **fields):
        """Returns the status, the fields, and the body, parsed if it is JSON."""
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=PATIENCE)
        fields = {name.replace("_", "-"): value for name, value in fields.items()}
        if body is not None:
            fields.setdefault("Content-Type", "application/json")
        connection.request(method, target, body, fields)
        answer = connection.getresponse()
        content = answer.read()
        connection.close()
        isJson = "json" in answer.getheader("Content-Type", "")
        return answer.status, answer.headers, json.loads(content) if isJson else content

    def api(self, method, path, body=None, status=200):
        answer = self.ask(method, "/api/v1" + path, None if body is None else json.dumps(body))
        assert answer[0] == status, answer
        return answer[2]


@contextlib.contextmanager
def serving(folder, *options, **more):
    server = Server(folder, *options, **more)
    try:
        yield server
    finally:
        code, errors, _ = server.end()
    assert (code, errors) == (130, "")


def wait_until(condition):
    end = time.monotonic() + PATIENCE
    while not (result := condition()):
        assert time.monotonic() < end
        time.sleep(0.01)
    return result


class Events:
    """A listener to the server's events."""

    def __init__(self, server):
        self.connection = server.connect()
        self.connection.sendall(b"GET /api/v1/events HTTP/1.1\r\nHost: 127.0.0.1:%d\r\n\r\n" % server.port)
        self.file = self.connection.makefile("rb")
        while self.file.readline().strip():
            pass

    def next(self, kind=None, condition=lambda data: True):
        """Returns the next event of a kind that fulfils a condition: its kind, and its data."""
        end = time.monotonic() + PATIENCE
        while time.monotonic() < end:
            fields = {}
            while line := self.file.readline().decode().rstrip("\n"):
                name, _, value = line.partition(": ")
                fields[name] = value
            assert fields, "the server has closed"
            if "event" in fields:
                data = json.loads(fields["data"])
                if kind in (None, fields["event"]) and condition(data):
                    return fields["event"], data
        raise AssertionError(f"no such event: {kind}")

    def close(self):
        self.file.close()
        self.connection.close()


class Viewer:
    """A viewer of live pictures, by a WebSocket."""

    def __init__(self, server, camera, receive_buffer=None):
        self.connection = socket.socket()
        self.connection.settimeout(PATIENCE)
        if receive_buffer:
            self.connection.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, receive_buffer)
        self.connection.connect(("127.0.0.1", server.port))
        key = base64.b64encode(bytes(16)).decode()
        self.connection.sendall(
            f"GET /api/v1/cameras/{urllib.parse.quote(camera)}/live HTTP/1.1\r\nHost: 127.0.0.1:{server.port}\r\n"
            f"Upgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: 13\r\nSec-WebSocket-Key: {key}\r\n\r\n"
            .encode())
        self.file = self.connection.makefile("rb")
        self.status = int(self.file.readline().split()[1])
        while self.file.readline().strip():
            pass

    def say(self, message, opcode=1):
        data = message if isinstance(message, bytes) else json.dumps(message).encode()
        length = bytes([0x80 | len(data)]) if len(data) < 126 else b"\xfe" + struct.pack(">H", len(data))
        self.connection.sendall(bytes([0x80 | opcode]) + length + bytes(4) + data)  # masked by zeros

    def hear(self):
        """Returns the next message: (description, JPEG bytes), a dictionary, or the code of the close."""
        message = b""
        while True:
            first, length = self.file.read(2)
            if length >= 126:
                length = int.from_bytes(self.file.read(2 if length == 126 else 8), "big")
            message += self.file.read(length)
            if first & 15 == 8:
                return int.from_bytes(message[:2], "big")
            if first & 15 == 9:
                self.say(message, 10)
                message = b""
            elif first & 0x80:
                break
        if message[:4] != b"QLP1":
            return json.loads(message)
        size = int.from_bytes(message[4:8], "little")
        return json.loads(message[8:8 + size]), message[8 + size:]

    def hear_picture(self):
        while True:
            message = self.hear()
            assert not isinstance(message, int), f"closed with {message}"
            if isinstance(message, tuple):
                return message

    def close(self):
        self.file.close()
        self.connection.close()
