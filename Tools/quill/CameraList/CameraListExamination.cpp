// SPDX-License-Identifier: Apache-2.0

#include "CameraList/CameraListExamination.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>

#include <fmt/format.h>

#include "CameraList/LinedJson.h"
#include "Terminal/NearestName.h"
#include "Terminal/Numbers.h"

namespace QuillTool {

namespace {

using Kind = LinedJson::Kind;

/// A key of an object, and what its value must be.
struct KeyRule {
    const char* key;
    Kind kind;
    const char* expected; ///< for people
};

constexpr KeyRule kDocumentKeys[] = {{"Cameras", Kind::Array, "an array of cameras"}};
constexpr KeyRule kCameraKeys[] = {{"Identification", Kind::Object, "an object"},
                                   {"Properties", Kind::Array, "an array of properties"},
                                   {"Functions", Kind::Array, "an array of functions"}};
constexpr KeyRule kIdentificationKeys[] = {{"Model Name", Kind::Text, "a text"},
                                           {"Serial Number", Kind::Text, "a text"}};
constexpr KeyRule kPropertyKeys[] = {
    {"Name", Kind::Text, "a text"},
    {"Type", Kind::Text, "a text"},
    {"Minimum", Kind::Text, "a text, in quotes also where it is a number"},
    {"Maximum", Kind::Text, "a text, in quotes also where it is a number"},
    {"Default", Kind::Text, "a text, in quotes also where it is a number"},
    {"ReadOnly", Kind::Truth, "true or false"},
    {"AvailableForWriting", Kind::Truth, "true or false"},
    {"Discrete", Kind::Truth, "true or false"},
    {"ValueList", Kind::Array, "an array of texts, empty if the property is not discrete"},
};
constexpr KeyRule kFunctionKeys[] = {{"Name", Kind::Text, "a text"},
                                     {"Parameters", Kind::Array, "an array of parameters"},
                                     {"Return Format", Kind::Array, "an array of results"}};
constexpr KeyRule kParameterKeys[] = {{"Type", Kind::Text, "a text"}, {"Label", Kind::Text, "a text"}};

const std::vector<std::string> kTypes{"Integer", "Float", "String", "Boolean"};

std::string indexed(const char* key, std::size_t index) {
    return fmt::format("{}[{}]", key, index);
}

class CameraListExamination {
public:
    CameraListReport examine(const std::string& document) {
        try {
            const LinedJson list = parseLinedJson(document);
            if (const Scope scope(*this, ""); hasKeys(list, kDocumentKeys)) {
                examineCameras(*list.find("Cameras"));
            }
        } catch (const JsonSyntaxError& error) {
            m_Report.findings.push_back({error.line, "", error.what()});
        }
        std::stable_sort(m_Report.findings.begin(), m_Report.findings.end(),
                         [](const auto& one, const auto& other) { return one.line < other.line; });
        return std::move(m_Report);
    }

private:
    /// A part of the place that findings are in.
    class Scope {
    public:
        Scope(CameraListExamination& examination, std::string name) : m_Places(examination.m_Places) {
            m_Places.push_back(std::move(name));
        }
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;
        ~Scope() { m_Places.pop_back(); }

    private:
        std::vector<std::string>& m_Places;
    };

    void find(const LinedJson& value, const std::string& text) {
        std::string place;
        for (const std::string& part : m_Places) {
            place += (place.empty() || part.empty() ? "" : " / ") + part;
        }
        m_Report.findings.push_back({value.line, place, text});
    }

    /// @return whether the value is an object that has all keys, of the right kinds
    template <std::size_t Count>
    bool hasKeys(const LinedJson& object, const KeyRule (&rules)[Count]) {
        if (object.kind != Kind::Object) {
            find(object, fmt::format("is {} instead of an object", object.kindName()));
            return false;
        }
        bool isGood = true;
        std::vector<std::string> known;
        for (const KeyRule& rule : rules) {
            known.emplace_back(rule.key);
            const LinedJson* const value = object.find(rule.key);
            if (value == nullptr) {
                find(object, fmt::format("has no key \"{}\": {}", rule.key, rule.expected));
            } else if (value->kind != rule.kind) {
                find(*value, fmt::format("\"{}\" is {} instead of {}", rule.key, value->kindName(), rule.expected));
            } else {
                continue;
            }
            isGood = false;
        }
        std::set<std::string> seen;
        for (const auto& [key, value] : object.members) {
            if (!seen.insert(key).second) {
                find(value, fmt::format("the key \"{}\" is there twice; the last one counts", key));
            } else if (std::find(known.begin(), known.end(), key) == known.end()) {
                const std::string nearest = nearestName(key, known);
                find(value, fmt::format("the key \"{}\" has no meaning{}", key,
                                        nearest.empty() ? "" : fmt::format("; did you mean \"{}\"?", nearest)));
            }
        }
        return isGood;
    }

    bool requireTexts(const LinedJson& array, const char* key) {
        const auto stray = std::find_if(array.elements.begin(), array.elements.end(),
                                        [](const LinedJson& element) { return element.kind != Kind::Text; });
        if (stray != array.elements.end()) {
            find(*stray, fmt::format("\"{}\" has {} where texts are expected, in quotes also where they are numbers",
                                     key, stray->kindName()));
        }
        return stray == array.elements.end();
    }

