# SPDX-License-Identifier: Apache-2.0
"""Cameras that come and go."""

from __future__ import annotations

import asyncio
import contextlib
import os
import queue as queues
import threading
import weakref
from typing import AsyncIterator, Callable, Dict, Iterator, List, Optional

from . import _quillcamera as native
from ._errors import CameraGoneError
from ._types import Event

ConnectCallback = Callable[[], object]
DisconnectCallback = Callable[[str, str], object]


class Events:
    """Arrivals and departures from now on, for a loop: made by events(). Ends with the workspace, or by close()."""

    def __init__(self) -> None:
        self._lock = threading.Lock()  # guards what the list's two threads use
        self._queue: queues.SimpleQueue[Optional[Event]] = queues.SimpleQueue()
        self._wake: Callable[[], object] = lambda: None  # a loop of asyncio that waits
        self._known: Optional[Dict[str, str]] = None  # until then, changes are part of the list
        _list.begin(self)
        with self._lock:
            self._known = native.get_cameras_list()

    def close(self) -> None:
        """Ends the loop."""
        _list.remove(self)
        with self._lock:
            self._put(None)

    def _put(self, event: Optional[Event]) -> None:
        self._queue.put(event)
        self._wake()

    def _arrive(self) -> None:
        with self._lock:
            if self._known is None:
                return
            for serial_number, model_name in native.get_cameras_list().items():
                if serial_number not in self._known:
                    self._known[serial_number] = model_name
                    self._put(Event("connected", serial_number, model_name))

    def _depart(self, model_name: str, serial_number: str) -> None:
        with self._lock:
            if self._known is not None and self._known.pop(serial_number, None) is not None:
                self._put(Event("disconnected", serial_number, model_name))

    def __iter__(self) -> Iterator[Event]:
        return self

    def __next__(self) -> Event:
        event = self._queue.get()
        if event is None:
            self._queue.put(None)  # for further calls
            raise StopIteration
        return event

    async def __aiter__(self) -> AsyncIterator[Event]:
        loop = asyncio.get_running_loop()
        changed = asyncio.Event()

        def wake() -> None:
            with contextlib.suppress(RuntimeError):  # the loop was closed
                loop.call_soon_threadsafe(changed.set)

        with self._lock:
            self._wake = wake
        while True:
            try:
                event = self._queue.get_nowait()
            except queues.Empty:
                await changed.wait()
                changed.clear()
                continue
            if event is None:
                self._queue.put(None)  # for further calls
                return
            yield event

    def __enter__(self) -> Events:
        return self

    def __exit__(self, *reason: object) -> None:
        self.close()


class _List:
    """Who wants to know of changes of the list of cameras."""

    def __init__(self) -> None:
        self._lock = threading.Lock()  # guards who is there
        self._events: weakref.WeakSet[Events] = weakref.WeakSet()
        self._on_connect: Optional[ConnectCallback] = None
        self._on_disconnect: Optional[DisconnectCallback] = None
        self._is_watched = False

    def begin(self, events: Events) -> None:
        with self._lock:
            self._events.add(events)
        if not self._is_watched:
            self.set_connect(self._on_connect)
            self.set_disconnect(self._on_disconnect)
            self._is_watched = True

    def remove(self, events: Events) -> None:
        with self._lock:
            self._events.discard(events)

    def events(self) -> List[Events]:
        with self._lock:
            return list(self._events)

    def end(self) -> None:
        for events in self.events():
            events.close()
        self.__init__()  # type: ignore[misc]

    def set_connect(self, callback: Optional[ConnectCallback]) -> None:
        def arrive() -> None:
            with contextlib.suppress(CameraGoneError):  # the workspace ends
                for events in self.events():
                    events._arrive()
            if callback is not None:
                callback()

        native.register_new_connect_callback(arrive)
        self._on_connect = callback

    def set_disconnect(self, callback: Optional[DisconnectCallback]) -> None:
        def depart(model_name: str, serial_number: str) -> None:
            for events in self.events():
                events._depart(model_name, serial_number)
            if callback is not None:
                callback(model_name, serial_number)

        native.register_disconnect_callback(depart)
        self._on_disconnect = callback


_list = _List()


def _begin_forked_child() -> None:
    for events in list(_list._events):  # of the parent; their locks may be held for ever
        events._queue.put(None)
    _list.__init__()  # type: ignore[misc]


os.register_at_fork(after_in_child=_begin_forked_child)


def events() -> Events:
    """Returns arrivals and departures from now on: `for event in quillcamera.events():`, or `async for`.

    An Event has a kind ("connected", "disconnected"), a serial_number and a model_name. Departures are noticed within
    half a second, arrivals within five. Ctrl-C ends the wait.
    """
    return Events()


def register_new_connect_callback(callback: Optional[ConnectCallback]) -> None:
    """Replaces the function that is called, on a thread of the library, after cameras were added; None clears it.

    When the call returns, the former function no longer runs. What it raises goes to sys.unraisablehook. Error
    "WouldWaitForItself": called by such a function
    """
    _list.set_connect(callback)


def register_disconnect_callback(callback: Optional[DisconnectCallback]) -> None:
    """The same for the function that is called with model name and serial number of every camera that went away."""
    _list.set_disconnect(callback)
