// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <exception>
#include <optional>
#include <string>

#include "../../Export.h"

namespace CameraInterface {
class Camera;
}

/// Cameras of the maker's SDK.
namespace OrvexAdapter {

/// The network settings of a GigE camera and of the host adapter that reaches it. The three addresses are IP address,
/// subnet mask and gateway, each with its first octet in the most significant byte.
struct ORVEX_ETHERNET {
    unsigned char cameraMac[8] = {}; ///< six bytes in wire order, then two reserved
    std::uint32_t cameraAddresses[3] = {};
    unsigned char hostMac[8] = {};
    std::uint32_t hostAddresses[3] = {};
    std::uint32_t size = 140;
    unsigned char reserved[96] = {};
};
static_assert(sizeof(ORVEX_ETHERNET) == 140);

/// The SDK's 24 counters of a stream, in its order.
// NOLINTNEXTLINE(*-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the name is given
struct _ORVEX_STREAM_STATS {
    std::uint32_t counters[24] = {};
};
static_assert(sizeof(_ORVEX_STREAM_STATS) == 96);

/// Network settings and stream counters of one GigE Vision camera, with their texts.
///
/// A plain value: only GetEthernetInfo(), SetEthernetInfo() and the two operations that take a handle call the SDK. An
/// index is a camera's place in the SDK's present enumeration, counted from 1. Reentrant.
class QUILL_API CGigE {
public:
    /// Reads the settings of camera and host.
    /// @throws KestrelException "GigEError"
    void GetEthernetInfo(int index) {
        if (!readEthernetInfo(index)) {
            raise(__LINE__, "could not read ethernet information from camera index #" + std::to_string(index));
        }
    }
    /// Writes the camera's three addresses.
    /// @throws KestrelException "GigEError"  the camera keeps its settings
    void SetEthernetInfo(int index) {
        if (!writeEthernetInfo(index)) {
            raise(__LINE__, "could not update camera ethernet setting for camera index #" + std::to_string(index));
        }
    }

    // Addresses as four decimal numbers joined by ".".
    std::string GetCamIPAddress() const;
    std::string GetCamMaskAddress() const;
    std::string GetCamGatewayAddress() const;
    std::string GetHostIPAddress() const;
    std::string GetHostMaskAddress() const;
    std::string GetHostGatewayAddress() const;

    /// Six upper-case hexadecimal numbers joined by ":", of which only the first is padded: 00:A:1B:3:4:F5. This text
    /// is the serial number of a GigE camera.
    std::string GetCamMacAddress() const;
    std::string GetHostMacAddress() const;

    // Nothing reaches the camera before SetEthernetInfo(). Pieces are separated by "."; each gives its low 8 bits, and
    // a piece that is not a number gives 0. With fewer than four pieces the last one stays the lowest byte. More than
    // four pieces throw std::invalid_argument and change nothing.
    void SetCamIpAddress(const std::string& text);
    void SetCamMaskAddress(const std::string& text);
    void SetCamGatewayAddress(const std::string& text);
    void SetHostIpAddress(const std::string& text);
    void SetHostMaskAddress(const std::string& text);
    void SetHostGatewayAddress(const std::string& text);

    // Pieces are hexadecimal and separated by ":"; the low 8 bits of each give the next byte, from the first on. More
    // than six pieces, or a piece that is not a number, throw std::invalid_argument; a piece wider than 32 bits throws
    // std::out_of_range. Both change nothing.
    void SetCamMacAddress(const std::string& text);
    void SetHostMacAddress(const std::string& text);

    /// Reads the counters of an open camera's stream.
    /// @throws KestrelException "GigEError"  the counters are as the SDK left them, as a rule unchanged
    _ORVEX_STREAM_STATS GetGigeCamStats(void* handle) {
        if (!readStatistics(handle)) {
            raise(__LINE__, "camera error #" + std::to_string(getLastError(handle)) +
                                ", could not get GigE statistics from camera.");
        }
        return m_StreamStats;
    }
    /// Returns a report of the counters as last read, one to a line.
    std::string GetGigeCamStatsString();
    /// Reads the counters and returns the report. Throws what GetGigeCamStats() throws.
    std::string GetGigeCamStatsToString(void* handle);

private:
    // Failures are raised in this header so that they name this file and its lines.
    [[noreturn]] static void raise(int line, const std::string& description);
    bool readEthernetInfo(int index);
    bool writeEthernetInfo(int index);
    bool readStatistics(void* handle);
    static std::uint32_t getLastError(void* handle);

    static unsigned long GetIpFromString(const std::string& text);
    static std::string IpString(const unsigned long& address);
    static void SetMacFromString(unsigned char* mac, const std::string& text);

    ORVEX_ETHERNET m_Ethernet;
    _ORVEX_STREAM_STATS m_StreamStats;
};

/// The network settings and counters of a GigE camera. A member that cannot be read is empty.
struct GigEDescription {
    std::optional<CGigE> settings;
    std::optional<std::string> statistics; ///< the report of the stream's counters
    std::exception_ptr failure;            ///< why a member is missing, a KestrelException; null if none is
};

/// Reads the network settings and counters of a connected GigE camera; returns nothing for any other camera.
QUILL_API std::optional<GigEDescription> readGigE(CameraInterface::Camera& camera);

} // namespace OrvexAdapter
