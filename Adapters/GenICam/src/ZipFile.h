// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>

namespace GenICamAdapter {

/// Whether the bytes begin like a ZIP file.
bool isZipped(const std::string& bytes);

/// Expands the first file of a ZIP file, stored or deflated. Its size is known before anything is expanded, and kept.
/// @throws std::runtime_error  it is larger than @p mostBytes, or the ZIP file is broken
std::string unzipFirst(const std::string& bytes, std::size_t mostBytes);

} // namespace GenICamAdapter
