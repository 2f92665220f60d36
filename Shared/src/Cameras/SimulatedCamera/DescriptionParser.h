// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <istream>
#include <string>

#include <nlohmann/json_fwd.hpp>

namespace CameraInterface::SimulatedAdapter {

// A list is a file that a user wrote: these numbers bound the memory and the time that a broken or hostile one takes,
// far above every list that makes sense.

/// Bytes; the parser may take ten times as many for a list that is one number.
constexpr std::size_t kLargestDescriptionFile = std::size_t{32} * 1024 * 1024;
constexpr std::size_t kMostCameras = 100'000;
/// JSON values that are kept of one camera, of up to 150 bytes each besides its text.
constexpr std::size_t kMostValuesOfCamera = 1'000'000;

/// Reads a camera list and calls @p visit with each entry of "Cameras", in the order in which the JSON library iterates
/// them. Only one entry is kept at a time, and of it only "Identification" and @p key; the rest is read over. Text
/// after the document is not read.
/// @param key an entry's other key that is wanted; empty: none
/// @param forget called where "Cameras" comes once more, which replaces everything that was visited
/// @throws nlohmann::json::exception  the stream has no JSON document; or what the first visit that failed threw
/// @throws std::length_error  more cameras, or more values of a camera, than above
void visitCameras(std::istream& stream, const std::string& key,
                  const std::function<void(const nlohmann::json& camera)>& visit, const std::function<void()>& forget);

} // namespace CameraInterface::SimulatedAdapter
