# SPDX-License-Identifier: Apache-2.0
import contextlib
import json
import re
import socket
import subprocess
import time

import pytest

from client import SIMULATED, UNCONNECTED, Events, serving

HOST = b"Host: 127.0.0.1:PORT\r\n"
JSON = b"Content-Type: application/json\r\n"
TOKEN = "abcdefghijklmnopqrstuvwx"


@pytest.fixture(scope="module")
def server(tmp_path_factory):
    with serving(tmp_path_factory.mktemp("server")) as running:
        yield running


# Name, what is sent, and the statuses of the answers.
HOSTILE = {
    "no HTTP": (b"\x16\x03\x01\x02\x00\x01\x00\x01\xfc\r\n\r\n", [400]),
    "nothing": (b"", []),
    "half a line": (b"GET /api", []),
    "bad method": (b"GE\x01T / HTTP/1.1\r\n" + HOST + b"\r\n", [400]),
    "unknown method": (b"BREW /api/v1/cameras HTTP/1.1\r\n" + HOST + b"\r\n", [405]),
    "future version": (b"GET / HTTP/9.9\r\n" + HOST + b"\r\n", [505]),
    "old version": (b"GET / HTTP/1.0\r\n" + HOST + b"\r\n", [200]),
    "no host": (b"GET / HTTP/1.1\r\n\r\n", [400]),
    "two hosts": (b"GET / HTTP/1.1\r\n" + HOST + HOST + b"\r\n", [400]),
    "options": (b"OPTIONS / HTTP/1.1\r\n" + HOST + b"\r\n", [204]),
    "star": (b"OPTIONS * HTTP/1.1\r\n" + HOST + b"\r\n", [400]),
    "head": (b"HEAD / HTTP/1.1\r\n" + HOST + b"\r\n", [200]),
    "proxy": (b"GET http://example.org/ HTTP/1.1\r\n" + HOST + b"\r\n", [400]),
    "NUL": (b"GET /a\x00b HTTP/1.1\r\n" + HOST + b"\r\n", [400]),
    "encoded NUL": (b"GET /a%00b HTTP/1.1\r\n" + HOST + b"\r\n", [400]),
    "bad encoding": (b"GET /%zz HTTP/1.1\r\n" + HOST + b"\r\n", [400]),
    "not UTF-8": (b"GET /%ff HTTP/1.1\r\n" + HOST + b"\r\n", [400]),
    "folders": (b"GET /../../../etc/passwd HTTP/1.1\r\n" + HOST + b"\r\n", [404]),
    "encoded folders": (b"GET /..%2f..%2fetc%2fpasswd HTTP/1.1\r\n" + HOST + b"\r\n", [404]),
    "long target": (b"GET /" + b"a" * 9000 + b" HTTP/1.1\r\n" + HOST + b"\r\n", [431]),
    "many fields": (b"GET / HTTP/1.1\r\n" + HOST + b"A: b\r\n" * 3000 + b"\r\n", [431]),
    "injected field": (b"GET / HTTP/1.1\r\n" + HOST + b"A: b\rSet-Cookie: c\r\n\r\n", [400]),
    "pipelined": ((b"GET / HTTP/1.1\r\n" + HOST + b"\r\n") * 3, [200, 200, 200]),
    "two lengths": (b"POST /api/v1/session HTTP/1.1\r\n" + HOST + JSON + b"Content-Length: 2\r\nContent-Length: 3\r\n\r\n{}", [400]),
    "length and chunks": (b"POST /api/v1/session HTTP/1.1\r\n" + HOST + JSON
                          + b"Content-Length: 2\r\nTransfer-Encoding: chunked\r\n\r\n2\r\n{}\r\n0\r\n\r\n", [400]),
    "negative length": (b"POST /api/v1/session HTTP/1.1\r\n" + HOST + JSON + b"Content-Length: -1\r\n\r\n", [400]),
    "huge length": (b"POST /api/v1/session HTTP/1.1\r\n" + HOST + JSON + b"Content-Length: 99999999999\r\n\r\n", [413]),
    "large body": (b"POST /api/v1/session HTTP/1.1\r\n" + HOST + JSON + b"Content-Length: 65537\r\n\r\n" + b" " * 65537, [413]),
    "large chunks": (b"POST /api/v1/session HTTP/1.1\r\n" + HOST + JSON + b"Transfer-Encoding: chunked\r\n\r\n10001\r\n"
                     + b" " * 65537 + b"\r\n0\r\n\r\n", [413]),
    "chunks": (b"POST /api/v1/cameras/none/connect HTTP/1.1\r\n" + HOST + JSON
               + b"Transfer-Encoding: chunked\r\n\r\n1\r\n{\r\n1\r\n}\r\n0\r\n\r\n", [404]),
    "no JSON type": (b"POST /api/v1/session HTTP/1.1\r\n" + HOST + b"Content-Length: 2\r\n\r\n{}", [415]),
    "no JSON": (b"POST /api/v1/session HTTP/1.1\r\n" + HOST + JSON + b"Content-Length: 1\r\n\r\n{", [400]),
    "deep JSON": (b"POST /api/v1/session HTTP/1.1\r\n" + HOST + JSON + b"Content-Length: 60000\r\n\r\n" + b"[" * 60000, [400]),
    "no upgrade": (b"GET /api/v1/cameras/" + SIMULATED.encode() + b"/live HTTP/1.1\r\n" + HOST + b"\r\n", [426]),
    "bad parameter": (b"GET /api/v1/cameras/1/series?frames=1001 HTTP/1.1\r\n" + HOST + b"\r\n", [400]),
    "parameter twice": (b"GET /api/v1/cameras/1/series?frames=1&frames=2 HTTP/1.1\r\n" + HOST + b"\r\n", [400]),
}


