#pragma once

#include <map>
#include <optional>
#include <string>

#include "Properties/MemoryProperty.h"

namespace OrvexAdapter {

/// A number or text that the camera told when it was connected; what stands in for it where it could not be read.
template <typename T>
class OrvexDeviceConstant : public CameraInterface::MemoryProperty<T> {
public:
    OrvexDeviceConstant(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                        const std::optional<T>& told, const T& standIn)
        : CameraInterface::MemoryProperty<T>(name, type, told.value_or(standIn), told.value_or(standIn),
                                             told.value_or(standIn), true, false, std::map<std::string, T>()),
          m_IsTold(told.has_value()) {}

    using CameraInterface::MemoryProperty<T>::operator=;

    /// Becomes what a later connection told; what it did not tell changes nothing. Links and callback stay.
    void takeOver(const OrvexDeviceConstant& later) {
        if (later.m_IsTold) {
            this->m_Minimum = this->m_Maximum = this->m_Value = this->m_Default = later.m_Value;
        }
    }

private:
    bool m_IsTold;
};

} // namespace OrvexAdapter
