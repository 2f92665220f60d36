// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "../Export.h"

/// The network of GigE Vision cameras: their addresses, how fast they send, and what is wrong with the link.
///
/// All functions take cameras as the list names them, connected or not. Addresses are IPv4 addresses as texts. They
/// wait for the camera, as a rule for a few milliseconds; half a second for a read and two seconds for a write at the
/// most, unless they say otherwise. Thread-safe, except that the workspace must not end meanwhile.
///
/// They throw KestrelException_Camera "CameraNotFound" if no such camera answers, "NetworkSettings" if the camera is on
/// no network, refuses, does not answer or has no such setting, and "CameraEnumeration" if the adapter cannot be
/// loaded.
namespace CameraInterface::GenICam {

/// Where a device is in an IPv4 network.
struct NetworkPlace {
    std::string address;
    std::string mask;                ///< such as "255.255.255.0"
    std::string gateway = "0.0.0.0"; ///< "0.0.0.0" for none
};

/// From where a camera has its address. Cameras do not say it: it is concluded from the address and from what is
/// enabled.
enum class AddressOrigin {
    Persistent, ///< stored in the camera
    Dhcp,       ///< given by a server, or by a program while DHCP is enabled
    LinkLocal,  ///< chosen by the camera, from 169.254.0.0/16
    Temporary   ///< none of these: given by a program, or what is stored has changed since the camera started
};

/// Returns the origin in words: "persistent", "DHCP", "link-local", "temporary".
QUILL_API const char* getOriginName(AddressOrigin origin);

/// Who may change a camera.
enum class Controller { Nobody, ThisProgram, AnotherProgram };

/// The network side of one camera. What the camera does not have, or does not tell because it cannot be reached, is
/// empty.
struct CameraNetwork {
    std::string hardwareAddress; ///< "00:11:22:33:44:55"
    NetworkPlace present;
    AddressOrigin origin = AddressOrigin::Temporary;
    bool isPersistentSupported = false;
    bool isPersistentEnabled = false;
    bool isDhcpSupported = false;
    bool isDhcpEnabled = false;
    std::optional<NetworkPlace> persistent;

    std::string card;        ///< the network card of this computer that reaches the camera
    std::string cardAddress; ///< of this computer on that card, towards the camera
    std::string cardMask;
    std::optional<std::uint32_t> cardSpeedMbps;
    /// Why the camera's registers cannot be read; empty if they were read.
    std::string obstacle;

    std::optional<std::uint32_t> linkSpeedMbps; ///< as the camera says
    std::optional<std::uint32_t> packetSize;    ///< bytes of a packet of an image with its IP, UDP and stream headers
    std::optional<std::uint64_t> packetDelayNs; ///< between two packets, in nanoseconds
    std::optional<std::uint32_t> heartbeatMs;   ///< time without a sign of life after which it becomes free
    std::optional<Controller> controller;
    std::string controllerAddress; ///< of the computer that controls it; empty if the camera does not say
};

/// Reads the network side of a camera, also of one that another program controls, or that is listed but cannot be
/// reached: then the obstacle says why.
QUILL_API CameraNetwork describeNetwork(const std::string& serialNumber);

// What follows changes a camera. If the camera is not connected by this program, control is taken for the moment; while
// another program has control, the camera refuses. What is set lasts until the camera restarts, unless it says
// otherwise.

/// Stores the address that the camera takes at its next start, if persistent addresses are enabled.
/// @throws KestrelException_InvalidArgument "ArgumentUnhandled"  what is no address of a device, or no mask
QUILL_API void setPersistentAddress(const std::string& serialNumber, const NetworkPlace& place);
/// Stores from where the camera gets its address at its next start. A persistent address comes first, then DHCP;
/// without either, or without a server, it takes a link-local one.
QUILL_API void setAddressMode(const std::string& serialNumber, bool persistent, bool dhcp);

/// Sets the size of the packets of images, with their headers, in bytes: 220 to 16384.
/// @return the size that the camera took
/// @throws KestrelException_InvalidArgument "ArgumentUnhandled"
QUILL_API std::uint32_t setPacketSize(const std::string& serialNumber, std::uint32_t bytes);
/// Sets the pause between two packets of an image in nanoseconds: 0 to 100,000,000.
/// @return the pause that the camera took: a multiple of its clock's period
/// @throws KestrelException_InvalidArgument "ArgumentUnhandled"
QUILL_API std::uint64_t setPacketDelayNs(const std::string& serialNumber, std::uint64_t nanoseconds);
/// Sets the time without a sign of life after which the camera becomes free, in milliseconds: 500 to 3,600,000. A
/// connection sets it again where Settings::heartbeatMs is not 0.
/// @return the time that the camera took
/// @throws KestrelException_InvalidArgument "ArgumentUnhandled"
QUILL_API std::uint32_t setHeartbeatMs(const std::string& serialNumber, std::uint32_t milliseconds);

/// Gives a camera an address until it restarts, whichever it has, and waits until it answers there: ten seconds at the
/// most. Broadcasts on the card on which the camera was found; a camera of which only the hardware address is known, on
/// all cards of the settings. The camera must not be connected.
/// @param camera  its serial number in the list, or its hardware address with colons
/// @throws KestrelException_InvalidArgument "ArgumentUnhandled"  what is no address of a device, or no mask
/// @throws KestrelException_Camera "NetworkTimeout"  it did not answer at the new address
QUILL_API void forceAddress(const std::string& camera, const NetworkPlace& place);

/// How one thing about a link is.
enum class LinkVerdict {
    Good,
    Hint, ///< works, but could be better, or could not be examined
    Fault
};

/// Returns the verdict in words: "good", "hint", "fault".
QUILL_API const char* getVerdictName(LinkVerdict verdict);

/// One thing about a link that was looked at.
struct LinkFinding {
    std::string subject; ///< such as "firewall"
    LinkVerdict verdict = LinkVerdict::Good;
    std::string sentence; ///< what was found
    std::string remedy;   ///< the command line that mends it; empty if there is none
};

/// Examines the way from a camera to this program: card, addresses, routes, buffers, privileges, the round trip of
/// control packets, and, by test packets of several sizes, firewall and packet size. Takes about a second, a few if
/// packets are lost. Test packets need control of the camera, and no stream; without, a finding says so.
QUILL_API std::vector<LinkFinding> examineLink(const std::string& serialNumber);

/// Returns the pause between two packets with which cameras that send at the same time share one link without loss, in
/// nanoseconds.
///
/// On the wire a packet has 38 bytes more: Ethernet header and checksum 18, preamble 8, gap 12. It takes
/// T = (size + 38) x 8 / speed on the link, and C at the camera's own speed. With n cameras, each may begin a packet
/// every n x T / 0.9, which leaves a tenth of the link for control and for packets that are sent again. The pause is
/// n x T / 0.9 - C, rounded up, and 0 if that is negative, or for a single camera.
/// @param cameras         number of cameras, at least 1
/// @param linkSpeedMbps   speed of the link that they share, in megabits per second, at least 1
/// @param packetSize      bytes of a packet with its IP, UDP and stream headers
/// @param cameraSpeedMbps speed of the camera's own link; 0 if it is that of the shared link
/// @throws KestrelException_InvalidArgument "ArgumentUnhandled"  no camera, or no speed
QUILL_API std::uint64_t computePacketDelayNs(std::uint32_t cameras, std::uint32_t linkSpeedMbps,
                                             std::uint32_t packetSize, std::uint32_t cameraSpeedMbps = 0);

} // namespace CameraInterface::GenICam
