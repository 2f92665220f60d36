// SPDX-License-Identifier: Apache-2.0

#include <cstddef>

#include <nlohmann/json.hpp>

#include "Exceptions/Raise.h"
#include "Settings/CameraSettings.h"

namespace CameraInterface {

using namespace KestrelExceptions;

namespace {

using Document = nlohmann::ordered_json;

constexpr std::size_t kMaximumDocument = std::size_t{1} << 20;
constexpr std::size_t kLongestReason = 200; // a parser's reason quotes the document
constexpr int kFormat = 1;

[[noreturn]] void refuse(const std::string& reason) {
    const std::string sentence = Errors::kSettingsInvalid.description + (' ' + reason.substr(0, kLongestReason));
    raise<KestrelException>(QUILL_HERE, ErrorKind{Errors::kSettingsInvalid.name, sentence.c_str()});
}

/// The reason of the parser, without the number of its exception.
std::string reasonOf(const nlohmann::json::exception& failure) {
    const std::string text = failure.what();
    const std::size_t end = text.find("] ");
    return end == std::string::npos ? text : text.substr(end + 2);
}

Document parseDocument(const std::string& json) {
    if (json.size() > kMaximumDocument) {
        refuse("They are larger than 1 MiB.");
    }
    try {
        return Document::parse(json);
    } catch (const nlohmann::json::exception& failure) {
        refuse(reasonOf(failure));
    }
}

const Document& member(const Document& object, const char* key) {
    const auto found = object.find(key); // the end unless it is an object
    if (found == object.end()) {
        refuse("\"" + std::string(key) + "\" is missing.");
    }
    return *found;
}

std::string textOf(const Document& value, const std::string& key) {
    if (!value.is_string()) {
        refuse("The value of \"" + key + "\" is not a text.");
    }
    return value.get<std::string>();
}

} // namespace

std::string toJson(const CameraSettings& settings) {
    Document properties = Document::object();
    for (const auto& [name, value] : settings.values) {
        properties[name] = value;
    }
    const Document document{
        {"format", kFormat},
        {"camera", {{"kind", settings.kind}, {"model", settings.modelName}, {"serial", settings.serialNumber}}},
        {"properties", std::move(properties)}};
    return document.dump(2, ' ', false, Document::error_handler_t::replace) + '\n';
}

CameraSettings parseSettings(const std::string& json) {
    const Document document = parseDocument(json);
    if (member(document, "format") != kFormat) {
        refuse("Their format is not 1.");
    }
    const Document& camera = member(document, "camera");
    CameraSettings settings{textOf(member(camera, "kind"), "kind"),
                            textOf(member(camera, "model"), "model"),
                            textOf(member(camera, "serial"), "serial"),
                            {}};
    const Document& properties = member(document, "properties");
    if (!properties.is_object()) {
        refuse("\"properties\" is not an object.");
    }
    for (const auto& [name, value] : properties.items()) {
        settings.values.insert_or_assign(name, textOf(value, name));
    }
    return settings;
}

} // namespace CameraInterface
