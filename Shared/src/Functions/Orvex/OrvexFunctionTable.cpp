// SPDX-License-Identifier: Apache-2.0

#include "Functions/Orvex/OrvexFunctions.h"

#include <array>
#include <exception>
#include <utility>

namespace OrvexAdapter {

using CameraInterface::Function;

namespace {

template <typename Class>
std::unique_ptr<Function> make(const std::string& name, OrvexCamera* camera) {
    return std::make_unique<Class>(name, camera);
}

/// A function name and its factory.
struct FunctionFactory {
    const char* name;
    std::unique_ptr<Function> (*make)(const std::string& name, OrvexCamera* camera);
};

constexpr std::array<FunctionFactory, 9> kFactories{{
    {"Write Flash", make<OrvexWriteFlash>},
    {"Update Flash", make<OrvexUpdateFlash>},
    {"Read Flash", make<OrvexReadFlash>},
    {"Erase Flash", make<OrvexEraseFlash>},
    {"Read Flash Status", make<OrvexReadFlashStatus>},
    {"Write Flash Status", make<OrvexWriteFlashStatus>},
    {"Reboot", make<OrvexReboot>},
    {"Jtag", make<OrvexJtag>},
    {"Write Ram", make<OrvexWriteRam>},
}};

} // namespace

void buildOrvexFunctions(std::map<std::string, std::unique_ptr<Function>>& functions, OrvexCamera* camera) {
    for (const FunctionFactory& factory : kFactories) {
        try {
            std::unique_ptr<Function> function = factory.make(factory.name, camera);
            std::string name = function->getName();
            functions.emplace(std::move(name), std::move(function));
        } catch (const std::exception&) {
            // A function that cannot be constructed is omitted.
        }
    }
}

} // namespace OrvexAdapter
