// SPDX-License-Identifier: Apache-2.0

#include "Properties/MemoryProperty.h"

#include <cmath>
#include <type_traits>
#include <utility>

#include "Base/TextConversion.h"

namespace CameraInterface {

namespace {

/// False if a text that was read as @p a is certainly not the text of @p b; formatting takes longer than parsing.
template <typename T>
bool mayHaveOneText(const T& a, const T& b) {
    if constexpr (std::is_floating_point_v<T>) {
        return !std::isfinite(b) || !(std::abs(a - b) > 0.01); // "inf" is not parsed; texts have two decimals
    } else {
        return true;
    }
}

} // namespace

template <typename T>
MemoryProperty<T>::MemoryProperty(const std::string& name, const PROPERTY_TYPE& type, const T& minimum,
                                  const T& maximum, const T& defaultValue, bool readOnly, bool discrete,
                                  const std::map<std::string, T>& valueEnumeration)
    : Property(name, type), m_Minimum(minimum), m_Maximum(maximum), m_Value(defaultValue), m_Default(defaultValue),
      m_ReadOnly(readOnly), m_AvailableForWriting(!readOnly), m_Discrete(discrete),
      m_ValueEnumeration(valueEnumeration) {}

template <typename T>
std::string MemoryProperty<T>::getText(const T& value) const {
    return m_Discrete ? m_ValueEnumeration.toString(value) : Base::toText(value);
}

template <typename T>
std::string MemoryProperty<T>::getMinimum() {
    return getText(m_Minimum);
}

template <typename T>
std::string MemoryProperty<T>::getMaximum() {
    return getText(m_Maximum);
}

template <typename T>
std::string MemoryProperty<T>::getValue() {
    return getText(m_Value);
}

template <typename T>
std::string MemoryProperty<T>::getDefault() {
    return getText(m_Default);
}

template <typename T>
bool MemoryProperty<T>::isReadOnly() {
    return m_ReadOnly;
}

template <typename T>
bool MemoryProperty<T>::isAvailableForWriting() {
    return m_AvailableForWriting;
}

template <typename T>
bool MemoryProperty<T>::isDiscrete() {
    return m_Discrete;
}

template <typename T>
std::vector<std::string> MemoryProperty<T>::getValueList() {
    if (m_ValueList.empty()) {
        m_ValueList = m_ValueEnumeration.getList();
    }
    return m_ValueList;
}

template <typename T>
void MemoryProperty<T>::setValue(const std::string& value) {
    if ((m_Discrete && value == getValue()) || isReadOnly() || !isAvailableForWriting()) {
        return;
    }
    if (m_Discrete) {
        m_Value = m_ValueEnumeration.toValue(value);
    } else {
        T written = m_Value;
        Base::extractFirstWord(value, written);
        if (mayHaveOneText(written, m_Value) && value == getValue()) {
            return;
        }
        m_Value = std::move(written);
    }
    onChange(true);
}

template class MemoryProperty<unsigned long>;
template class MemoryProperty<int>;
template class MemoryProperty<double>;
template class MemoryProperty<bool>;
template class MemoryProperty<std::string>;

} // namespace CameraInterface
