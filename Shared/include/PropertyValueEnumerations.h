// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <string>
#include <vector>

#include "Exceptions/KestrelException.h"
#include "Export.h"

namespace CameraInterface {

/// The value type of a property.
enum class PROPERTY_TYPE { Integer = 0, Float = 1, String = 2, Boolean = 3 };

/// The type of a function's parameter or result; numbered differently from PROPERTY_TYPE.
enum class PARAMETER_TYPE { Integer = 0, String = 1, Boolean = 2, Float = 3 };

/// A fixed set of named values: display texts, each standing for one value.
///
/// A text occurs once; several texts may stand for one value. Texts are matched whole and case-sensitively, values by
/// plain equality. Concurrent reads are safe; insert() must not run concurrently with any other use of the object.
template <typename T>
class PropertyValueEnumeration {
public:
    PropertyValueEnumeration() = default;
    PropertyValueEnumeration(const std::map<std::string, T>& values) : m_Values(values) {}

    /// Adds a pair. A text that exists already keeps its value.
    void insert(const std::string& text, const T& value) { m_Values.emplace(text, value); }

    /// Returns all texts, in ascending byte-wise order.
    std::vector<std::string> getList() const {
        std::vector<std::string> texts;
        texts.reserve(m_Values.size());
        for (const auto& entry : m_Values) {
            texts.push_back(entry.first);
        }
        return texts;
    }

    /// Returns the text of a value: the first in order if several stand for it.
    /// @throws KestrelException "PropertyValueConversion": no text stands for the value
    std::string toString(const T& value) const {
        for (const auto& [text, candidate] : m_Values) {
            if (candidate == value) {
                return text;
            }
        }
        throw conversionFailure("Failed to convert value to string. Provided value not found.", __LINE__);
    }

    /// Returns the value of a text.
    /// @throws KestrelException "PropertyValueConversion": the text is not in the set
    T toValue(const std::string& text) const {
        const auto entry = m_Values.find(text);
        if (entry == m_Values.end()) {
            throw conversionFailure("Failed to convert string to value. Provided string not found.", __LINE__);
        }
        return entry->second;
    }

private:
    // The file is written out: in an application, __FILE__ would be the path of the installed header.
    static KestrelExceptions::KestrelException conversionFailure(const char* description, int line) {
        return KestrelExceptions::KestrelException::create(
            "PropertyValueConversion", "Shared/include/PropertyValueEnumerations.h", line, description);
    }

    std::map<std::string, T> m_Values;
};

/// The words of PROPERTY_TYPE: "Integer", "Float", "String", "Boolean".
class QUILL_API PropertyTypes : public PropertyValueEnumeration<PROPERTY_TYPE> {
public:
    PropertyTypes();
    PropertyTypes(const PropertyTypes&) = default;
    PropertyTypes& operator=(const PropertyTypes&) = default;
    virtual ~PropertyTypes();
};

/// The words of PARAMETER_TYPE: "Integer", "Float", "String", "Boolean".
class QUILL_API ParameterTypes : public PropertyValueEnumeration<PARAMETER_TYPE> {
public:
    ParameterTypes();
    ParameterTypes(const ParameterTypes&) = default;
    ParameterTypes& operator=(const ParameterTypes&) = default;
    virtual ~ParameterTypes();
};

/// The words of every on/off property: "Enabled" and "Disabled".
class QUILL_API States : public PropertyValueEnumeration<bool> {
public:
    States();
};

} // namespace CameraInterface
