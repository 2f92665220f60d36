// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Gvcp.h"

namespace GenICamAdapter {

/// A camera that answers, as it describes itself to everybody.
struct FoundCamera {
    Gvcp::DeviceRecord record;
    /// The name by which the list knows it: maker and serial number, since numbers are not unique across makers.
    std::string serialNumber;
    std::string usbId; ///< the USB library's name of a USB camera; empty for a camera on the network
    std::string card;  ///< the network card; empty for an address that was named
};

} // namespace GenICamAdapter
