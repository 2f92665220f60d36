// SPDX-License-Identifier: Apache-2.0

#include "Functions/Simulated/SimulatedFunctions.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace CameraInterface::SimulatedAdapter {

namespace {

template <typename Class>
std::unique_ptr<Function> make(SimulatedCamera* camera, const SimulatedFunctionDescription& description) {
    return std::make_unique<Class>(camera, description.m_Name, description.m_Parameters, description.m_ReturnFormat);
}

/// A function name and its factory.
struct FunctionFactory {
    std::string_view name;
    std::unique_ptr<Function> (*make)(SimulatedCamera*, const SimulatedFunctionDescription&);
};

constexpr std::array<FunctionFactory, 7> kFactories{{
    {"Read Flash", make<SimulatedReadFlash>},
    {"Write Flash", make<SimulatedWriteFlash>},
    {"Erase Flash", make<SimulatedEraseFlash>},
    {"Update Flash", make<SimulatedUpdateFlash>},
    {"Read Flash Status", make<SimulatedReadFlashStatus>},
    {"Write Flash Status", make<SimulatedWriteFlashStatus>},
    {"Reboot", make<SimulatedReboot>},
}};

} // namespace

std::unique_ptr<Function> makeSimulatedFunction(SimulatedCamera* camera,
                                                const SimulatedFunctionDescription& description) {
    const auto* row = std::find_if(kFactories.begin(), kFactories.end(),
                                   [&](const FunctionFactory& factory) { return factory.name == description.m_Name; });
    return row == kFactories.end() ? make<SimulatedFunction>(camera, description) : row->make(camera, description);
}

} // namespace CameraInterface::SimulatedAdapter