    bool requireType(const LinedJson& owner) {
        const LinedJson& type = *owner.find("Type");
        const bool isKnown = std::find(kTypes.begin(), kTypes.end(), type.text) != kTypes.end();
        if (!isKnown) {
            const std::string nearest = nearestName(type.text, kTypes);
            find(type, fmt::format(R"("Type" is "{}", which is none of Integer, Float, String and Boolean{})",
                                   type.text, nearest.empty() ? "" : fmt::format("; did you mean \"{}\"?", nearest)));
        }
        return isKnown;
    }

    /// Refuses a name that is empty or that another one of its kind has.
    void requireOwnName(const LinedJson& name, const char* what, std::set<std::string>& names) {
        if (name.text.empty()) {
            find(name, fmt::format("the {} is empty", what));
        } else if (!names.insert(name.text).second) {
            find(name, fmt::format("the {} \"{}\" is there twice", what, name.text));
        }
    }

    void examineCameras(const LinedJson& cameras) {
        std::set<std::string> serialNumbers;
        for (std::size_t i = 0; i < cameras.elements.size(); ++i) {
            const Scope scope(*this, indexed("Cameras", i));
            const LinedJson& camera = cameras.elements[i];
            ++m_Report.cameras;
            hasKeys(camera, kCameraKeys);
            examineIdentification(camera, serialNumbers);
            examineAll(camera, "Properties", m_Report.properties, &CameraListExamination::examineProperty);
            examineAll(camera, "Functions", m_Report.functions, &CameraListExamination::examineFunction);
        }
    }

    void examineIdentification(const LinedJson& camera, std::set<std::string>& serialNumbers) {
        const LinedJson* const identification = camera.find("Identification");
        if (identification == nullptr || identification->kind != Kind::Object) {
            return;
        }
        const Scope scope(*this, "Identification");
        if (hasKeys(*identification, kIdentificationKeys)) {
            requireOwnName(*identification->find("Serial Number"), "serial number", serialNumbers);
        }
    }

    void examineAll(const LinedJson& camera, const char* key, std::size_t& count,
                    void (CameraListExamination::*examineOne)(const LinedJson&, std::set<std::string>&)) {
        const LinedJson* const entries = camera.find(key);
        if (entries == nullptr || entries->kind != Kind::Array) {
            return;
        }
        std::set<std::string> names;
        for (std::size_t i = 0; i < entries->elements.size(); ++i) {
            const LinedJson& entry = entries->elements[i];
            const LinedJson* const name = entry.find("Name");
            const bool isNamed = name != nullptr && name->kind == Kind::Text;
            const Scope scope(*this, indexed(key, i) + (isNamed ? fmt::format(" \"{}\"", name->text) : ""));
            ++count;
            (this->*examineOne)(entry, names);
        }
    }

    void examineProperty(const LinedJson& property, std::set<std::string>& names) {
        if (!hasKeys(property, kPropertyKeys)) {
            return;
        }
        requireOwnName(*property.find("Name"), "name", names);
        const LinedJson& choices = *property.find("ValueList");
        if (!requireTexts(choices, "ValueList") || !requireType(property)) {
            return;
        }
        const LinedJson& initial = *property.find("Default");
        if (property.find("Discrete")->text == "true") {
            const bool isChoice = std::any_of(choices.elements.begin(), choices.elements.end(),
                                              [&](const LinedJson& choice) { return choice.text == initial.text; });
            if (choices.elements.empty()) {
                find(choices, R"("ValueList" is empty, but "Discrete" is true: no value can be written)");
            } else if (!isChoice) {
                find(initial, fmt::format(R"("Default" is "{}", which is not in "ValueList")", initial.text));
            }
        } else if (const std::string& type = property.find("Type")->text; type == "Integer" || type == "Float") {
            examineRange(property, type == "Integer" ? NumberKind::Whole : NumberKind::Real);
        }
    }

    void examineRange(const LinedJson& property, NumberKind kind) {
        std::optional<double> numbers[3];
        constexpr const char* kKeys[] = {"Minimum", "Default", "Maximum"};
        for (std::size_t i = 0; i < std::size(kKeys); ++i) {
            const LinedJson& value = *property.find(kKeys[i]);
            numbers[i] = parseNumber(value.text, kind);
            if (!numbers[i]) {
                find(value, fmt::format(R"("{}" is "{}", which is no {}number)", kKeys[i], value.text,
                                        kind == NumberKind::Whole ? "whole " : ""));
                return;
            }
        }
        if (!(*numbers[0] <= *numbers[1] && *numbers[1] <= *numbers[2])) {
            find(*property.find("Default"), R"("Default" is not between "Minimum" and "Maximum")");
        }
    }

    void examineFunction(const LinedJson& function, std::set<std::string>& names) {
        if (!hasKeys(function, kFunctionKeys)) {
            return;
        }
        requireOwnName(*function.find("Name"), "name", names);
        for (const char* key : {"Parameters", "Return Format"}) {
            const auto& entries = function.find(key)->elements;
            for (std::size_t i = 0; i < entries.size(); ++i) {
                const Scope scope(*this, indexed(key, i));
                if (hasKeys(entries[i], kParameterKeys)) {
                    requireType(entries[i]);
                }
            }
        }
    }

    CameraListReport m_Report;
    std::vector<std::string> m_Places;
};

} // namespace

CameraListReport examineCameraList(const std::string& document) {
    return CameraListExamination().examine(document);
}

} // namespace QuillTool
