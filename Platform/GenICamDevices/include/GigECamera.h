// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "GigEFaults.h"
#include "GigEWire.h"

/// A GigE Vision camera in software.
namespace GenICamDevices {

/// What a camera is, and where it answers. Does not change while the camera runs.
struct CameraOptions {
    std::string address =
        "127.0.0.1";  ///< IPv4 address of this machine that the camera answers at; empty: the first one of the card
    std::string card; ///< network interface whose broadcasts are answered; empty: the one that has the address
    std::string vendor = "Quill";
    std::string model = "Software GigE Camera";
    std::string serial;          ///< empty: made from the address
    std::string userName;        ///< at most 15 characters
    std::uint64_t mac = 0;       ///< 0: made from the address
    std::uint32_t width = 1936;  ///< of the sensor: 16 .. 8192, a multiple of 4
    std::uint32_t height = 1216; ///< of the sensor: 16 .. 8192, a multiple of 2
    double fps = 30;             ///< frames per second to begin with; 0: as fast as it goes
    Bytes description;           ///< of the features, XML or a zipped XML; empty: the camera's own
    std::string descriptionName = "GigECamera.xml";
    std::string url;           ///< where the description is; empty: in the registers
    std::uint64_t seed = 1;    ///< of the faults that happen by chance
    std::uint16_t idStart = 1; ///< block id of the first frame of an acquisition
    Faults faults;
};

/// What a camera has sent so far.
struct CameraCounts {
    std::uint64_t framesSent = 0;
    std::uint64_t packetsSent = 0;     ///< of frames, those sent again included
    std::uint64_t packetsDropped = 0;  ///< on purpose
    std::uint64_t resendsAnswered = 0; ///< packets that were sent again
};

/// A GigE Vision camera in software: answers at port 3956 of an address of this machine and streams frames of
/// GigEPattern.h. Several can run at different addresses. Thread-safe.
class GigECamera {
public:
    /// Starts the camera.
    /// @throws std::invalid_argument  an option has no possible value
    /// @throws std::runtime_error     there is no such address or card, or the port is in use
    explicit GigECamera(const CameraOptions& options);
    GigECamera(const GigECamera&) = delete;
    GigECamera& operator=(const GigECamera&) = delete;
    /// Ends the camera without a word to those who use it.
    ~GigECamera();

    /// The address it answers at, which an application can change.
    std::string address() const;
    Faults faults() const;
    void setFaults(const Faults& faults);
    CameraCounts counts() const;

private:
    class Service;
    std::unique_ptr<Service> m_Service;
};

/// The description of the features that a camera has by default.
const Bytes& defaultDescription();

} // namespace GenICamDevices
