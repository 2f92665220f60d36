// SPDX-License-Identifier: Apache-2.0

#include "FeatureProperties.h"

#include <cfloat>
#include <limits>
#include <utility>

#include "Exceptions/Raise.h"
#include "GenICamCamera.h"
#include "Numbers.h"

namespace GenICamAdapter {

using namespace CameraInterface;
using namespace KestrelExceptions;

namespace {

/// More bytes than a register of any camera has.
constexpr guint64 kMostRegisterBytes = 65536;

} // namespace

FeatureProperty::FeatureProperty(GenICamCamera& camera, FeatureDescription feature, PROPERTY_TYPE type)
    : Property(feature.name, type), m_Camera(&camera), m_Feature(std::move(feature)) {}

void FeatureProperty::fail(const char* word, const char* sentence, const std::string& why) {
    throw KestrelException_Property(word, __FILE__, __LINE__, std::string(sentence) + " " + why, getName());
}

ArvGcNode* FeatureProperty::requireNode(const Device* device, const char* word, const char* sentence) {
    if (device == nullptr) {
        fail(word, sentence, "The camera is not connected.");
    }
    ArvGcNode* const node = arv_device_get_feature(device->get(), m_Feature.name.c_str());
    if (!ARV_IS_GC_FEATURE_NODE(node)) {
        fail(word, sentence, "The camera does not have it any more.");
    }
    return node;
}

template <typename Call>
auto FeatureProperty::ask(Call call) {
    const auto& kind = Errors::kPropertyReadFailure;
    const std::shared_ptr<Device> device = m_Camera->device();
    ArvGcNode* const node = requireNode(device.get(), kind.name, kind.description);
    Failure failure;
    auto result = call(node, failure.out());
    if (failure) {
        fail(kind.name, kind.description, failure.text());
    }
    return result;
}

template <typename Call>
void FeatureProperty::tell(Call call) {
    const auto& kind = Errors::kPropertyWriteFailure;
    const std::shared_ptr<Device> device = m_Camera->device();
    ArvGcNode* const node = requireNode(device.get(), kind.name, kind.description);
    Failure failure;
    call(node, failure.out());
    if (failure) {
        fail(kind.name, kind.description, failure.text());
    }
}

template <typename Text>
std::string FeatureProperty::limitText(Text text) {
    try {
        return text();
    } catch (const KestrelException_Property&) {
        if (!m_Camera->device()) {
            throw;
        }
        return "";
    }
}

bool FeatureProperty::isReadOnly() {
    return ask([](ArvGcNode* node, GError**) {
        return arv_gc_feature_node_get_actual_access_mode(ARV_GC_FEATURE_NODE(node)) == ARV_GC_ACCESS_MODE_RO;
    });
}

bool FeatureProperty::isAvailableForWriting() {
    const std::shared_ptr<Device> device = m_Camera->device();
    return ask([&](ArvGcNode* node, GError** failure) {
        auto* const feature = ARV_GC_FEATURE_NODE(node);
        if (arv_gc_feature_node_get_actual_access_mode(feature) == ARV_GC_ACCESS_MODE_RO ||
            arv_gc_feature_node_is_available(feature, failure) == FALSE || *failure != nullptr) {
            return false;
        }
        // Only this program changes the lock of the stream, while it controls the camera.
        const bool isLockedWithStream = m_Feature.isLockedWithStream && device;
        if (const auto known = isLockedWithStream ? device->lockOfStream() : std::nullopt) {
            return !*known;
        }
        const bool isLocked = arv_gc_feature_node_is_locked(feature, failure) != FALSE;
        if (isLockedWithStream && *failure == nullptr) {
            device->rememberLockOfStream(isLocked);
        }
        return !isLocked;
    });
}

void FeatureProperty::setValue(const std::string& value) {
    if (isAvailableForWriting()) {
        const std::shared_ptr<Device> device = m_Camera->device();
        if (device && m_Feature.name == kLockOfStream) {
            device->rememberLockOfStream(std::nullopt);
        }
        write(value);
        onChange(true);
    }
}

void FeatureProperty::setQuietly(const std::string& value) {
    if (getValue() == value) {
        return;
    }
    if (isAvailableForWriting()) {
        write(value);
    }
    if (getValue() != value) {
        fail(Errors::kPropertyWriteFailure.name, Errors::kPropertyWriteFailure.description, "It stays as it is.");
    }
}

namespace {

/// Refuses a length for which Aravis would take any amount of memory.
void refuseLength(guint64 length, GError** failure) {
    if (*failure == nullptr && (length == 0 || length > kMostRegisterBytes)) {
        g_set_error_literal(failure, ARV_DEVICE_ERROR, ARV_DEVICE_ERROR_INVALID_PARAMETER,
                            "The length of its register is invalid.");
    }
}

/// What to take for a limit that a description refers to and does not have. Other failures, above all those of the
/// connection, stay.
template <typename Number>
Number limitOr(Number limit, Number otherwise, GError** failure) {
    if (*failure == nullptr || (*failure)->domain != ARV_GC_ERROR) {
        return limit;
    }
    g_clear_error(failure);
    return otherwise;
}

class IntegerFeature : public FeatureProperty {
public:
    IntegerFeature(GenICamCamera& camera, const FeatureDescription& feature)
        : FeatureProperty(camera, feature, PROPERTY_TYPE::Integer) {}

