// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "FeatureProperties.h"

namespace GenICamAdapter {

/// Adds the properties that every kind of camera has, such as "Exposure" in milliseconds, as far as a feature serves
/// them; those that are there stay.
void addStandardProperties(GenICamCamera& camera, Properties& properties);

} // namespace GenICamAdapter