@pytest.mark.parametrize("name", HOSTILE)
def test_answers_hostile_requests(server, name):
    request, statuses = HOSTILE[name]
    answer = server.raw(request.replace(b"PORT", b"%d" % server.port))
    found = [int(status) for status in re.findall(rb"HTTP/1.1 (\d+) ", answer)]
    assert found == statuses
    if found and found[-1] >= 400:
        problem = json.loads(answer.rpartition(b"\r\n\r\n")[2])
        assert problem["status"] == found[-1] and problem["error"] and problem["message"]
    assert name != "head" or answer.endswith(b"\r\n\r\n")
    assert name != "unknown method" or b"\r\nAllow: OPTIONS, GET\r\n" in answer


def test_ends_a_request_that_takes_too_long(server):
    with server.connect() as connection:
        begin = time.monotonic()
        with contextlib.suppress(ConnectionError):
            for _ in range(600):
                connection.sendall(b"G")
                connection.settimeout(0.1)
                with contextlib.suppress(socket.timeout):
                    if connection.recv(1) == b"":
                        break
            else:
                pytest.fail("the connection is still there")
        assert time.monotonic() - begin > 5


def test_tells_surplus_connections_that_there_are_too_many(server):
    with contextlib.ExitStack() as stack:
        connections = [stack.enter_context(server.connect()) for _ in range(70)]
        connections[-1].sendall(b"GET / HTTP/1.1\r\nHost: 127.0.0.1:%d\r\n\r\n" % server.port)
        assert b" 503 " in connections[-1].recv(100)


def test_describes_every_route(server):
    """Paths of the description have the methods that the server says they have."""
    document = server.api("GET", "/openapi.json")
    assert len(document["paths"]) > 20
    for path, item in document["paths"].items():
        status, fields, _ = server.ask("OPTIONS", path.replace("{camera}", "1").replace("{property}", "2"))
        methods = {method.upper() for method in item if method != "parameters"}
        assert (status, set(fields["Allow"].split(", ")) - {"OPTIONS", "HEAD"}) == (204, methods), path


def test_page_is_kept_until_it_changes(server):
    status, fields, page = server.ask("GET", "/")
    assert status == 200 and b"<!doctype html>" in page.lower()
    assert "default-src 'none'" in fields["Content-Security-Policy"] and fields["X-Content-Type-Options"] == "nosniff"
    assert server.ask("GET", "/", If_None_Match=fields["ETag"])[0] == 304
    assert server.ask("GET", "/", If_None_Match='"other"')[0] == 200


# Fields of the request, and the status with and without a token on the server.
PLACES = [
    ({}, 200),
    ({"Host": "localhost:PORT"}, 200),
    ({"Host": "[::1]:PORT"}, 200),
    ({"Host": "evil.example:PORT"}, 421),
    ({"Host": "127.0.0.1"}, 421),
    ({"Host": "127.0.0.1:PORT:1"}, 421),
    ({"Host": "cameras.example"}, 200),
    ({"Host": "cameras.example", "Origin": "https://cameras.example"}, 200),
    ({"Origin": "http://127.0.0.1:PORT"}, 200),
    ({"Origin": "http://localhost:PORT"}, 403),
    ({"Origin": "http://evil.example"}, 403),
    ({"Origin": "null"}, 403),
    ({"Sec-Fetch-Site": "cross-site"}, 403),
    ({"Sec-Fetch-Site": "same-origin"}, 200),
]
TOKENS = [
    ({}, 401),
    ({"Authorization": "Bearer " + TOKEN}, 200),
    ({"Authorization": "bearer " + TOKEN}, 200),
    ({"Authorization": "Bearer " + TOKEN[:-1]}, 401),
    ({"Authorization": "Bearer " + TOKEN + "x"}, 401),
    ({"Authorization": "Basic " + TOKEN}, 401),
    ({"Authorization": "Bearer"}, 401),
    ({"Cookie": "a=b; quill-token=" + TOKEN}, 200),
    ({"Cookie": "quill-token="}, 401),
    ({"Cookie": "xquill-token=" + TOKEN}, 401),
]