    std::string getMinimum() override {
        return limitText([this] { return textOf(limit(arv_gc_integer_get_min)); });
    }
    std::string getMaximum() override {
        return limitText([this] { return textOf(limit(arv_gc_integer_get_max)); });
    }
    std::string getValue() override { return textOf(limit(arv_gc_integer_get_value)); }
    std::string getIncrement() override {
        return limitText([this] { return textOf(limit(arv_gc_integer_get_inc)); });
    }

protected:
    void write(const std::string& value) override {
        const std::int64_t number = parseInteger(value);
        using Limits = std::numeric_limits<std::int64_t>;
        const std::int64_t written =
            toStep(number, limitOf(arv_gc_integer_get_min, Limits::min()),
                   limitOf(arv_gc_integer_get_max, Limits::max()), limitOf(arv_gc_integer_get_inc, 1));
        tell([&](ArvGcNode* node, GError** failure) {
            arv_gc_integer_set_value(ARV_GC_INTEGER(node), written, failure);
        });
    }

private:
    std::int64_t limit(gint64 (*get)(ArvGcInteger*, GError**)) {
        return ask(
            [get](ArvGcNode* node, GError** failure) -> std::int64_t { return get(ARV_GC_INTEGER(node), failure); });
    }
    std::int64_t limitOf(gint64 (*get)(ArvGcInteger*, GError**), std::int64_t otherwise) {
        return ask([=](ArvGcNode* node, GError** failure) {
            return limitOr<std::int64_t>(get(ARV_GC_INTEGER(node), failure), otherwise, failure);
        });
    }
};

class FloatFeature : public FeatureProperty {
public:
    FloatFeature(GenICamCamera& camera, const FeatureDescription& feature)
        : FeatureProperty(camera, feature, PROPERTY_TYPE::Float) {}

    std::string getMinimum() override {
        return limitText([this] { return textOf(limit(arv_gc_float_get_min)); });
    }
    std::string getMaximum() override {
        return limitText([this] { return textOf(limit(arv_gc_float_get_max)); });
    }
    std::string getValue() override { return textOf(limit(arv_gc_float_get_value)); }
    std::string getIncrement() override {
        const double step = increment();
        return step > 0 ? textOf(step) : "";
    }

protected:
    void write(const std::string& value) override {
        const double number = parseFloat(value);
        const double written = toStep(number, limitOf(arv_gc_float_get_min, -DBL_MAX),
                                      limitOf(arv_gc_float_get_max, DBL_MAX), increment());
        tell([&](ArvGcNode* node, GError** failure) { arv_gc_float_set_value(ARV_GC_FLOAT(node), written, failure); });
    }

private:
    double limit(double (*get)(ArvGcFloat*, GError**)) {
        return ask([get](ArvGcNode* node, GError** failure) { return get(ARV_GC_FLOAT(node), failure); });
    }
    double limitOf(double (*get)(ArvGcFloat*, GError**), double otherwise) {
        return ask([=](ArvGcNode* node, GError** failure) {
            return limitOr(get(ARV_GC_FLOAT(node), failure), otherwise, failure);
        });
    }
    /// 0 if there is none, for which Aravis says the smallest number.
    double increment() {
        const double step = limitOf(arv_gc_float_get_inc, 0);
        return step > DBL_MIN ? step : 0;
    }
};

class BooleanFeature : public FeatureProperty {
public:
    BooleanFeature(GenICamCamera& camera, const FeatureDescription& feature)
        : FeatureProperty(camera, feature, PROPERTY_TYPE::Boolean) {}

