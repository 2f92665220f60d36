// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Properties/OrvexStandardProperty.h"

namespace OrvexAdapter {

/// An SDK property whose number, or one of its flags, stands for one of a set of named values.
class OrvexEnumProperty : public OrvexStandardProperty {
public:
    using OrvexStandardProperty::OrvexStandardProperty;
    using OrvexStandardProperty::operator=;

    std::string getMinimum() override = 0;
    std::string getMaximum() override = 0;
    std::string getValue() override = 0;
    std::string getDefault() override = 0;
    bool isDiscrete() override;
    std::vector<std::string> getValueList() override = 0;
    void setValue(const std::string& value) override = 0;
};

} // namespace OrvexAdapter