def test_lets_in_known_hosts_origins_and_tokens_only(tmp_path):
    (tmp_path / "token").write_text(TOKEN + "\n")
    with serving(tmp_path, "--token-file", str(tmp_path / "token"), "--allow-host", "cameras.example") as server:
        assert server.line.endswith(f"/#token={TOKEN}\n")
        for fields, expected in [({**place, "Authorization": "Bearer " + TOKEN}, status) for place, status in PLACES] + TOKENS:
            fields = {name: value.replace("PORT", str(server.port)) for name, value in fields.items()}
            assert server.ask("GET", "/api/v1/server", **fields)[0] == expected, fields
        assert server.ask("GET", "/")[0] == 200
        assert server.ask("POST", "/api/v1/session", json.dumps({"token": TOKEN[::-1]}))[0] == 401
        status, fields, _ = server.ask("POST", "/api/v1/session", json.dumps({"token": TOKEN}))
        assert status == 204 and {"HttpOnly", "SameSite=Strict"} <= set(fields["Set-Cookie"].split("; "))
        assert server.ask("GET", "/api/v1/server", Cookie=fields["Set-Cookie"].split(";")[0])[0] == 200


def test_view_only_refuses_what_changes_a_camera(tmp_path):
    with serving(tmp_path, "--view-only") as server:
        assert server.api("GET", "/server")["viewOnly"] is True
        assert server.api("GET", "/cameras")["cameras"]
        changes = [(method.upper(), path) for path, item in server.api("GET", "/openapi.json")["paths"].items()
                   for method in item if method in ("put", "post") and not path.endswith(("/session", "/compare"))]
        assert len(changes) > 8
        for method, path in changes:
            path = path.replace("{camera}", SIMULATED).replace("{property}", "Gain")
            status, _, problem = server.ask(method, path, "{}")
            assert (status, problem["error"]) == (403, "ViewOnly"), path


@pytest.mark.skipif(subprocess.run(["unshare", "-rn", "true"], stderr=subprocess.DEVNULL).returncode != 0,
                    reason="needs a network of its own")
def test_asks_for_a_token_beyond_loopback(tmp_path):
    with serving(tmp_path, "--listen", "0.0.0.0", before=["unshare", "-rn"]) as server:
        address, _, token = server.line.strip().partition("#token=")
        assert address.startswith("Quill is at http://127.0.0.1:")
        assert len(token) == 22


def test_reads_and_writes_properties(server):
    server.api("POST", f"/cameras/{SIMULATED}/connect", {})
    events = Events(server)
    assert [events.next()[0], events.next()[0]] == ["hello", "cameras"]
    written = server.api("PUT", f"/cameras/{SIMULATED}/properties/Gain", {"value": 3.5})
    assert float(written["property"]["value"]) == 3.5
    events.next("property", lambda data: data["camera"] == SIMULATED and float(data["property"]["value"]) == 3.5)
    events.close()
    assert server.api("PUT", f"/cameras/{SIMULATED}/properties/Gain", {"value": []}, status=400)["error"] == "BadBody"
    assert server.api("GET", f"/cameras/{SIMULATED}/properties/None", status=404)["error"]


def test_tells_of_arrivals_and_departures(server):
    events = Events(server)
    everything = server.cameras.read_text()

    def is_listed(data):
        return UNCONNECTED in [camera["serialNumber"] for camera in data["cameras"]]

    events.next("cameras", is_listed)
    document = json.loads(everything)
    document["Cameras"] = [one for one in document["Cameras"] if one["Identification"]["Serial Number"] != UNCONNECTED]
    server.cameras.write_text(json.dumps(document))
    events.next("cameras", lambda data: not is_listed(data))
    server.cameras.write_text(everything)
    events.next("cameras", is_listed)
    events.close()
