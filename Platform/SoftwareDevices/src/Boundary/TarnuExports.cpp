// SPDX-License-Identifier: Apache-2.0

#include "Boundary/Boundary.h"

// The flat USB3 Vision access library: each operation under its name, with the devices in software behind it.

// The arguments that an operation passes on; the table of operations names the parameters together with their types.
#define ARGUMENTS_TarnuNumCameras ()
#define ARGUMENTS_TarnuEnumCameras (records, count)
#define ARGUMENTS_TarnuOpenCamera (record)
#define ARGUMENTS_TarnuCloseCamera (handle)
#define ARGUMENTS_TarnuFlashRead (handle, buffer, address, length)
#define ARGUMENTS_TarnuWriteBootSequence (handle, usb3Vision)
#define ARGUMENTS_TarnuSglWrite (handle, first, second, value, length, data)

#define TARNU_LIBRARY_EXPORT(name, Result, parameters)                                                                 \
    SOFTWARE_DEVICES_EXPORT Result name parameters {                                                                   \
        return SoftwareDevices::Boundary::name ARGUMENTS_##name;                                                       \
    }

extern "C" {
TARNU_OPERATIONS(TARNU_LIBRARY_EXPORT)
}
