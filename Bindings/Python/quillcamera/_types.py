# SPDX-License-Identifier: Apache-2.0
"""Plain records that cameras return."""

from __future__ import annotations

from dataclasses import dataclass
from typing import List, Literal, NamedTuple, Optional, Union

Value = Union[int, float, bool, str]
"""What a property may hold."""

WhenFull = Literal["drop_oldest", "drop_newest", "hold_back"]
"""What happens to a frame that arrives while a queue is full."""


class Counter(int):
    """A number of frames, or of what the description says. It only grows."""

    description: str
    is_loss: bool

    def __new__(cls, value: int, description: str = "", is_loss: bool = False) -> "Counter":
        counter = super().__new__(cls, value)
        counter.description = description
        counter.is_loss = is_loss
        return counter

    def __getnewargs__(self) -> tuple[int, str, bool]:  # type: ignore[override]
        return int(self), self.description, self.is_loss


class Parameter(NamedTuple):
    """A parameter or result of a function: its label, and "Integer", "Float", "String" or "Boolean"."""

    label: str
    type: str


class SettingDifference(NamedTuple):
    """A property that does not have the value that the settings give."""

    name: str
    wanted: str
    present: str
    """Empty if it cannot be read."""
    reason: str
    """Why it cannot be written or read; empty if it only has another value."""


@dataclass
class SettingsReport:
    """What became of settings that were written."""

    written: List[str]
    """The properties that were written, in the order of their first writing; the others had their values already."""
    different: List[SettingDifference]
    """Accepted a write, but read otherwise afterwards."""
    failed: List[SettingDifference]
    """Refused, missing on this camera, or not reached."""
    interruption: Optional[BaseException]
    """What ended the writing before its time: raised by the progress function, or because the camera is gone."""

    @property
    def is_complete(self) -> bool:
        """Whether the camera has all values of the settings."""
        return not self.different and not self.failed and self.interruption is None


class Event(NamedTuple):
    """A camera that came or went."""

    kind: str
    """"connected" or "disconnected"."""
    serial_number: str
    model_name: str


class BootImageSection(NamedTuple):
    """A part of a boot image that is loaded to one place in the camera's RAM."""

    address: int
    """Load address in RAM."""
    offset: int
    """Of its first byte in the image."""
    length: int
    """Bytes, a multiple of 4."""


class BootImage(NamedTuple):
    """The structure of a boot image."""

    sections: List[BootImageSection]
    entry_address: int
    size: int
    """Bytes up to the end of the last section."""


@dataclass
class XsvfReport:
    """The result of playing an XSVF file."""

    opened: bool
    """The camera gave access to its JTAG port, or there was no camera."""
    error: int
    """0 none, 2 TDO mismatch, 3 retries exhausted, 4 illegal command, 5 illegal state, 6 data overflow."""
    command_count: int
    """Commands read, including one that failed."""
    command_offset: int
    """Offset in the file of the last command read."""
    data_ended: bool
    """The data ended before the command that completes the file."""
    failed_transfers: int
    """Operations on the port that the camera refused or that did not reach it."""
    failed_command: int
    """Number of the command at which the first operation failed."""
    failed_offset: int
    """Offset of that command in the file."""
    camera_gone: bool
    """A transfer failed because the camera is gone; the play ended there."""
    expected_tdo: bytes
    captured_tdo: bytes
    tdo_mask: bytes
    """Bits of the last comparison that failed, most significant byte first; an empty mask selects all."""
    succeeded: bool
    """The file ran to its end without error, and all of it reached the camera."""


class GigESettings(NamedTuple):
    """The network settings of a GigE camera of the maker's SDK, and of this computer's card that reaches it.

    Hardware addresses are hexadecimal numbers joined by ":", of which only the first is padded.
    """

    camera_ip_address: str
    camera_mask_address: str
    camera_gateway_address: str
    camera_mac_address: str
    host_ip_address: str
    host_mask_address: str
    host_gateway_address: str
    host_mac_address: str


class GigEDescription(NamedTuple):
    """Network settings and counters of a GigE camera of the maker's SDK. What cannot be read is None."""

    settings: Optional[GigESettings]
    statistics: Optional[str]
    """The report of the stream's counters, one to a line."""
    failure: Optional[BaseException]
    """Why something is missing; None if nothing is."""


class NetworkPlace(NamedTuple):
    """Where a device is in an IPv4 network."""

    address: str
    mask: str
    gateway: str = "0.0.0.0"


@dataclass
class CameraNetwork:
    """The network side of a camera. What it does not have, or does not tell, is empty or None."""

    hardware_address: str
    present: NetworkPlace
    origin: str
    """"persistent", "DHCP", "link-local" or "temporary"."""
    is_persistent_supported: bool
    is_persistent_enabled: bool
    is_dhcp_supported: bool
    is_dhcp_enabled: bool
    persistent: Optional[NetworkPlace]
    card: str
    """The network card of this computer that reaches the camera."""
    card_address: str
    card_mask: str
    card_speed_mbps: Optional[int]
    obstacle: str
    """Why the camera's registers cannot be read; empty if they were read."""
    link_speed_mbps: Optional[int]
    packet_size: Optional[int]
    """Bytes of a packet of an image with its headers."""
    packet_delay_ns: Optional[int]
    heartbeat_ms: Optional[int]
    """Time without a sign of life after which the camera becomes free."""
    controller: Optional[str]
    """"nobody", "this program" or "another program"."""
    controller_address: str


class LinkFinding(NamedTuple):
    """One thing about a link that was looked at."""

    subject: str
    verdict: str
    """"good", "hint" or "fault"."""
    sentence: str
    remedy: str
    """The command line that mends it; empty if there is none."""
