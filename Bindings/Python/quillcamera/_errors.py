# SPDX-License-Identifier: Apache-2.0
"""The exceptions of the library, which are also the exceptions that Python programs expect."""

from __future__ import annotations

from typing import Any, Dict, Tuple, Type


class Error(Exception):
    """A failure that the library reports. `str()` gives the sentence.

    word      one word for the kind of failure, such as "CameraNotFound", for comparisons
    sentence  the subject of the failure and what happened to it
    where     source file and line of the library, or an empty text
    """

    word: str
    sentence: str
    where: str

    def __init__(self, sentence: str, word: str = "", where: str = "") -> None:
        super().__init__(sentence)
        self.sentence = sentence
        self.word = word
        self.where = where

    def __str__(self) -> str:
        return self.sentence

    def __reduce__(self) -> Tuple[Type["Error"], Tuple[str, str, str], Dict[str, Any]]:
        return type(self), (self.sentence, self.word, self.where), self.__dict__


class CameraError(Error):
    """A failure of one camera."""


class CameraNotFoundError(CameraError, KeyError):
    """No listed camera has the serial number."""


class CameraConnectionError(CameraError, ConnectionError):
    """The camera cannot be opened."""


class CameraStateError(Error):
    """A change of a camera's state that its present state does not allow."""


class FunctionError(Error):
    """A failure of one function of a camera."""


class FunctionNotFoundError(FunctionError, KeyError):
    """The camera has no function of this name."""


class InvalidArgumentError(Error, ValueError):
    """An argument that an operation does not accept."""


class PropertyError(Error):
    """A failure of one property of a camera."""


class PropertyNotFoundError(PropertyError, KeyError):
    """The camera has no property of this name."""


class PropertyReadOnlyError(PropertyError, PermissionError):
    """The property is a constant of the camera."""


class PropertyValueError(Error, ValueError):
    """A text that is not one of the choices of a property."""


class PropertyComparisonError(Error):
    """A conflict between two properties."""


class StreamError(Error):
    """A failure of a camera's stream."""


class StreamStoppedError(StreamError):
    """The stream does not run, or ended before a frame arrived."""


class StreamTimeoutError(StreamError, TimeoutError):
    """No frame arrived in time."""


class CameraGoneError(CameraError, StreamError, ConnectionError):
    """The camera has left the list, or the workspace has ended: this object gets no answer any more."""


class RegistryError(Error, RuntimeError):
    """The record of the driver kit cannot be read. `code` is the registry's status: 2 if the kit is not installed."""

    code: int


class NetworkTimeoutError(CameraError, TimeoutError):
    """The camera did not answer at its new address in time."""