    std::string getMinimum() override { return m_States.toString(false); }
    std::string getMaximum() override { return m_States.toString(true); }
    std::string getValue() override {
        return m_States.toString(ask([](ArvGcNode* node, GError** failure) {
            return arv_gc_boolean_get_value(ARV_GC_BOOLEAN(node), failure) != FALSE;
        }));
    }
    bool isDiscrete() override { return true; }
    std::vector<std::string> getValueList() override { return m_States.getList(); }

protected:
    void write(const std::string& value) override {
        const gboolean state = m_States.toValue(value) ? TRUE : FALSE;
        tell([state](ArvGcNode* node, GError** failure) {
            arv_gc_boolean_set_value(ARV_GC_BOOLEAN(node), state, failure);
        });
    }

private:
    States m_States;
};

class EnumerationFeature : public FeatureProperty {
public:
    EnumerationFeature(GenICamCamera& camera, const FeatureDescription& feature)
        : FeatureProperty(camera, feature, PROPERTY_TYPE::String) {}

    /// A register value without an entry reads as its number.
    std::string getValue() override {
        return ask([](ArvGcNode* node, GError** failure) -> std::string {
            auto* const enumeration = ARV_GC_ENUMERATION(node);
            const char* const text = arv_gc_enumeration_get_string_value(enumeration, failure);
            if (text != nullptr || *failure != nullptr) {
                return text == nullptr ? "" : text;
            }
            return textOf(std::int64_t{arv_gc_enumeration_get_int_value(enumeration, failure)});
        });
    }
    bool isDiscrete() override { return true; }
    std::vector<std::string> getValueList() override {
        return ask([](ArvGcNode* node, GError** failure) {
            guint count = 0;
            const MemoryPointer<const char*> texts(
                arv_gc_enumeration_dup_available_string_values(ARV_GC_ENUMERATION(node), &count, failure));
            return texts ? std::vector<std::string>(texts.get(), texts.get() + count) : std::vector<std::string>();
        });
    }

protected:
    void write(const std::string& value) override {
        std::map<std::string, int> choices;
        for (const std::string& choice : getValueList()) {
            choices.emplace(choice, 0);
        }
        PropertyValueEnumeration<int>(choices).toValue(value); // throws for any other text
        tell([&value](ArvGcNode* node, GError** failure) {
            arv_gc_enumeration_set_string_value(ARV_GC_ENUMERATION(node), value.c_str(), failure);
        });
    }
};

class TextFeature : public FeatureProperty {
public:
    TextFeature(GenICamCamera& camera, const FeatureDescription& feature)
        : FeatureProperty(camera, feature, PROPERTY_TYPE::String) {}

    std::string getValue() override {
        return ask([](ArvGcNode* node, GError** failure) -> std::string {
            const gint64 longest = arv_gc_string_get_max_length(ARV_GC_STRING(node), failure);
            refuseLength(static_cast<guint64>(longest), failure);
            const char* const text =
                *failure == nullptr ? arv_gc_string_get_value(ARV_GC_STRING(node), failure) : nullptr;
            // Aravis ends no text that fills its register.
            return text == nullptr ? "" : std::string(text, strnlen(text, static_cast<std::size_t>(longest)));
        });
    }

protected:
    void write(const std::string& value) override {
        tell([&value](ArvGcNode* node, GError** failure) {
            auto* const string = ARV_GC_STRING(node);
            const gint64 longest = arv_gc_string_get_max_length(string, failure);
            refuseLength(static_cast<guint64>(longest), failure);
            if (*failure == nullptr && value.size() > static_cast<guint64>(longest)) {
                g_set_error(failure, ARV_DEVICE_ERROR, ARV_DEVICE_ERROR_INVALID_PARAMETER,
                            "The text has more than %" G_GINT64_FORMAT " bytes.", longest);
            }
            if (*failure == nullptr) {
                arv_gc_string_set_value(string, value.c_str(), failure);
            }
        });
    }
};

/// The bytes of a register in hexadecimal.
class BytesFeature : public FeatureProperty {
public:
    BytesFeature(GenICamCamera& camera, const FeatureDescription& feature)
        : FeatureProperty(camera, feature, PROPERTY_TYPE::String) {}

