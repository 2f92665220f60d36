// SPDX-License-Identifier: Apache-2.0

#include "Properties/Property.h"

#include <limits>
#include <memory>

#include <gtest/gtest.h>

#include "Exceptions/KestrelException.h"
#include "Properties/BooleanProperty.h"
#include "Properties/MemoryProperty.h"
#include "Properties/PropertyConditional.h"
#include "Support/Throws.h"

namespace {

using namespace CameraInterface;
using KestrelExceptions::KestrelException;
using TestSupport::expectFailure;
using Texts = std::vector<std::string>;

const char* const kNoValue = "Failed to convert value to string. Provided value not found.";
const char* const kNoText = "Failed to convert string to value. Provided string not found.";

template <typename T>
MemoryProperty<T> continuous(PROPERTY_TYPE type, T value, bool readOnly = false) {
    return {"P", type, T{}, T{}, value, readOnly, false, {}};
}

MemoryProperty<int> integer(const std::string& name) {
    return {name, PROPERTY_TYPE::Integer, 0, 9, 1, false, false, {}};
}

MemoryProperty<int> discrete() {
    return {"Steps", PROPERTY_TYPE::Integer, 5, 100, 5, false, true, {{"5 x", 5}, {"100 x", 100}}};
}

/// Counts the changes that a property reports.
struct ChangeListener {
    explicit ChangeListener(Property& property) {
        property.registerOnChangeCallback([this](Property& changed) { names.push_back(changed.getName()); });
    }
    Texts names;
};

TEST(PropertyValueEnumeration, ConvertsBothWaysAndNamesWhatItCannot) {
    PropertyValueEnumeration<int> values;
    EXPECT_EQ(values.getList(), Texts{});
    for (const auto& [text, value] :
         std::vector<std::pair<std::string, int>>{{"Off", 0}, {"Disabled", 0}, {"a", 1}, {"a", 2}}) {
        values.insert(text, value);
    }
    EXPECT_EQ(values.getList(), (Texts{"Disabled", "Off", "a"})) << "capitals come before lower-case letters";
    EXPECT_EQ(values.toString(0), "Disabled") << "the first text in order";
    EXPECT_EQ(values.toValue("a"), 1) << "the first insertion stays";
    expectFailure<KestrelException>([&] { values.toString(2); }, "PropertyValueConversion", kNoValue);
    const auto failure =
        expectFailure<KestrelException>([&] { values.toValue("A"); }, "PropertyValueConversion", kNoText);
    EXPECT_NE(std::string(failure.where()).find("[Shared/include/PropertyValueEnumerations.h]"), std::string::npos);
    const PropertyValueEnumeration<double> exact = std::map<std::string, double>{{"0.3", 0.3}};
    expectFailure<KestrelException>([&] { exact.toString(0.1 + 0.2); }, "PropertyValueConversion", kNoValue);
}

TEST(PropertyValueEnumeration, TypeWordsStandForDifferentNumbers) {
    EXPECT_EQ(static_cast<int>(PropertyTypes().toValue("String")), 2);
    EXPECT_EQ(static_cast<int>(ParameterTypes().toValue("String")), 1);
    EXPECT_EQ(static_cast<int>(PropertyTypes().toValue("Float")), 1);
    EXPECT_EQ(static_cast<int>(ParameterTypes().toValue("Float")), 3);
    EXPECT_EQ(PropertyTypes().getList(), (Texts{"Boolean", "Float", "Integer", "String"}));
}

TEST(MemoryProperty, ReportsEachWriteThatIsMade) {
    auto property = continuous(PROPERTY_TYPE::Float, 2.5);
    ChangeListener listener(property);
    property.setValue("2.50");
    EXPECT_EQ(listener.names.size(), 0U) << "the present text is not a change";
    property.setValue("2.5");
    EXPECT_EQ(listener.names.size(), 1U) << "another text for the same number is a change";
    property = std::string("4");
    EXPECT_EQ(std::string(property), "4.00");
    property.unregisterOnChangeCallback();
    property.setValue("5");
    EXPECT_EQ(listener.names.size(), 2U);
    auto infinite = continuous(PROPERTY_TYPE::Float, -std::numeric_limits<double>::infinity());
    infinite.setValue("-inf");
    EXPECT_EQ(infinite.getValue(), "-inf") << "also the present text, which is not parsed as infinity";
}

TEST(Property, AChangeTravelsOneLinkFar) {
    MemoryProperty<int> a = integer("A");
    MemoryProperty<int> b = integer("B");
    MemoryProperty<int> c = integer("C");
    Texts order;
    for (Property* property : {static_cast<Property*>(&a), static_cast<Property*>(&b), static_cast<Property*>(&c)}) {
        property->registerOnChangeCallback([&](Property& changed) { order.push_back(changed.getName()); });
    }
    b.addLinkedProperty(a);
    a.addLinkedProperty(b);
    a.addLinkedProperty(c);
    b.addLinkedProperty(c);
    a.setValue("2");
    EXPECT_EQ(order, (Texts{"B", "C", "A"})) << "partners in name order, then the property itself";
    a.removeLinkedProperty(b);
    order.clear();
    a.setValue("3");
    EXPECT_EQ(order, (Texts{"C", "A"}));
    c.registerOnChangeCallback([](Property&) { throw std::runtime_error("partner"); });
    TestSupport::expectStandard<std::runtime_error>([&] { a.setValue("4"); }, "partner");
    EXPECT_EQ(a.getValue(), "4");
}

TEST(Property, ACallbackMayChangeLinksAndCallbacksWhileItRunsOrIsDestroyed) {
    MemoryProperty<int> a = integer("A");
    MemoryProperty<int> b = integer("B");
    std::unique_ptr<MemoryProperty<int>> c(new MemoryProperty<int>(integer("C")));
    a.addLinkedProperty(b);
    a.addLinkedProperty(*c);
    b.registerOnChangeCallback([&](Property&) {
        a.removeLinkedProperty(b);
        a.removeLinkedProperty(*c);
        c.reset();
    });
    a.setValue("2");
    EXPECT_EQ(c, nullptr);
    struct ComesBack {
        ~ComesBack() { property.unregisterOnChangeCallback(); }
        Property& property;
    };
    a.registerOnChangeCallback([owned = std::shared_ptr<ComesBack>(new ComesBack{a})](Property&) {});
    a.unregisterOnChangeCallback();
    EXPECT_NO_THROW(a.setValue("3"));
}

TEST(BooleanProperty, IsASilentSwitch) {
    BooleanProperty property("Strobe", PROPERTY_TYPE::Boolean);
    ChangeListener listener(property);
    property.setValue("Enabled");
    EXPECT_EQ(property.getValue(), "Enabled");
    expectFailure<KestrelException>([&] { property.setValue("1"); }, "PropertyValueConversion", kNoText);
    EXPECT_EQ(listener.names.size(), 0U);
}

TEST(PropertyConditional, FollowsItsConditionAtOnce) {
    MemoryProperty<int> mode("Mode", PROPERTY_TYPE::Integer, 0, 1, 0, false, true, {{"Video", 0}, {"Still", 1}});
    MemoryProperty<double> video("Video Exposure", PROPERTY_TYPE::Float, 1, 9, 2, false, false, {});
    auto still = discrete();
    PropertyConditional exposure("Exposure", PROPERTY_TYPE::Float, mode, "Video", video, still);
    ChangeListener ofVideo(video);
    ChangeListener ofExposure(exposure);
    exposure.setValue("5");
    exposure.update(true);
    EXPECT_EQ(ofVideo.names, Texts{"Video Exposure"});
    EXPECT_EQ(ofExposure.names, Texts{"Exposure"});
    mode.setValue("Still");
    EXPECT_EQ(exposure.getValue(), "5 x");
    EXPECT_EQ(video.getUnit() + ", " + video.getCategory(), "ms, Acquisition Control");
    EXPECT_EQ(exposure.getUnit() + still.getDescription() + still.getCategory(), "") << "those of an unknown name";
    EXPECT_TRUE(exposure.isDiscrete());
    exposure.setValue("100 x");
    exposure.resetToDefault();
    EXPECT_EQ(still.getValue(), "5 x");
    EXPECT_EQ(video.getValue(), "5.00");
}

} // namespace
