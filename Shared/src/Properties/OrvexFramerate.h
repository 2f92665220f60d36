// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Properties/Property.h"

namespace OrvexAdapter {

class OrvexCamera;

/// The frame rate, one of those that the camera offers, in frames per second with six decimals. Every operation queries
/// the camera; a failed read throws KestrelException_Property "PropertyReadFailure".
class OrvexFramerate : public CameraInterface::Property {
public:
    /// @throws KestrelException_Property "PropertyUnsupported"  the camera offers no rates, or an impossible number
    OrvexFramerate(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using Property::operator=;

    /// The first rate that the camera offers; empty if there is none.
    std::string getMinimum() override;
    /// The last rate that the camera offers; empty if there is none.
    std::string getMaximum() override;
    std::string getValue() override;
    /// The rate of the default clock speed: the last one at the lowest speed, and one rate earlier for every step up.
    std::string getDefault() override;
    bool isReadOnly() override;
    /// Only while the camera is not streaming; yet setValue() stops and restarts a running stream.
    bool isAvailableForWriting() override;
    bool isDiscrete() override;
    /// The rates in the order of the camera.
    std::vector<std::string> getValueList() override;
    /// Sets the first rate whose text contains @p value. Stops a running stream and restarts it afterwards; if the
    /// write fails, the stream stays stopped.
    /// @throws std::invalid_argument  there is no such rate
    /// @throws KestrelException_Property "PropertyWriteFailure"
    void setValue(const std::string& value) override;

    /// The first text of the value list that contains @p text.
    /// @throws std::invalid_argument  there is none, or @p text is empty
    virtual std::string findValueInList(std::string text);

private:
    std::uint32_t countRates();
    unsigned int defaultClockSteps();

    OrvexCamera* m_Camera; // owns this property
};

} // namespace OrvexAdapter