    std::string getValue() override {
        const std::vector<unsigned char> bytes = ask([](ArvGcNode* node, GError** failure) {
            std::vector<unsigned char> content(lengthOf(node, failure));
            if (*failure == nullptr) {
                arv_gc_register_get(ARV_GC_REGISTER(node), content.data(), content.size(), failure);
            }
            return content;
        });
        std::string text;
        for (const unsigned char byte : bytes) {
            text += kDigits[byte / 16U];
            text += kDigits[byte % 16U];
        }
        return text;
    }

protected:
    void write(const std::string& value) override {
        tell([&value](ArvGcNode* node, GError** failure) {
            const guint64 length = lengthOf(node, failure);
            std::vector<unsigned char> bytes;
            for (std::size_t i = 0; i + 1 < value.size() && bytes.size() < length; i += 2) {
                const int high = g_ascii_xdigit_value(value[i]);
                const int low = g_ascii_xdigit_value(value[i + 1]);
                if (high < 0 || low < 0) {
                    break;
                }
                bytes.push_back(static_cast<unsigned char>(high * 16 + low));
            }
            if (*failure == nullptr && (bytes.size() != length || value.size() != 2 * length)) {
                g_set_error(failure, ARV_DEVICE_ERROR, ARV_DEVICE_ERROR_INVALID_PARAMETER,
                            "The register needs %" G_GUINT64_FORMAT " hexadecimal digits.", 2 * length);
            }
            if (*failure == nullptr) {
                arv_gc_register_set(ARV_GC_REGISTER(node), bytes.data(), bytes.size(), failure);
            }
        });
    }

private:
    static constexpr const char* kDigits = "0123456789abcdef";

    static guint64 lengthOf(ArvGcNode* node, GError** failure) {
        const guint64 length = arv_gc_register_get_length(ARV_GC_REGISTER(node), failure);
        refuseLength(length, failure);
        return *failure == nullptr ? length : 0;
    }
};

void link(Property& one, Property& other) {
    if (&one != &other) {
        one.addLinkedProperty(other);
    }
}

} // namespace

std::unique_ptr<Property> makeFeatureProperty(GenICamCamera& camera, const FeatureDescription& feature) {
    switch (feature.kind) {
    case FeatureKind::Integer:
        return std::make_unique<IntegerFeature>(camera, feature);
    case FeatureKind::Float:
        return std::make_unique<FloatFeature>(camera, feature);
    case FeatureKind::Boolean:
        return std::make_unique<BooleanFeature>(camera, feature);
    case FeatureKind::Enumeration:
        return std::make_unique<EnumerationFeature>(camera, feature);
    case FeatureKind::Text:
        return std::make_unique<TextFeature>(camera, feature);
    default:
        return std::make_unique<BytesFeature>(camera, feature);
    }
}

void linkFeatures(const std::vector<FeatureDescription>& features, Properties& properties) {
    for (const FeatureDescription& feature : features) {
        const auto selector = properties.find(feature.name);
        for (const std::string& name : feature.selected) {
            const auto selected = properties.find(name);
            if (selector != properties.end() && selected != properties.end()) {
                link(*selector->second, *selected->second);
            }
        }
    }
    // Features whose limits depend on each other.
    const std::vector<std::vector<const char*>> groups{
        {"Width", "Height", "OffsetX", "OffsetY", "PixelFormat", "PayloadSize", "BinningHorizontal", "BinningVertical",
         "DecimationHorizontal", "DecimationVertical", "AcquisitionFrameRate"},
        {"ExposureTime", "ExposureTimeAbs", "ExposureAuto", "AcquisitionFrameRate", "AcquisitionFrameRateEnable"},
        {"Gain", "GainRaw", "GainAuto"},
    };
    for (const auto& group : groups) {
        for (const char* one : group) {
            for (const char* other : group) {
                if (properties.count(one) != 0 && properties.count(other) != 0) {
                    link(*properties[one], *properties[other]);
                }
            }
        }
    }
}

} // namespace GenICamAdapter
