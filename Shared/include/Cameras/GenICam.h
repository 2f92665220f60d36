// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "../Export.h"

/// GigE Vision and USB3 Vision cameras of any maker, through their GenICam descriptions.
///
/// They are found by an adapter in a library of its own, which is loaded once cameras are looked for. USB cameras are
/// looked for always; the network is used only on the cards, and for the addresses, that are named.
/// Where cameras of any maker are looked for, and how they are in the network.
namespace CameraInterface::GenICam {

/// Where cameras are looked for, and how they are driven.
struct Settings {
    /// Network cards, such as "eth1", on which cameras are looked for: a broadcast goes out twice a second.
    std::vector<std::string> cards;
    /// IPv4 addresses of cameras, also of those that a broadcast does not reach.
    std::vector<std::string> addresses;
    /// Whether USB3 Vision cameras are looked for.
    bool usb = true;
    /// Whether frames are received through a packet socket: a fraction of the processor time, and no frame is lost to
    /// a small socket buffer. The process needs CAP_NET_RAW.
    bool packetSocket = false;
    /// Time without a sign of life after which a camera becomes free, in milliseconds: 500 to 3,600,000; 0 leaves the
    /// camera's own. While a debugger is attached to the process when it connects, at least five minutes.
    std::uint32_t heartbeatMs = 0;
};

/// Replaces the settings; the next enumeration uses them. The time-out and the kind of socket are those of the next
/// connection, or start of a stream. Thread-safe.
///
/// Until the first call, the settings are those of the file /etc/quillcamera/genicam.conf (its place is fixed when the
/// library is built), if it exists: lines "card = NAME", "address = A.B.C.D", "usb = no", "packet-socket = yes" and
/// "heartbeat = MILLISECONDS", and comments after "#". The environment variable QUILL_GENICAM, a list of cards and
/// addresses with commas, replaces the file's cards and addresses; a program with raised privileges ignores it. Both
/// are read once.
/// @throws KestrelException_InvalidArgument "ArgumentUnhandled"  what is not a card's name, address or time
QUILL_API void configure(const Settings& settings);

/// Returns the present settings. Thread-safe.
/// @throws KestrelException "SettingsInvalid"  the file has a line that is none of those above
QUILL_API Settings getSettings();

} // namespace CameraInterface::GenICam
