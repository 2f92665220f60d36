// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexEnumerations.h"

namespace OrvexAdapter {

using CameraInterface::PropertyValueEnumeration;

ColorFormats::ColorFormats()
    : PropertyValueEnumeration<int>({
          {"MONO", 0},
          {"RGGB", 8},
          {"GRBG", 9},
          {"GBRG", 10},
          {"BGGR", 11},
          {"CYYM", 16},
          {"YCMY", 17},
          {"YMCY", 18},
          {"MYYC", 19},
      }) {}

CorrectionMatrices::CorrectionMatrices()
    : PropertyValueEnumeration<int>({
          {"None", 0},
          {"Fluorescent", 1},
          {"Daylight", 2},
          {"Incandescent", 3},
          {"Xenon flash", 4},
          {"Halogen", 5},
          {"LED", 6},
          {"Identity", 14},
          {"Custom", 15},
      }) {}

DemosaicMethods::DemosaicMethods()
    : PropertyValueEnumeration<int>({
          {"None", 0},
          {"Fast", 1},
          {"High Quality", 2},
          {"Higher Quality", 3},
          {"Simple", 8},
      }) {}

Endianness::Endianness()
    : PropertyValueEnumeration<bool>({
          {"Big Endian", false},
          {"Little Endian", true},
      }) {}

FlippingOptions::FlippingOptions()
    : PropertyValueEnumeration<int>({
          {"None", 0},
          {"X", 1},
          {"Y", 2},
          {"XY", 3},
      }) {}

HardwareInterfaces::HardwareInterfaces()
    : PropertyValueEnumeration<int>({
          {"USB 1.0", 1},
          {"USB 2.0", 2},
          {"USB 3.0", 3},
          {"GigE Vision", 4},
      }) {}

PixelFormats::PixelFormats()
    : PropertyValueEnumeration<unsigned long>({
          {"8", 0},
          {"16", 1},
          {"24", 2},
          {"32", 6},
          {"48", 7},
      }) {}

PowerModes::PowerModes()
    : PropertyValueEnumeration<bool>({
          {"USB", false},
          {"Y-Cable", true},
      }) {}

ShutterTypes::ShutterTypes()
    : PropertyValueEnumeration<unsigned long>({
          {"Global", 0},
          {"Rolling", 1},
      }) {}

StrobeStates::StrobeStates()
    : PropertyValueEnumeration<unsigned long>({
          {"Disabled", 0},
          {"Enabled", 0x80000000},
      }) {}

TapConfigurations::TapConfigurations()
    : PropertyValueEnumeration<int>({
          {"Single", 0},
          {"Dual", 1},
          {"Quad", 4},
      }) {}

TriggerModes::TriggerModes()
    : PropertyValueEnumeration<int>({
          {"Normal", 0},
          {"Bulb", 1},
      }) {}

} // namespace OrvexAdapter
