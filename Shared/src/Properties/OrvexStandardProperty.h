// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "Properties/Property.h"

namespace OrvexAdapter {

class OrvexCamera;

/// A continuous SDK property: a numbered value that the camera keeps as a float with a word of flags.
///
/// Nothing is cached: every operation queries the camera, with its present handle. Texts have six decimals. Unless
/// stated otherwise, a failed read throws KestrelException_Property "PropertyReadFailure" or, for the range,
/// "PropertyRangeReadFailure".
class OrvexStandardProperty : public CameraInterface::Property {
public:
    /// @throws KestrelException_Property "PropertyUnsupported"  the camera reports that it has no such property; a
    /// property that cannot be read for another reason counts as supported
    OrvexStandardProperty(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera,
                          const unsigned long& propertyId);

    /// Asks a camera whether it has the property of a number. As long as this object lives, constructors of that camera
    /// and number on this thread take the answer over instead of asking again.
    class Question {
    public:
        Question(OrvexCamera& camera, unsigned long propertyId);
        Question(const Question&) = delete;
        Question& operator=(const Question&) = delete;
        ~Question();

        bool isSupported() const { return m_IsSupported; }

    private:
        friend OrvexStandardProperty;

        OrvexCamera* m_Camera;
        std::uint32_t m_PropertyId;
        bool m_IsSupported;
    };

    /// Makes the property as the constructor does; returns null instead of throwing.
    static std::unique_ptr<CameraInterface::Property> makeIfSupported(const std::string& name,
                                                                      const CameraInterface::PROPERTY_TYPE& type,
                                                                      OrvexCamera& camera,
                                                                      const unsigned long& propertyId);

    using Property::operator=;

    std::string getMinimum() override;
    std::string getMaximum() override;
    std::string getValue() override;
    std::string getDefault() override;
    /// @throws KestrelException_Property "PropertyErrorUnknown"
    bool isReadOnly() override;
    /// Tests it by writing the present value back.
    /// @throws KestrelException_Property "PropertyErrorUnknown"
    bool isAvailableForWriting() override;
    bool isDiscrete() override;
    std::vector<std::string> getValueList() override;
    /// Writes the number, limited to the range. Ignores it while the property cannot be written.
    /// @throws std::invalid_argument, std::out_of_range  the text is not a number
    /// @throws KestrelException_Property "PropertyWriteFailure"
    void setValue(const std::string& value) override;

    /// Limits a number's text to the range of the property.
    virtual std::string clampToRange(std::string text);

protected:
    float readValue();
    std::int32_t readFlags();
    float readMinimum();
    float readMaximum();
    float readDefault();
    /// Writes a value that differs from the present one, with the present flags, and reports the change.
    void writeValue(const float& value);
    /// Writes flags, with the present value, and reports the change.
    void writeFlags(std::int32_t flags);
    bool isWritable();

    OrvexCamera* m_Camera; // owns this property
    std::uint32_t m_PropertyId;

private:
    struct State {
        float value = 0;
        std::int32_t flags = 0;
    };
    struct Range {
        float minimum = 0;
        float maximum = 0;
        float defaultValue = 0;
        std::int32_t flags = 0;
    };

    static bool tryToRead(OrvexCamera& camera, std::uint32_t propertyId, State& state);
    static bool isSupported(OrvexCamera& camera, std::uint32_t propertyId);
    State readState();
    Range readRange();
    bool writeState(const State& state);
    void writeAndNotify(const State& state);
};

} // namespace OrvexAdapter
