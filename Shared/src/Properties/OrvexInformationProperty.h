#pragma once

#include <string>
#include <vector>

#include "Properties/Property.h"

namespace OrvexAdapter {

class OrvexCamera;

/// A text in which the camera describes itself; never writable. Its limits and its default are the value.
class OrvexInformationProperty : public CameraInterface::Property {
public:
    OrvexInformationProperty(const std::string& name, const CameraInterface::PROPERTY_TYPE& type, OrvexCamera& camera);

    using Property::operator=;

    std::string getMinimum() override;
    std::string getMaximum() override;
    std::string getDefault() override;
    bool isReadOnly() override;
    bool isAvailableForWriting() override;
    bool isDiscrete() override;
    std::vector<std::string> getValueList() override;
    /// Ignored.
    void setValue(const std::string& value) override;

protected:
    OrvexCamera* m_Camera; // owns this property
};

} // namespace OrvexAdapter
