// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <arv.h>

#include <string>
#include <vector>

#include "Properties/Property.h"

namespace GenICamAdapter {

enum class FeatureKind { Integer, Float, Boolean, Enumeration, Text, Bytes, Command };

/// The feature by which a program keeps the format of images from changing during a run.
constexpr const char* kLockOfStream = "TLParamsLocked";

/// A feature of a camera's description, without its value.
struct FeatureDescription {
    std::string name;
    FeatureKind kind = FeatureKind::Integer;
    std::string category; ///< of the description, in words
    std::string unit;
    std::string description;
    CameraInterface::PropertyVisibility visibility = CameraInterface::PropertyVisibility::Beginner;
    bool isLockedWithStream = false;   ///< by kLockOfStream
    std::vector<std::string> selected; ///< the features whose values depend on this one, a selector
};

/// The features that a camera implements, in the order of its description; asks the camera only what it implements.
std::vector<FeatureDescription> describeFeatures(ArvDevice* device);

} // namespace GenICamAdapter
