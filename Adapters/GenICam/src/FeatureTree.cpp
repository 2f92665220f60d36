// SPDX-License-Identifier: Apache-2.0

#include "FeatureTree.h"

#include <cctype>
#include <optional>
#include <unordered_set>

#include "GObjects.h"

namespace GenICamAdapter {

using CameraInterface::PropertyVisibility;

namespace {

/// More features than any camera has, and deeper categories: a description may refer to itself.
constexpr std::size_t kMostFeatures = 10000;
constexpr int kDeepestCategory = 16;

/// Standard features that some descriptions do not list under any category.
constexpr const char* kLookedUp[] = {"Width",
                                     "Height",
                                     "OffsetX",
                                     "OffsetY",
                                     "WidthMax",
                                     "HeightMax",
                                     "PixelFormat",
                                     "PayloadSize",
                                     "AcquisitionMode",
                                     "AcquisitionStart",
                                     "AcquisitionStop",
                                     "ExposureTime",
                                     "Gain",
                                     "TriggerMode",
                                     "TriggerSoftware",
                                     "DeviceModelName",
                                     "DeviceVersion",
                                     "DeviceVendorName",
                                     "DeviceID",
                                     "DeviceSerialNumber",
                                     kLockOfStream,
                                     "DeviceReset",
                                     "DeviceTemperature"};

std::string textOfNode(const char* text) {
    return text == nullptr ? "" : text;
}

/// "ImageFormatControl" in words: "Image Format Control".
std::string inWords(const std::string& name) {
    std::string words;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const bool isCapital = std::isupper(static_cast<unsigned char>(name[i])) != 0;
        const bool followsSmall = i > 0 && std::islower(static_cast<unsigned char>(name[i - 1])) != 0;
        const bool precedesSmall = i > 0 && i + 1 < name.size() &&
                                   std::isupper(static_cast<unsigned char>(name[i - 1])) != 0 &&
                                   std::islower(static_cast<unsigned char>(name[i + 1])) != 0;
        if (isCapital && (followsSmall || precedesSmall)) {
            words += ' ';
        }
        words += name[i];
    }
    return words;
}

/// An enumeration is an integer and a text as well; it is asked for first.
std::optional<FeatureKind> kindOf(ArvGcNode* node) {
    if (ARV_IS_GC_ENUMERATION(node)) {
        return FeatureKind::Enumeration;
    }
    if (ARV_IS_GC_COMMAND(node)) {
        return FeatureKind::Command;
    }
    if (ARV_IS_GC_BOOLEAN(node)) {
        return FeatureKind::Boolean;
    }
    if (ARV_IS_GC_FLOAT(node)) {
        return FeatureKind::Float;
    }
    if (ARV_IS_GC_INTEGER(node)) {
        return FeatureKind::Integer;
    }
    if (ARV_IS_GC_STRING(node)) {
        return FeatureKind::Text;
    }
    if (ARV_IS_GC_REGISTER(node)) {
        return FeatureKind::Bytes;
    }
    return std::nullopt;
}

std::string unitOf(ArvGcNode* node, FeatureKind kind) {
    if (kind == FeatureKind::Float) {
        return textOfNode(arv_gc_float_get_unit(ARV_GC_FLOAT(node)));
    }
    return kind == FeatureKind::Integer ? textOfNode(arv_gc_integer_get_unit(ARV_GC_INTEGER(node))) : "";
}

PropertyVisibility visibilityOf(ArvGcFeatureNode* node) {
    switch (arv_gc_feature_node_get_visibility(node)) {
    case ARV_GC_VISIBILITY_EXPERT:
        return PropertyVisibility::Expert;
    case ARV_GC_VISIBILITY_GURU:
        return PropertyVisibility::Guru;
    case ARV_GC_VISIBILITY_INVISIBLE:
        return PropertyVisibility::Invisible;
    default:
        return PropertyVisibility::Beginner;
    }
}

bool isLockedWithStream(ArvGcNode* node) {
    for (ArvDomNode* child = arv_dom_node_get_first_child(ARV_DOM_NODE(node)); child != nullptr;
         child = arv_dom_node_get_next_sibling(child)) {
        if (ARV_IS_GC_PROPERTY_NODE(child) &&
            arv_gc_property_node_get_node_type(ARV_GC_PROPERTY_NODE(child)) == ARV_GC_PROPERTY_NODE_TYPE_P_IS_LOCKED) {
            ArvGcNode* const lock = arv_gc_property_node_get_linked_node(ARV_GC_PROPERTY_NODE(child));
            return ARV_IS_GC_FEATURE_NODE(lock) &&
                   textOfNode(arv_gc_feature_node_get_name(ARV_GC_FEATURE_NODE(lock))) == kLockOfStream;
        }
    }
    return false;
}

class TreeReader {
public:
    explicit TreeReader(ArvDevice* device) : m_Description(arv_device_get_genicam(device)) {}

