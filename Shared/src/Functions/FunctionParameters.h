// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "Exceptions/SourceLocation.h"

/// Helpers of the concrete functions.
namespace CameraInterface {

/// @throws KestrelException_Function "FunctionUnsupported"
void requireFunctionSupport(bool isSupported, const std::string& name, const KestrelExceptions::SourceLocation& here);

/// @throws KestrelException_InvalidArgument "ArgumentEmpty"  fewer than @p count parameters
void requireParameters(const std::vector<std::string>& parameters, std::size_t count,
                       const KestrelExceptions::SourceLocation& here);

/// @throws KestrelException_Function "FunctionExecution"
void requireExecution(bool succeeded, const std::string& name, const KestrelExceptions::SourceLocation& here);

/// The length of data as the SDK counts it, in 32 bits.
/// @throws KestrelException_Function "FunctionExecution"  2^32 or more
std::uint32_t requireLength(std::size_t length, const std::string& name, const KestrelExceptions::SourceLocation& here);

/// Parses any 32-bit address, with automatic base.
/// @throws std::invalid_argument "invalid stoul argument", std::out_of_range "stoul argument out of range"
std::uint32_t parseUnsignedAddress(const std::string& text);

/// "Bootloader" is 0, "Firmware" 1.
/// @throws std::invalid_argument "Reboot mode not valid."
unsigned int parseRebootMode(const std::string& mode);

} // namespace CameraInterface
