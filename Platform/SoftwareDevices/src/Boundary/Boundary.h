// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "SoftwareDevices.h"

namespace SoftwareDevices::Boundary {

// The operations of both flat libraries, those of the camera SDK under their role names. Safe on any thread and with
// any handle; none throws.
#define SOFTWARE_DEVICES_DECLARE(role, number, Result, failure, parameters)                                            \
    SOFTWARE_DEVICES_API Result role parameters noexcept;
ORVEX_OPERATIONS(SOFTWARE_DEVICES_DECLARE)
#undef SOFTWARE_DEVICES_DECLARE

#define SOFTWARE_DEVICES_DECLARE(name, Result, parameters) SOFTWARE_DEVICES_API Result name parameters noexcept;
TARNU_OPERATIONS(SOFTWARE_DEVICES_DECLARE)
#undef SOFTWARE_DEVICES_DECLARE

} // namespace SoftwareDevices::Boundary
