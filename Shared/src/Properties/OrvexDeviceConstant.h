#pragma once

#include <map>
#include <optional>
#include <string>

#include "Properties/MemoryProperty.h"

namespace OrvexAdapter {

/// A number or text that was read from the camera at connection, or a stand-in where it could not be read.
template <typename T>
class OrvexDeviceConstant : public CameraInterface::MemoryProperty<T> {
public:
    OrvexDeviceConstant(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                        const std::optional<T>& value, const T& standIn)
        : CameraInterface::MemoryProperty<T>(name, type, value.value_or(standIn), value.value_or(standIn),
                                             value.value_or(standIn), true, false, std::map<std::string, T>()),
          m_WasRead(value.has_value()) {}

    using CameraInterface::MemoryProperty<T>::operator=;

    /// Takes over the value of a later connection, if it could be read. Links and callback stay.
    void takeOver(const OrvexDeviceConstant& later) {
        if (later.m_WasRead) {
            this->m_Minimum = this->m_Maximum = this->m_Value = this->m_Default = later.m_Value;
        }
    }

private:
    bool m_WasRead;
};

} // namespace OrvexAdapter
