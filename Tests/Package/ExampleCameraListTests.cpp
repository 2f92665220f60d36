// SPDX-License-Identifier: Apache-2.0

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <Quill.h>

namespace {

using CameraInterface::Camera;
using CameraInterface::Property;
using CameraInterface::PROPERTY_TYPE;
using testing::AnyOf;
using testing::Contains;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

/// Wrong entries of the list are silently ignored; this check detects them.
void expectComplete(Property& property) {
    EXPECT_THAT(property.getDefault(), Not(IsEmpty()));
    EXPECT_THAT(property.getMinimum(), Not(IsEmpty()));
    EXPECT_THAT(property.getMaximum(), Not(IsEmpty()));
    if (!property.isDiscrete()) {
        const bool isNumber =
            property.getType() == PROPERTY_TYPE::Integer || property.getType() == PROPERTY_TYPE::Float;
        EXPECT_TRUE(isNumber || property.isReadOnly()) << "a setting without choices";
        EXPECT_THAT(property.getValueList(), IsEmpty());
        return;
    }
    for (const std::string& text : {property.getDefault(), property.getMinimum(), property.getMaximum()}) {
        EXPECT_THAT(property.getValueList(), Contains(text));
    }
}

TEST(ExampleCameraList, DescribesCamerasCompletely) {
    Camera::initialiseWorkspace();
    int simulated = 0;
    for (const auto& [serialNumber, modelName] : Camera::getCamerasList()) {
        if (modelName.rfind("Model S-", 0) != 0) {
            continue; // a camera of another kind
        }
        ++simulated;
        Camera& camera = Camera::getCamera(serialNumber);
        camera.connect();
        EXPECT_EQ(camera.getProperty("Serial Number").getValue(), serialNumber);
        EXPECT_EQ(camera.getProperty("Model Name").getValue(), modelName);
        EXPECT_EQ(camera.getProperty("Vendor Name").getValue(), "Meridane");
        EXPECT_THAT(camera.getSupportedProperties(), SizeIs(testing::Ge(30u)));
        for (const std::string& name : camera.getSupportedProperties()) {
            SCOPED_TRACE(serialNumber + ": " + name);
            expectComplete(camera.getProperty(name));
        }
        EXPECT_THAT(camera.getSupportedFunctions(),
                    testing::ElementsAre("Erase Flash", "Jtag", "Read Flash", "Read Flash Status", "Reboot",
                                         "Update Flash", "Write Flash", "Write Flash Status", "Write Ram"));
        for (const std::string& name : camera.getSupportedFunctions()) {
            SCOPED_TRACE(serialNumber + ": " + name);
            CameraInterface::Function& function = camera.getFunction(name);
            EXPECT_THAT(function.getParameters(), SizeIs(AnyOf(1u, 2u)));
            EXPECT_THAT(function.getReturnFormat(), SizeIs(name.rfind("Read", 0) == 0 ? 1u : 0u));
        }
    }
    EXPECT_GE(simulated, 4);
    Camera::unitialisedWorkpace();
}

} // namespace
