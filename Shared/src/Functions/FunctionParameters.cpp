// SPDX-License-Identifier: Apache-2.0

#include "Functions/FunctionParameters.h"

#include <limits>
#include <stdexcept>

#include "Base/TextConversion.h"
#include "Exceptions/Raise.h"

namespace CameraInterface {

using namespace KestrelExceptions;

void requireFunctionSupport(bool isSupported, const std::string& name, const SourceLocation& here) {
    if (!isSupported) {
        raise<KestrelException_Function>(here, Errors::kFunctionUnsupported, name);
    }
}

void requireParameters(const std::vector<std::string>& parameters, std::size_t count, const SourceLocation& here) {
    if (parameters.size() < count) {
        raise<KestrelException_InvalidArgument>(here, Errors::kArgumentEmpty, "parameters");
    }
}

void requireExecution(bool succeeded, const std::string& name, const SourceLocation& here) {
    if (!succeeded) {
        raise<KestrelException_Function>(here, Errors::kFunctionExecution, name);
    }
}

std::uint32_t requireLength(std::size_t length, const std::string& name, const SourceLocation& here) {
    requireExecution(length <= std::numeric_limits<std::uint32_t>::max(), name, here);
    return static_cast<std::uint32_t>(length);
}

std::uint32_t parseUnsignedAddress(const std::string& text) {
    return static_cast<std::uint32_t>(Base::parseUnsigned(text, Base::kAutomaticBase));
}

unsigned int parseRebootMode(const std::string& mode) {
    if (mode == "Bootloader") {
        return 0;
    }
    if (mode == "Firmware") {
        return 1;
    }
    throw std::invalid_argument("Reboot mode not valid.");
}

} // namespace CameraInterface
