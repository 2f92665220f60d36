// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <arv.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "FeatureTree.h"
#include "Properties/Property.h"

namespace GenICamAdapter {

class Device;
class GenICamCamera;

using Properties = std::map<std::string, std::unique_ptr<CameraInterface::Property>>;

/// A feature of the camera under its own name. Limits, choices and access are asked of the camera at every call.
///
/// A number is limited to the range and rounded to the nearest step; a write is ignored while the property cannot be
/// written. The camera keeps no defaults: the default is the present value.
class FeatureProperty : public CameraInterface::Property {
public:
    FeatureProperty(GenICamCamera& camera, FeatureDescription feature, CameraInterface::PROPERTY_TYPE type);

    std::string getMinimum() override { return ""; }
    std::string getMaximum() override { return ""; }
    std::string getDefault() override { return getValue(); }
    bool isReadOnly() override;
    bool isAvailableForWriting() override;
    bool isDiscrete() override { return false; }
    std::vector<std::string> getValueList() override { return {}; }
    void setValue(const std::string& value) override;
    /// Writes without telling anybody: for a selector that gets its former value back.
    void setQuietly(const std::string& value);
    std::string getUnit() override { return m_Feature.unit; }
    std::string getIncrement() override { return ""; }
    std::string getDescription() override { return m_Feature.description; }
    std::string getCategory() override { return m_Feature.category; }
    CameraInterface::PropertyVisibility getVisibility() override { return m_Feature.visibility; }

protected:
    /// Writes a text that may be written now.
    virtual void write(const std::string& value) = 0;

    /// Calls `call(node, failure)` with the feature's node, and returns its result.
    /// @throws KestrelException_Property "PropertyReadFailure"  the camera is not open, or the call fails
    template <typename Call>
    auto ask(Call call);
    /// The same for a write: "PropertyWriteFailure".
    template <typename Call>
    void tell(Call call);

    /// Calls a function that returns a limit. Empty if the description refers to a limit that it does not have: the
    /// value is still worth showing.
    template <typename Text>
    std::string limitText(Text text);

private:
    ArvGcNode* requireNode(const Device* device, const char* word, const char* sentence);
    [[noreturn]] void fail(const char* word, const char* sentence, const std::string& why);

    GenICamCamera* m_Camera;
    FeatureDescription m_Feature;
};

std::unique_ptr<CameraInterface::Property> makeFeatureProperty(GenICamCamera& camera,
                                                               const FeatureDescription& feature);

/// Makes properties tell of changes of others that depend on them: a selector of what it selects, the properties of the
/// image's format of each other.
void linkFeatures(const std::vector<FeatureDescription>& features, Properties& properties);

} // namespace GenICamAdapter
