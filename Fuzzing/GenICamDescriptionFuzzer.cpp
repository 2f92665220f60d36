// SPDX-License-Identifier: Apache-2.0

// Descriptions of cameras' features, zipped or not, as a camera sends them: what the check accepts, Aravis interprets.

#include <arv.h>
#include <setjmp.h>
#include <signal.h>

#include <stdexcept>
#include <vector>

#include "DescriptionCheck.h"
#include "FeatureTree.h"
#include "GObjects.h"
#include "Support/Input.h"
#include "ZipFile.h"

namespace {

using namespace Fuzzing;
using namespace GenICamAdapter;

/// Register accesses that a feature needs at most. A formula that asks more is refused by the check.
constexpr std::size_t kMostAccesses = 1000000;

ArvGc* description = nullptr;
std::size_t accesses = 0;

/// Any memory, the same for the same address.
gboolean readMemory(ArvDevice*, guint64 address, guint32 size, void* buffer, GError**) {
    require(++accesses <= kMostAccesses, "a feature needs few accesses");
    for (guint32 i = 0; i < size; ++i) {
        static_cast<std::uint8_t*>(buffer)[i] = static_cast<std::uint8_t>((address + i) * 37 % 11);
    }
    return TRUE;
}

gboolean writeMemory(ArvDevice*, guint64, guint32, void*, GError**) {
    return TRUE;
}

/// The one end that a description can bring about and nobody can foresee: Aravis divides the least integer by -1.
sigjmp_buf division;

GType deviceType() {
    static const GType type = [] {
        GTypeQuery base{};
        g_type_query(ARV_TYPE_DEVICE, &base);
        GTypeInfo info{};
        info.class_size = static_cast<guint16>(base.class_size);
        info.instance_size = static_cast<guint16>(base.instance_size);
        info.class_init = [](void* classStructure, void*) {
            auto* const operations = ARV_DEVICE_CLASS(classStructure);
            operations->read_memory = readMemory;
            operations->write_memory = writeMemory;
            operations->get_genicam = [](ArvDevice*) { return description; };
        };
        signal(SIGFPE, [](int) { siglongjmp(division, 1); });
        g_log_set_default_handler([](const char*, GLogLevelFlags, const char*, void*) {}, nullptr);
        return g_type_register_static(ARV_TYPE_DEVICE, "FuzzedDevice", &info, GTypeFlags(0));
    }();
    return type;
}

void read(ArvGcNode* node, FeatureKind kind) {
    Failure failure;
    auto* const feature = ARV_GC_FEATURE_NODE(node);
    arv_gc_feature_node_is_available(feature, failure.out());
    arv_gc_feature_node_is_locked(feature, failure.out());
    switch (kind) {
    case FeatureKind::Integer:
        for (auto* const get :
             {arv_gc_integer_get_value, arv_gc_integer_get_min, arv_gc_integer_get_max, arv_gc_integer_get_inc}) {
            get(ARV_GC_INTEGER(node), failure.out());
        }
        break;
    case FeatureKind::Float:
        for (auto* const get :
             {arv_gc_float_get_value, arv_gc_float_get_min, arv_gc_float_get_max, arv_gc_float_get_inc}) {
            get(ARV_GC_FLOAT(node), failure.out());
        }
        break;
    case FeatureKind::Boolean:
        arv_gc_boolean_get_value(ARV_GC_BOOLEAN(node), failure.out());
        break;
    case FeatureKind::Enumeration: {
        guint count = 0;
        arv_gc_enumeration_get_string_value(ARV_GC_ENUMERATION(node), failure.out());
        g_free(arv_gc_enumeration_dup_available_string_values(ARV_GC_ENUMERATION(node), &count, failure.out()));
        break;
    }
    case FeatureKind::Text: {
        const gint64 longest = arv_gc_string_get_max_length(ARV_GC_STRING(node), failure.out());
        if (longest > 0 && longest < 65536) { // as the property of it requires
            arv_gc_string_get_value(ARV_GC_STRING(node), failure.out());
        }
        break;
    }
    default:
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string file = Input(data, size).text();
    constexpr std::size_t kMostBytes = 1 << 20;
    try {
        if (isZipped(file)) {
            file = unzipFirst(file, kMostBytes);
            require(file.size() <= kMostBytes, "what is expanded has the size that is permitted");
        }
        const std::size_t documentSize = checkDescription(file);
        require(documentSize <= file.size(), "a document ends in its file");
        file.resize(documentSize);
    } catch (const std::runtime_error& refusal) {
        require(std::string(refusal.what()).size() < 200, "a refusal is short");
        return 0;
    }
    const ObjectPointer<ArvDevice> device(static_cast<ArvDevice*>(g_object_new(deviceType(), nullptr)));
    constexpr std::string_view kEmpty = "<RegisterDescription/>"; // as in an opening
    const ObjectPointer<ArvGc> features(arv_gc_new(device.get(), kEmpty.data(), kEmpty.size()));
    Failure failure;
    arv_dom_document_append_from_memory(ARV_DOM_DOCUMENT(features.get()), nullptr, file.data(),
                                        static_cast<int>(file.size()), failure.out());
    require(!failure, "Aravis takes what the check accepts");
    description = features.get();
    for (const FeatureDescription& feature : describeFeatures(device.get())) {
        accesses = 0;
        if (sigsetjmp(division, 1) != 0) {
            continue;
        }
        read(arv_gc_get_node(description, feature.name.c_str()), feature.kind);
    }
    return 0;
}
