# SPDX-License-Identifier: Apache-2.0
"""Loops over frames."""

from __future__ import annotations

import asyncio
import contextlib
import queue as queues
import threading
from typing import TYPE_CHECKING, AsyncIterator, Iterator, Optional, Union

from ._errors import CameraGoneError

if TYPE_CHECKING:
    from ._cameras import Camera
    from ._quillcamera import Frame, FrameQueue
    from ._types import WhenFull


class Stream:
    """Every frame of a camera, for a loop: made by Camera.stream()."""

    def __init__(
        self, camera: Camera, queue: int, when_full: WhenFull, timeout: Optional[float], count: Optional[int], name: str
    ) -> None:
        self._camera = camera
        self._queue = queue
        self._when_full = when_full
        self._timeout = timeout
        self._count = count
        self._name = name

    def __repr__(self) -> str:
        return f"<Stream of {self._camera!r}>"

    @contextlib.contextmanager
    def _frames(self) -> Iterator[FrameQueue]:
        """An open queue of a stream that runs for as long as it is used."""
        with self._camera.open_frame_queue(self._queue, self._when_full, self._name) as frames:
            is_own = not self._camera.is_streaming
            if is_own:
                self._camera.start_stream()
            try:
                yield frames
            finally:
                if is_own:
                    with contextlib.suppress(CameraGoneError):
                        self._camera.stop_stream()

    def __iter__(self) -> Iterator[Frame]:
        with self._frames() as frames:
            for _ in _numbers(self._count):
                try:
                    frame = frames.next(self._timeout)
                except StopIteration:
                    return
                yield frame
                del frame  # its memory is free while the next one is awaited

    async def __aiter__(self) -> AsyncIterator[Frame]:
        # Starting and stopping may take a while: other tasks go on.
        context = self._frames()
        start = asyncio.ensure_future(asyncio.to_thread(context.__enter__))
        try:
            frames = await asyncio.shield(start)
        except asyncio.CancelledError:
            with contextlib.suppress(Exception):  # of a start that failed, nothing is left to stop
                await start
                await asyncio.to_thread(context.__exit__, None, None, None)
            raise
        popper = _Popper(frames)
        try:
            for _ in _numbers(self._count):
                frame = await popper.next(self._timeout)
                if frame is None:
                    return
                yield frame
                del frame
        finally:
            frames.close()  # ends the popper, too
            popper.end()
            await asyncio.to_thread(context.__exit__, None, None, None)


def _numbers(count: Optional[int]) -> Iterator[int]:
    number = 0
    while count is None or number < count:
        yield number
        number += 1


class _Popper:
    """A thread that waits for frames in place of an event loop, one at a time."""

    def __init__(self, frames: FrameQueue) -> None:
        self._frames = frames
        self._orders: queues.SimpleQueue[Optional[tuple[Optional[float], asyncio.Future[Optional[Frame]]]]]
        self._orders = queues.SimpleQueue()
        self._loop = asyncio.get_running_loop()
        # Not one that Python waits for before it ends the workspace.
        threading.Thread(target=self._run, name="quillcamera frames", daemon=True).start()

    async def next(self, timeout: Optional[float]) -> Optional[Frame]:
        """The next frame; None at the ordinary end of the stream."""
        if len(self._frames):  # its only consumer is here
            await asyncio.sleep(0)  # other tasks go on, also those that cancel this one
            try:
                return self._frames.next(0)
            except StopIteration:  # the queue was closed meanwhile
                return None
        future: asyncio.Future[Optional[Frame]] = self._loop.create_future()
        self._orders.put((timeout, future))
        return await future

    def end(self) -> None:
        self._orders.put(None)

    def _run(self) -> None:
        while (order := self._orders.get()) is not None:
            timeout, future = order
            result: Union[Frame, None, Exception]
            try:
                result = self._frames.next(timeout)
            except StopIteration:
                result = None
            except Exception as failure:  # for the task that waits
                result = failure
            with contextlib.suppress(RuntimeError):  # the loop was closed
                self._loop.call_soon_threadsafe(_settle, future, result)
            del order, future, result


def _settle(future: asyncio.Future[Optional[Frame]], result: Union[Frame, None, Exception]) -> None:
    if future.cancelled():
        return
    if isinstance(result, Exception):
        future.set_exception(result)
    else:
        future.set_result(result)
