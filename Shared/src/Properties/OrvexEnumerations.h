// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "PropertyValueEnumerations.h"

namespace OrvexAdapter {

// The named values of the SDK's settings. The numbers are the SDK's own.

/// Colour filter layouts of a sensor.
class ColorFormats : public CameraInterface::PropertyValueEnumeration<int> {
public:
    ColorFormats();
    virtual ~ColorFormats() = default;
};

/// Colour correction in the SDK's conversions, by kind of light.
class CorrectionMatrices : public CameraInterface::PropertyValueEnumeration<int> {
public:
    CorrectionMatrices();
};

class DemosaicMethods : public CameraInterface::PropertyValueEnumeration<int> {
public:
    DemosaicMethods();
};

/// Byte order of 16-bit pixels; true for little-endian.
class Endianness : public CameraInterface::PropertyValueEnumeration<bool> {
public:
    Endianness();
};

/// Bit 0 flips along X, bit 1 along Y.
class FlippingOptions : public CameraInterface::PropertyValueEnumeration<int> {
public:
    FlippingOptions();
};

class HardwareInterfaces : public CameraInterface::PropertyValueEnumeration<int> {
public:
    HardwareInterfaces();
};

/// Pixel-format codes, named by their bits per pixel.
class PixelFormats : public CameraInterface::PropertyValueEnumeration<unsigned long> {
public:
    PixelFormats();
};

/// The power supply of a camera; true for the cable with two plugs.
class PowerModes : public CameraInterface::PropertyValueEnumeration<bool> {
public:
    PowerModes();
};

class ShutterTypes : public CameraInterface::PropertyValueEnumeration<unsigned long> {
public:
    ShutterTypes();
    virtual ~ShutterTypes() = default;
};

/// Bits of the strobe flags.
class StrobeStates : public CameraInterface::PropertyValueEnumeration<unsigned long> {
public:
    StrobeStates();
};

/// Read-out taps of a sensor.
class TapConfigurations : public CameraInterface::PropertyValueEnumeration<int> {
public:
    TapConfigurations();
    virtual ~TapConfigurations() = default;
};

class TriggerModes : public CameraInterface::PropertyValueEnumeration<int> {
public:
    TriggerModes();
};

} // namespace OrvexAdapter
