// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <functional>
#include <istream>
#include <string>

#include <nlohmann/json_fwd.hpp>

namespace CameraInterface::SimulatedAdapter {

// A user writes the list: these limits bound the memory and the time that a broken or hostile file takes, far above
// any list that makes sense.

/// In bytes; the parser may take ten times as much memory for a list that is one number.
constexpr std::size_t kLargestDescriptionFile = std::size_t{32} * 1024 * 1024;
constexpr std::size_t kMostCameras = 100'000;
/// JSON values kept of one camera, each of up to 150 bytes besides its text.
constexpr std::size_t kMostValuesOfCamera = 1'000'000;

/// Reads a camera list and calls @p visit with each entry of "Cameras", in the order in which the JSON library iterates
/// them. Only one entry is kept at a time, and of it only "Identification" and @p key; the rest is skipped. Text after
/// the document is not read.
/// @param key another key to keep of each entry; empty: none
/// @param forget called if "Cameras" occurs again, which replaces all entries visited before
/// @throws nlohmann::json::exception  the stream has no JSON document; or the exception of the first visit that failed
/// @throws std::length_error  more cameras, or more values of a camera, than above
void visitCameras(std::istream& stream, const std::string& key,
                  const std::function<void(const nlohmann::json& camera)>& visit, const std::function<void()>& forget);

} // namespace CameraInterface::SimulatedAdapter
