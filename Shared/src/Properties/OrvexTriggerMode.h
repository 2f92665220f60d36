#pragma once

#include <string>

#include "Properties/OrvexNumberedProperty.h"

namespace OrvexAdapter {

/// How a trigger times the exposure. Only the low byte of the SDK's number is the mode.
class OrvexTriggerMode : public OrvexNumberedProperty<TriggerModes> {
public:
    using OrvexNumberedProperty::OrvexNumberedProperty;
    using OrvexNumberedProperty::operator=;

    std::string getMaximum() override;

protected:
    int numberOf(float value) const override;
};

} // namespace OrvexAdapter
