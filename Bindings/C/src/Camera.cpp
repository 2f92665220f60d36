// SPDX-License-Identifier: Apache-2.0

// A camera: identity, connection, functions.

#include <Quill.h>

#include "Blocks.h"
#include "Calls.h"
#include "Workspace.h"

using namespace CInterface;
using CameraInterface::CameraKind;
using CameraInterface::CameraState;
using CameraInterface::Function;
using CameraInterface::PARAMETER_TYPE;
using CameraInterface::ParameterDescriptor;

namespace {

static_assert(QUILL_KIND_GENICAM == static_cast<int>(CameraKind::GenICam) &&
              QUILL_KIND_SIMULATED == static_cast<int>(CameraKind::Simulated));
static_assert(QUILL_STATE_DISCONNECTED == static_cast<int>(CameraState::Disconnected) &&
              QUILL_STATE_SUSPENDED == static_cast<int>(CameraState::Suspended));
static_assert(QUILL_PARAMETER_STRING == static_cast<int>(PARAMETER_TYPE::String) &&
              QUILL_PARAMETER_FLOAT == static_cast<int>(PARAMETER_TYPE::Float));

using Descriptors = std::vector<ParameterDescriptor> (Function::*)();

quill_status giveDescriptors(quill_camera camera, const char* name, Descriptors read,
                             quill_parameter_descriptor*** list, size_t* count, quill_error* error) {
    return call(error, [&] {
        requireAll(name, list, count);
        const CameraUse use(camera);
        giveList((use->getFunction(name).*read)(),
                 [](Block& block, const ParameterDescriptor& item) {
                     quill_parameter_descriptor descriptor{};
                     descriptor.size = sizeof(descriptor);
                     descriptor.label = block.text(item.m_Label);
                     descriptor.type = static_cast<quill_parameter_type>(item.m_Type);
                     return descriptor;
                 },
                 list, count);
    });
}

} // namespace

const char* quill_get_kind_name(quill_camera_kind kind) {
    return CameraInterface::getKindName(static_cast<CameraKind>(kind));
}

quill_status quill_camera_get_serial_number(quill_camera camera, char** serial_number, quill_error* error) {
    return call(error, [&] {
        requireAll(serial_number);
        *serial_number = copyText(CameraUse(camera)->getSerialNumber());
    });
}

quill_status quill_camera_get_model_name(quill_camera camera, char** model_name, quill_error* error) {
    return call(error, [&] {
        requireAll(model_name);
        *model_name = copyText(CameraUse(camera)->getModelName());
    });
}

quill_status quill_camera_get_kind(quill_camera camera, quill_camera_kind* kind, quill_error* error) {
    return call(error, [&] {
        requireAll(kind);
        *kind = static_cast<quill_camera_kind>(CameraUse(camera)->getKind());
    });
}

quill_status quill_camera_is_camera_alive(quill_camera camera, bool* alive, quill_error* error) {
    return call(error, [&] {
        requireAll(alive);
        *alive = CameraUse(camera)->isCameraAlive();
    });
}

quill_status quill_camera_get_camera_info(quill_camera camera, quill_entry** info, size_t* count, quill_error* error) {
    return call(error, [&] {
        requireAll(info, count);
        giveEntries(CameraUse(camera)->getCameraInfo(), info, count);
    });
}

quill_status quill_camera_connect(quill_camera camera, quill_error* error) {
    return call(error, [&] { CameraUse(camera)->connect(); });
}

quill_status quill_camera_disconnect(quill_camera camera, quill_error* error) {
    return call(error, [&] { CameraUse(camera)->disconnect(); });
}

quill_status quill_camera_suspend(quill_camera camera, quill_error* error) {
    return call(error, [&] { CameraUse(camera)->suspend(); });
}

quill_status quill_camera_get_state(quill_camera camera, quill_camera_state* state, quill_error* error) {
    return call(error, [&] {
        requireAll(state);
        *state = static_cast<quill_camera_state>(CameraUse(camera)->getState());
    });
}

quill_status quill_camera_is_connected(quill_camera camera, bool* connected, quill_error* error) {
    return call(error, [&] {
        requireAll(connected);
        *connected = CameraUse(camera)->isConnected();
    });
}

quill_status quill_camera_get_supported_functions(quill_camera camera, char*** names, size_t* count,
                                                  quill_error* error) {
    return call(error, [&] {
        requireAll(names, count);
        giveTexts(CameraUse(camera)->getSupportedFunctions(), names, count);
    });
}

quill_status quill_camera_perform(quill_camera camera, const char* name, const quill_bytes* parameters,
                                  size_t parameter_count, quill_bytes** results, size_t* count, quill_error* error) {
    return call(error, [&] {
        requireAll(name, results, count);
        requireData(parameters, parameter_count);
        std::vector<std::string> texts;
        for (size_t i = 0; i < parameter_count; ++i) {
            requireData(parameters[i].data, parameters[i].length);
            texts.emplace_back(static_cast<const char*>(parameters[i].data), parameters[i].length);
        }
        const std::vector<std::string> answers = CameraUse(camera)->perform(name, texts);
        Block block;
        auto* const list = block.array<quill_bytes>(answers.size());
        for (size_t i = 0; i < answers.size(); ++i) {
            list[i] = block.bytes(answers[i].data(), answers[i].size());
        }
        block.give(list, results);
        *count = answers.size();
    });
}

quill_status quill_function_is_available(quill_camera camera, const char* name, bool* available, quill_error* error) {
    return call(error, [&] {
        requireAll(name, available);
        *available = CameraUse(camera)->getFunction(name).isAvailable();
    });
}

quill_status quill_function_get_parameters(quill_camera camera, const char* name,
                                           quill_parameter_descriptor*** parameters, size_t* count,
                                           quill_error* error) {
    return giveDescriptors(camera, name, &Function::getParameters, parameters, count, error);
}

quill_status quill_function_get_return_format(quill_camera camera, const char* name,
                                              quill_parameter_descriptor*** results, size_t* count,
                                              quill_error* error) {
    return giveDescriptors(camera, name, &Function::getReturnFormat, results, count, error);
}
