// SPDX-License-Identifier: Apache-2.0

#include <exception>
#include <vector>

#include <Quill.h>

#include "Blocks.h"
#include "Callbacks.h"
#include "Calls.h"
#include "Workspace.h"

using namespace CInterface;
using CameraInterface::CameraSettings;
using CameraInterface::SettingDifference;
using CameraInterface::SettingsOptions;
using CameraInterface::SettingsReport;

namespace {

/// A struct of settings that cannot be read, and the lists in it.
CameraSettings fromCallersSettings(const quill_camera_settings& theirs) {
    const auto settings = fromCaller(&theirs, quill_camera_settings{});
    requireAll(settings.kind, settings.model_name, settings.serial_number);
    requireData(settings.values, settings.value_count);
    CameraSettings result{settings.kind, settings.model_name, settings.serial_number, {}};
    for (size_t i = 0; i < settings.value_count; ++i) {
        requireAll(settings.values[i].key, settings.values[i].value);
        result.values[settings.values[i].key] = settings.values[i].value;
    }
    return result;
}

void giveSettings(const CameraSettings& source, quill_camera_settings** result) {
    Block block;
    auto* const settings = block.make(quill_camera_settings{});
    settings->size = sizeof(*settings);
    settings->kind = block.text(source.kind);
    settings->model_name = block.text(source.modelName);
    settings->serial_number = block.text(source.serialNumber);
    settings->values = block.entries(source.values);
    settings->value_count = source.values.size();
    block.give(settings, result);
}

quill_setting_difference makeDifference(Block& block, const SettingDifference& source) {
    return {sizeof(quill_setting_difference), block.text(source.name), block.text(source.wanted),
            block.text(source.present), block.text(source.reason)};
}

void giveReport(const SettingsReport& source, quill_settings_report** result) {
    Block block;
    auto* const report = block.make(quill_settings_report{});
    const auto differences = [&block](const std::vector<SettingDifference>& list) {
        return block.pointers(list, [&block](const SettingDifference& item) { return makeDifference(block, item); });
    };
    report->size = sizeof(*report);
    report->written = block.texts(source.written);
    report->written_count = source.written.size();
    report->different = differences(source.different);
    report->different_count = source.different.size();
    report->failed = differences(source.failed);
    report->failed_count = source.failed.size();
    quill_error interruption = QUILL_ERROR_INIT;
    report->interruption = call(&interruption, [&source] {
        if (source.interruption) {
            std::rethrow_exception(source.interruption);
        }
    });
    report->interruption_sentence = block.text(interruption.sentence);
    report->is_complete = source.isComplete();
    block.give(report, result);
}

} // namespace

quill_status quill_read_settings(quill_camera camera, quill_camera_settings** settings, quill_error* error) {
    return call(error, [&] {
        requireAll(settings);
        const CameraUse use(camera);
        giveSettings(CameraInterface::readSettings(*use), settings);
    });
}

quill_status quill_write_settings(quill_camera camera, const quill_camera_settings* settings,
                                  const quill_settings_options* options, quill_settings_report** report,
                                  quill_error* error) {
    return call(error, [&] {
        requireAll(settings, report);
        const CameraUse use(camera);
        const auto theirs = fromCaller(options, quill_settings_options QUILL_SETTINGS_OPTIONS_INIT);
        SettingsOptions ours;
        ours.acceptOtherModels = theirs.accept_other_models;
        if (theirs.progress != nullptr) {
            ours.progress = [theirs](const std::string& name) {
                if (!theirs.progress(theirs.context, name.c_str())) {
                    throw Cancelled();
                }
            };
        }
        giveReport(CameraInterface::writeSettings(*use, fromCallersSettings(*settings), ours), report);
    });
}

quill_status quill_compare_settings(quill_camera camera, const quill_camera_settings* settings,
                                    quill_setting_difference*** differences, size_t* count, quill_error* error) {
    return call(error, [&] {
        requireAll(settings, differences, count);
        const CameraUse use(camera);
        giveList(CameraInterface::compareSettings(*use, fromCallersSettings(*settings)), makeDifference, differences,
                 count);
    });
}

quill_status quill_to_json(const quill_camera_settings* settings, char** json, quill_error* error) {
    return call(error, [&] {
        requireAll(settings, json);
        *json = copyText(CameraInterface::toJson(fromCallersSettings(*settings)));
    });
}

quill_status quill_parse_settings(const char* json, quill_camera_settings** settings, quill_error* error) {
    return call(error, [&] {
        requireAll(json, settings);
        giveSettings(CameraInterface::parseSettings(json), settings);
    });
}
