// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <optional>
#include <string>

#include "OrvexApi/OrvexRecords.h"
#include "Properties/MemoryProperty.h"
#include "Properties/OrvexEnumerations.h"

namespace OrvexAdapter {

class OrvexCamera;

/// A number or text that was read from the camera at connection, or a substitute if it could not be read.
template <typename T>
class OrvexDeviceConstant : public CameraInterface::MemoryProperty<T> {
public:
    OrvexDeviceConstant(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                        const std::optional<T>& value, const T& standIn)
        : CameraInterface::MemoryProperty<T>(name, type, value.value_or(standIn), value.value_or(standIn),
                                             value.value_or(standIn), true, false, std::map<std::string, T>()),
          m_WasRead(value.has_value()) {}

    using CameraInterface::MemoryProperty<T>::operator=;

    /// Takes over the value of a later connection, if it could be read. Keeps links and callback.
    void takeOver(const OrvexDeviceConstant& later) {
        if (later.m_WasRead) {
            this->m_Minimum = this->m_Maximum = this->m_Value = this->m_Default = later.m_Value;
        }
    }

private:
    bool m_WasRead;
};

/// How long a run waits for a frame, in milliseconds; -1 leaves it to the stream.
class OrvexCaptureTimeout : public CameraInterface::MemoryProperty<double> {
public:
    OrvexCaptureTimeout(const std::string& name, const CameraInterface::PROPERTY_TYPE& type);

    using MemoryProperty<double>::operator=;

    bool isAvailableForWriting() override;
};

/// The shutter of still captures: "Global" or "Rolling".
class OrvexShutter : public CameraInterface::MemoryProperty<int> {
public:
    OrvexShutter(const std::string& name, const CameraInterface::PROPERTY_TYPE& type);

    using MemoryProperty<int>::operator=;
};

/// The mode of the next run: "Video" or "Still". Ignores a write while the camera is streaming.
class OrvexStreamingMode : public CameraInterface::MemoryProperty<bool> {
public:
    OrvexStreamingMode(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using MemoryProperty<bool>::operator=;

    bool isAvailableForWriting() override;

private:
    OrvexCamera* m_Camera; // owns this property
};

/// The bits per pixel of the next run. The constructor tries each value on the camera to find the allowed ones, and
/// restores the camera's format.
class OrvexPixelFormat : public CameraInterface::MemoryProperty<unsigned long> {
public:
    /// @throws KestrelException_Property "PropertyReadFailure"  the camera does not report its present format
    /// @throws KestrelException_Property "PropertyWriteFailure"  the camera refuses to restore its former format
    OrvexPixelFormat(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using MemoryProperty<unsigned long>::operator=;

private:
    OrvexCamera* m_Camera; // owns this property
    // The camera's format at construction.
    ORVEX_FRAME_FORMAT m_Format{};
    float m_FrameRate = 0;
    unsigned long m_CurrentPixelFormat = 0;
    PixelFormats m_Candidates;
};

/// How the next run combines pixels: "None (1x1)", or binning or subsampling by a horizontal and a vertical factor.
class OrvexSamplingDescription : public CameraInterface::MemoryProperty<std::string> {
public:
    /// @throws KestrelException_Property "PropertyUnsupported"
    OrvexSamplingDescription(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using MemoryProperty<std::string>::operator=;

private:
    OrvexCamera* m_Camera; // owns this property
    ORVEX_SAMPLING_DESCRIPTION m_Description{};
};

} // namespace OrvexAdapter
