// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <vector>

#include "../Export.h"
#include "Property.h"

namespace CameraInterface {

/// A property whose value lives in memory.
///
/// Numbers read in fixed notation, floating-point numbers with two decimals, independent of the locale. Instantiated
/// for T = unsigned long (32 bits wide in text on every platform), int, double, bool and std::string.
template <typename T>
class MemoryProperty : public Property {
public:
    /// @param valueEnumeration the text of each allowed value of a discrete property; empty otherwise
    MemoryProperty(const std::string& name, const PROPERTY_TYPE& type, const T& minimum, const T& maximum,
                   const T& defaultValue, bool readOnly, bool discrete,
                   const std::map<std::string, T>& valueEnumeration);

    using Property::operator=;

    /// These four operations throw KestrelException "PropertyValueConversion" if a discrete property holds a value
    /// without a text.
    std::string getMinimum() override;
    std::string getMaximum() override;
    std::string getValue() override;
    std::string getDefault() override;
    bool isReadOnly() override;
    bool isAvailableForWriting() override;
    bool isDiscrete() override;
    std::vector<std::string> getValueList() override;

    /// Ignores the present text, and every write while the property cannot be written. A continuous value is not
    /// checked against the limits, and every text is accepted: only the first word counts; a word that does not begin
    /// with a number stores 0; a number out of the range of T stores the nearest limit of T; an empty text keeps the
    /// value.
    /// @throws KestrelException "PropertyValueConversion"  not one of the texts of a discrete property; the value does
    /// not change
    void setValue(const std::string& value) override;

protected:
    T m_Minimum;
    T m_Maximum;
    T m_Value;
    T m_Default;
    bool m_ReadOnly;
    bool m_AvailableForWriting;
    bool m_Discrete;
    std::vector<std::string> m_ValueList; // filled on first use
    PropertyValueEnumeration<T> m_ValueEnumeration;

private:
    std::string getText(const T& value) const;
};

extern template class QUILL_API MemoryProperty<unsigned long>;
extern template class QUILL_API MemoryProperty<int>;
extern template class QUILL_API MemoryProperty<double>;
extern template class QUILL_API MemoryProperty<bool>;
extern template class QUILL_API MemoryProperty<std::string>;

} // namespace CameraInterface
