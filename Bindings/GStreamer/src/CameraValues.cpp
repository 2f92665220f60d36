// SPDX-License-Identifier: Apache-2.0

#include "CameraValues.h"

#include <cstddef>
#include <exception>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace QuillGStreamer {

using CameraInterface::CameraSettings;
using CameraInterface::SettingDifference;

namespace {

constexpr std::size_t kLargestFile = std::size_t{1} << 20; // the library's own limit

std::string withoutBlanks(const std::string& text) {
    constexpr const char* kBlanks = " \t\n";
    const std::size_t begin = text.find_first_not_of(kBlanks);
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

/// Reads one assignment, from @p position to the next comma.
std::pair<std::string, std::string> readAssignment(const std::string& text, std::size_t& position) {
    std::string name;
    std::string value;
    bool isNamed = false;
    const std::size_t begin = position;
    for (; position < text.size() && text[position] != ','; ++position) {
        if (text[position] == '=' && !isNamed) {
            isNamed = true;
            continue;
        }
        position += text[position] == '\\' && position + 1 < text.size() ? 1 : 0;
        (isNamed ? value : name) += text[position];
    }
    if (!isNamed || withoutBlanks(name).empty()) {
        throw std::invalid_argument("'" + text.substr(begin, position - begin) +
                                    "' is not an assignment such as Gain=3.");
    }
    return {withoutBlanks(name), withoutBlanks(value)};
}

} // namespace

CameraSettings parseAssignments(const std::string& text) {
    CameraSettings settings;
    for (std::size_t position = 0; position < text.size(); ++position) {
        const auto [name, value] = readAssignment(text, position);
        settings.values[name] = value;
    }
    return settings;
}

CameraSettings readSettingsFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text(kLargestFile + 1, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(file.gcount()));
    if (!file.is_open() || file.bad()) {
        throw std::runtime_error("The settings file '" + path + "' cannot be read.");
    }
    return CameraInterface::parseSettings(text);
}

std::vector<std::string> writeValues(CameraInterface::Camera& camera, const CameraSettings& settings) {
    CameraInterface::SettingsOptions options;
    options.acceptOtherModels = settings.modelName.empty(); // assignments are for any camera
    const CameraInterface::SettingsReport report = CameraInterface::writeSettings(camera, settings, options);
    if (report.interruption) {
        std::rethrow_exception(report.interruption);
    }
    const auto describe = [](const SettingDifference& one) {
        return "Property '" + one.name + "' cannot be '" + one.wanted + "': ";
    };
    if (!report.failed.empty()) {
        throw std::runtime_error(describe(report.failed.front()) + report.failed.front().reason);
    }
    std::vector<std::string> warnings;
    for (const SettingDifference& one : report.different) {
        warnings.push_back(describe(one) + "the camera has made it '" + one.present + "'.");
    }
    return warnings;
}

} // namespace QuillGStreamer