    std::vector<FeatureDescription> read() {
        readCategory("Root", "", 0);
        for (const char* name : kLookedUp) {
            readFeature(name, "");
        }
        return std::move(m_Features);
    }

private:
    void readCategory(const std::string& name, const std::string& parent, int depth) {
        ArvGcNode* const node = arv_gc_get_node(m_Description, name.c_str());
        if (!ARV_IS_GC_CATEGORY(node) || depth > kDeepestCategory || !m_Seen.insert(name).second) {
            return;
        }
        // A category within another one belongs to the outer one, which people look under.
        const std::string words = depth < 2 && name != "Root" ? inWords(name) : parent;
        for (const GSList* entry = arv_gc_category_get_features(ARV_GC_CATEGORY(node)); entry != nullptr;
             entry = entry->next) {
            const char* const feature = static_cast<const char*>(entry->data);
            if (feature != nullptr && ARV_IS_GC_CATEGORY(arv_gc_get_node(m_Description, feature))) {
                readCategory(feature, words, depth + 1);
            } else if (feature != nullptr) {
                readFeature(feature, words);
            }
        }
    }

    void readFeature(const std::string& name, const std::string& category) {
        ArvGcNode* const node = arv_gc_get_node(m_Description, name.c_str());
        if (!ARV_IS_GC_FEATURE_NODE(node) || m_Features.size() >= kMostFeatures || !m_Seen.insert(name).second) {
            return;
        }
        const auto kind = kindOf(node);
        auto* const feature = ARV_GC_FEATURE_NODE(node);
        Failure failure;
        if (!kind || arv_gc_feature_node_is_implemented(feature, failure.out()) == FALSE) {
            return;
        }
        FeatureDescription description;
        description.name = name;
        description.kind = *kind;
        description.category = category;
        description.unit = unitOf(node, *kind);
        description.description = textOfNode(arv_gc_feature_node_get_description(feature));
        if (description.description.empty()) {
            description.description = textOfNode(arv_gc_feature_node_get_tooltip(feature));
        }
        description.visibility = visibilityOf(feature);
        description.isLockedWithStream = isLockedWithStream(node);
        if (ARV_IS_GC_SELECTOR(node)) {
            for (const GSList* entry = arv_gc_selector_get_selected_features(ARV_GC_SELECTOR(node)); entry != nullptr;
                 entry = entry->next) {
                if (ARV_IS_GC_FEATURE_NODE(entry->data)) {
                    description.selected.push_back(
                        textOfNode(arv_gc_feature_node_get_name(ARV_GC_FEATURE_NODE(entry->data))));
                }
            }
        }
        m_Features.push_back(std::move(description));
    }

    ArvGc* m_Description;
    std::vector<FeatureDescription> m_Features;
    std::unordered_set<std::string> m_Seen;
};

} // namespace

std::vector<FeatureDescription> describeFeatures(ArvDevice* device) {
    return TreeReader(device).read();
}

} // namespace GenICamAdapter
