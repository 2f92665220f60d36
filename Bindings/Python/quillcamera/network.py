# SPDX-License-Identifier: Apache-2.0
"""The network of GigE Vision cameras: their addresses, how fast they send, and what is wrong with the link.

Cameras are named by their serial numbers in the list, connected or not; addresses are texts. CameraNotFoundError: no such
camera answers; CameraError "NetworkSettings": the camera is on no network, refuses, does not answer or has no such
setting; InvalidArgumentError: what is no address, or out of range. Ctrl-C ends a wait at once, and what was asked goes on.
"""

from __future__ import annotations

from typing import List

from . import _quillcamera as native
from ._types import CameraNetwork, LinkFinding, NetworkPlace

__all__ = [
    "CameraNetwork",
    "LinkFinding",
    "NetworkPlace",
    "compute_packet_delay_ns",
    "describe",
    "examine_link",
    "force_address",
    "set_address_mode",
    "set_heartbeat_ms",
    "set_packet_delay_ns",
    "set_packet_size",
    "set_persistent_address",
]


def describe(serial_number: str) -> CameraNetwork:
    """Reads the network side of a camera, also of one that cannot be reached: then `obstacle` says why."""
    described = native.describe_network(serial_number)
    for name in ("present", "persistent"):
        if described[name] is not None:
            described[name] = NetworkPlace(*described[name])
    return CameraNetwork(**described)


def set_persistent_address(serial_number: str, address: str, mask: str, gateway: str = "0.0.0.0") -> None:
    """Stores the address that the camera takes at its next start, if persistent addresses are enabled."""
    native.set_persistent_address(serial_number, address, mask, gateway)


def set_address_mode(serial_number: str, *, persistent: bool, dhcp: bool) -> None:
    """Stores from where the camera gets its address at its next start: the persistent one comes first, then DHCP."""
    native.set_address_mode(serial_number, persistent, dhcp)


def set_packet_size(serial_number: str, size: int) -> int:
    """Sets the bytes of a packet of an image, with its headers: 220 to 16384. Returns what the camera took."""
    return native.set_packet_size(serial_number, size)


def set_packet_delay_ns(serial_number: str, nanoseconds: int) -> int:
    """Sets the pause between two packets: 0 to 100,000,000. Returns what the camera took."""
    return native.set_packet_delay_ns(serial_number, nanoseconds)


def set_heartbeat_ms(serial_number: str, milliseconds: int) -> int:
    """Sets the time without a sign of life after which the camera becomes free: 500 to 3,600,000. Returns what it took."""
    return native.set_heartbeat_ms(serial_number, milliseconds)


def force_address(camera: str, address: str, mask: str, gateway: str = "0.0.0.0") -> None:
    """Gives a camera an address until it restarts, and waits until it answers there: ten seconds at the most.

    camera  its serial number, or its hardware address with colons. Broadcasts on the card on which the camera was found.
    NetworkTimeoutError: it did not answer
    """
    native.force_address(camera, address, mask, gateway)


def examine_link(serial_number: str) -> List[LinkFinding]:
    """Examines the way from a camera to this program. Takes about a second, a few if packets are lost."""
    return [LinkFinding(*finding) for finding in native.examine_link(serial_number)]


def compute_packet_delay_ns(cameras: int, link_speed_mbps: int, packet_size: int, camera_speed_mbps: int = 0) -> int:
    """Returns the pause between packets with which cameras share one link without loss, in nanoseconds."""
    return native.compute_packet_delay_ns(cameras, link_speed_mbps, packet_size, camera_speed_mbps)
