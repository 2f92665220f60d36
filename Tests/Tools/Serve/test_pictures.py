# SPDX-License-Identifier: Apache-2.0
import io
import signal
import tarfile
import threading
import time

import pytest

from client import PATIENCE, Events, Server, Viewer, serving, wait_until


def start(server):
    """Starts the stream of the only device in software, and returns its serial number."""
    camera = next(one["serialNumber"] for one in server.api("GET", "/cameras")["cameras"] if len(one["serialNumber"]) > 5)
    server.api("POST", f"/cameras/{camera}/connect", {})
    server.api("POST", f"/cameras/{camera}/stream/start", {})
    return camera


@pytest.fixture(scope="module")
def server(tmp_path_factory):
    with serving(tmp_path_factory.mktemp("server"), device="small") as running:
        running.camera = start(running)
        yield running


def test_sends_a_picture_for_each_credit_and_keeps_held_frames(server):
    viewer = Viewer(server, server.camera)
    assert viewer.status == 101
    viewer.say({"type": "hold"})
    while (answer := viewer.hear()).get("type") == "state":
        pass
    assert answer == {"type": "held", "frame": 0}  # no picture came before it was asked for
    frames = []
    for credits in (1, 1, 2, 0):
        if credits:
            viewer.say({"type": "ready", "credits": credits})
        description, jpeg = viewer.hear_picture()
        assert (description["width"], description["height"]) == (64, 48)
        assert description["sent"] > description["arrival"] > 1e12 and jpeg[:2] == b"\xff\xd8" and jpeg[-2:] == b"\xff\xd9"
        frames.append(description["frame"])
    assert sorted(set(frames)) == frames
    viewer.say({"type": "view", "scale": 4, "quality": 50})
    viewer.say({"type": "ready"})
    assert viewer.hear_picture()[0]["pictureWidth"] == 16
    viewer.say({"type": "hold"})
    held = viewer.hear()["frame"]
    pixels = server.api("GET", f"/cameras/{server.camera}/pixels?x=3&y=5&width=2&height=3&frame={held}")
    assert pixels["frame"] == held and [len(row) for row in pixels["raw"]] == [2, 2, 2]
    viewer.close()


@pytest.mark.parametrize("message, code", [
    ({"type": "view", "scale": 3}, 1008), ({"type": "ready", "credits": 9}, 1008), (b"{", 1008), (b" " * 5000, 1009)],
                         ids=["scale", "credits", "no JSON", "long"])
def test_ends_viewers_that_say_nonsense(server, message, code):
    viewer = Viewer(server, server.camera)
    viewer.say(message)
    while isinstance(answer := viewer.hear(), dict):
        pass
    assert answer == code
    viewer.close()


def test_slow_viewers_do_not_slow_others(server):
    slow = [Viewer(server, server.camera, receive_buffer=2048) for _ in range(2)]
    fast = [Viewer(server, server.camera) for _ in range(8)]
    for viewer in slow:  # they ask, and never read
        for _ in range(100):
            viewer.say({"type": "ready", "credits": 2})
    latest = [0] * len(fast)

    def view(index):
        for _ in range(30):
            fast[index].say({"type": "ready"})
            latest[index] = fast[index].hear_picture()[0]["frame"]

    threads = [threading.Thread(target=view, args=(index,), daemon=True) for index in range(len(fast))]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join(PATIENCE)
    assert all(latest), latest
    for viewer in slow + fast:
        viewer.close()


def closed(schema):
    """A schema whose objects have no properties but those described."""
    if isinstance(schema, list):
        return [closed(one) for one in schema]
    if not isinstance(schema, dict):
        return schema
    schema = {key: closed(value) for key, value in schema.items()}
    return {"additionalProperties": False, **schema} if isinstance(schema.get("properties"), dict) else schema


def test_answers_as_described(server):
    """What requests about a streaming camera answer has exactly the described form."""
    jsonschema = pytest.importorskip("jsonschema")
    document = closed(server.api("GET", "/openapi.json"))
    answered = 0
    for path, item in document["paths"].items():
        content = item.get("get", {}).get("responses", {}).get("200", {}).get("content", {}).get("application/json")
        if content:
            status, _, answer = server.ask("GET", path.replace("{camera}", server.camera).replace("{property}", "Contrast"))
            if status == 200:
                jsonschema.validate(answer, {**content["schema"], "components": document["components"]})
                answered += 1
    assert answered >= 9


def test_sends_pictures_as_a_stream_without_scripts(server):
    with server.connect() as connection:
        connection.sendall(f"GET /api/v1/cameras/{server.camera}/live.mjpeg?scale=2 HTTP/1.0\r\n"
                           f"Host: 127.0.0.1:{server.port}\r\n\r\n".encode())
        received = b""
        end = time.monotonic() + PATIENCE
        while received.count(b"\xff\xd9\r\n--quill-picture\r\nContent-Type: image/jpeg\r\n") < 3:
            received += (part := connection.recv(65536))
            assert part and time.monotonic() < end
    assert b"multipart/x-mixed-replace; boundary=quill-picture" in received


def test_sends_a_series_while_it_is_recorded(server):
    status, fields, archive = server.ask("GET", f"/api/v1/cameras/{server.camera}/series?frames=3&format=png")
    assert (status, fields["Transfer-Encoding"]) == (200, "chunked")
    with tarfile.open(fileobj=io.BytesIO(archive)) as files:
        assert len(files.getmembers()) == 3
        assert all(files.extractfile(file).read(4) == b"\x89PNG" for file in files)
    with server.connect() as connection:  # leaves early
        connection.sendall(f"GET /api/v1/cameras/{server.camera}/series?frames=1000&format=tiff HTTP/1.1\r\n"
                           f"Host: 127.0.0.1:{server.port}\r\n\r\n".encode())
        assert connection.recv(12) == b"HTTP/1.1 200"
    for _ in range(8):  # as many as may be under way, had those not ended
        assert server.ask("GET", f"/api/v1/cameras/{server.camera}/capture")[0] == 200


def test_ends_at_once_with_viewers_open(tmp_path):
    server = Server(tmp_path, device="small")
    camera = start(server)
    viewers = [Viewer(server, camera) for _ in range(3)]
    for viewer in viewers:
        viewer.say({"type": "ready"})
        viewer.hear_picture()
    events = Events(server)
    events.next("cameras")
    idle = server.connect()
    code, errors, seconds = server.end(signal.SIGINT)
    assert (code, errors) == (130, "")
    assert seconds < 10
    for each in [*viewers, events]:
        each.close()
    idle.close()


def test_lives_on_when_a_viewed_camera_is_unplugged(tmp_path):
    with serving(tmp_path, device="leaving later") as server:
        events = Events(server)
        camera = start(server)
        viewer = Viewer(server, camera)
        pictures = 0
        while True:
            viewer.say({"type": "ready"})
            message = viewer.hear()
            if isinstance(message, tuple):
                pictures += 1
            elif message["type"] == "state" and message["status"] != "Running":
                break
        assert pictures > 0 and message["text"]
        events.next("cameras", lambda data: camera not in [one["serialNumber"] for one in data["cameras"]])
        wait_until(lambda: server.ask("GET", f"/api/v1/cameras/{camera}")[0] == 404)
        assert server.ask("GET", "/api/v1/cameras")[0] == 200
        viewer.close()
        events.close()
