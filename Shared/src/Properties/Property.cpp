// SPDX-License-Identifier: Apache-2.0

#include "Properties/Property.h"

#include <utility>

#include "Properties/PropertyMetadata.h"

namespace CameraInterface {

Property::Property(const std::string& name, const PROPERTY_TYPE& type) : m_Name(name), m_Type(type) {}

Property::~Property() {
    unregisterOnChangeCallback();
}

void Property::resetToDefault() {
    setValue(getDefault());
}

void Property::update(bool notifyLinked) {
    onChange(notifyLinked);
}

std::string Property::getUnit() {
    return getPropertyMetadata(m_Name).unit;
}

std::string Property::getIncrement() {
    std::string text = m_IncrementProperty != nullptr ? m_IncrementProperty->getValue() : "";
    if (text.find('.') != std::string::npos) { // "8.000000", the number of a camera
        text.erase(text.find_last_not_of('0') + 1);
        text.erase(text.find_last_not_of('.') + 1);
    }
    return text;
}

std::string Property::getDescription() {
    return getPropertyMetadata(m_Name).description;
}

std::string Property::getCategory() {
    return getPropertyMetadata(m_Name).category;
}

PropertyVisibility Property::getVisibility() {
    return PropertyVisibility::Beginner;
}

std::string Property::getName() const {
    return m_Name;
}

PROPERTY_TYPE Property::getType() const {
    return m_Type;
}

Property::operator std::string() {
    return getValue();
}

void Property::operator=(const std::string& value) { // NOLINT(misc-unconventional-assign-operator)
    setValue(value);
}

void Property::addLinkedProperty(Property& other) {
    m_LinkedProperties.emplace(other.getName(), &other);
}

void Property::removeLinkedProperty(Property& other) {
    m_LinkedProperties.erase(other.getName());
}

void Property::registerOnChangeCallback(std::function<void(Property&)> callback) {
    m_OnChangeCallback.swap(callback); // the former callback is destroyed last: it may call back here
}

void Property::unregisterOnChangeCallback() {
    registerOnChangeCallback({});
}

void Property::onChange(bool notifyLinked) {
    if (notifyLinked && !m_LinkedProperties.empty()) {
        // By name, because the callback of a linked property may add and remove links.
        std::vector<std::string> names;
        names.reserve(m_LinkedProperties.size());
        for (const auto& entry : m_LinkedProperties) {
            names.push_back(entry.first);
        }
        for (const std::string& name : names) {
            const auto partner = m_LinkedProperties.find(name);
            if (partner != m_LinkedProperties.end()) {
                partner->second->update(false);
            }
        }
    }
    executeOnChangeCallback();
}

void Property::executeOnChangeCallback() {
    if (m_Observer) {
        m_Observer();
    }
    if (m_OnChangeCallback) {
        const auto callback = m_OnChangeCallback; // a copy, because the callback may replace itself while it runs
        callback(*this);
    }
}

} // namespace CameraInterface
