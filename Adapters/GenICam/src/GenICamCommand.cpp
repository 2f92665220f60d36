// SPDX-License-Identifier: Apache-2.0

#include "GenICamCommand.h"

#include "Exceptions/Raise.h"
#include "GenICamCamera.h"

namespace GenICamAdapter {

using namespace CameraInterface;
using namespace KestrelExceptions;

GenICamCommand::GenICamCommand(GenICamCamera& camera, const std::string& name) : Function(name), m_Camera(&camera) {}

std::vector<std::string> GenICamCommand::perform(std::vector<std::string>& /*parameters*/) {
    const std::shared_ptr<Device> device = m_Camera->device();
    std::string why = "The camera is not connected.";
    if (device) {
        Failure failure;
        arv_device_execute_command(device->get(), getName().c_str(), failure.out());
        why = failure.text();
    }
    if (!why.empty()) {
        throw KestrelException_Function(Errors::kFunctionExecution.name, __FILE__, __LINE__,
                                        std::string(Errors::kFunctionExecution.description) + " " + why, getName());
    }
    return {};
}

bool GenICamCommand::isAvailable() {
    const std::shared_ptr<Device> device = m_Camera->device();
    if (!device) {
        return false;
    }
    ArvGcNode* const node = arv_device_get_feature(device->get(), getName().c_str());
    if (!ARV_IS_GC_FEATURE_NODE(node)) {
        return false;
    }
    auto* const feature = ARV_GC_FEATURE_NODE(node);
    Failure failure;
    return arv_gc_feature_node_is_available(feature, failure.out()) != FALSE &&
           arv_gc_feature_node_is_locked(feature, failure.out()) == FALSE;
}

std::vector<ParameterDescriptor> GenICamCommand::getParameters() {
    return {};
}

std::vector<ParameterDescriptor> GenICamCommand::getReturnFormat() {
    return {};
}

} // namespace GenICamAdapter
