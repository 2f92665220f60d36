// SPDX-License-Identifier: Apache-2.0

#include "QuillSrc.h"

#include <exception>
#include <string>

#include <gst/base/gstpushsrc.h>

#include "Source.h"

namespace QuillGStreamer {

namespace {

struct QuillSrc {
    GstPushSrc parent;
    Source* source; // owned
};

struct QuillSrcClass {
    GstPushSrcClass parent;
};

GstBaseSrcClass* parentClass = nullptr;

enum PropertyId : guint { kSerial = 1, kFormat, kQueue, kSettingsFile, kExtraProperties, kStats };

Source& sourceOf(gpointer instance) {
    return *static_cast<QuillSrc*>(instance)->source;
}

/// Calls @p action; its exception becomes a message of the element, and @p failure the result.
template <typename Result, typename Action>
Result guarded(gpointer instance, Result failure, Action&& action) {
    const auto post = [instance](GQuark domain, int code, const char* sentence) {
        gst_element_message_full(GST_ELEMENT(instance), GST_MESSAGE_ERROR, domain, code, g_strdup(sentence), nullptr,
                                 __FILE__, GST_FUNCTION, __LINE__);
    };
    try {
        return action(sourceOf(instance));
    } catch (const ElementError& error) {
        post(error.domain, error.code, error.what());
    } catch (const std::exception& error) {
        post(GST_CORE_ERROR, GST_CORE_ERROR_FAILED, reasonOf(error).c_str());
    }
    return failure;
}

std::string textOf(const GValue* value) {
    const gchar* const text = g_value_get_string(value);
    return text == nullptr ? "" : text;
}

void setProperty(GObject* object, guint id, const GValue* value, GParamSpec* spec) {
    Source& source = sourceOf(object);
    switch (id) {
    case kSerial:
        source.changeOptions([&](SourceOptions& options) { options.serialNumber = textOf(value); });
        break;
    case kFormat:
        source.changeOptions([&](SourceOptions& options) { options.format = g_value_get_enum(value); });
        break;
    case kQueue:
        source.changeOptions([&](SourceOptions& options) { options.queueCapacity = g_value_get_uint(value); });
        break;
    case kSettingsFile:
        source.changeOptions([&](SourceOptions& options) { options.settingsFile = textOf(value); });
        break;
    case kExtraProperties:
        source.setExtraProperties(textOf(value));
        break;
    default:
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
    }
}

void getProperty(GObject* object, guint id, GValue* value, GParamSpec* spec) {
    const Source& source = sourceOf(object);
    const SourceOptions options = source.options();
    switch (id) {
    case kSerial:
        g_value_set_string(value, options.serialNumber.c_str());
        break;
    case kFormat:
        g_value_set_enum(value, options.format);
        break;
    case kQueue:
        g_value_set_uint(value, options.queueCapacity);
        break;
    case kSettingsFile:
        g_value_set_string(value, options.settingsFile.c_str());
        break;
    case kExtraProperties:
        g_value_set_string(value, options.extraProperties.c_str());
        break;
    case kStats:
        g_value_take_boxed(value, source.statistics());
        break;
    default:
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
    }
}

void finalize(GObject* object) {
    delete static_cast<QuillSrc*>(static_cast<gpointer>(object))->source;
    G_OBJECT_CLASS(parentClass)->finalize(object);
}

GstStateChangeReturn changeState(GstElement* element, GstStateChange transition) {
    if (transition == GST_STATE_CHANGE_PAUSED_TO_PLAYING) {
        sourceOf(element).play();
    }
    return GST_ELEMENT_CLASS(parentClass)->change_state(element, transition);
}

gboolean sendEvent(GstElement* element, GstEvent* event) {
    if (GST_EVENT_TYPE(event) == GST_EVENT_SEEK) { // the base class refuses those from downstream only
        gst_event_unref(event);
        return 0;
    }
    return GST_ELEMENT_CLASS(parentClass)->send_event(element, event);
}

gboolean start(GstBaseSrc* base) {
    return guarded<gboolean>(base, 0, [](Source& source) {
        source.start();
        return 1;
    });
}

gboolean stop(GstBaseSrc* base) {
    sourceOf(base).stop();
    return 1;
}

gboolean unlock(GstBaseSrc* base) {
    sourceOf(base).unlock();
    return 1;
}

gboolean unlockStop(GstBaseSrc* base) {
    sourceOf(base).unlockStop();
    return 1;
}

GstCaps* getCaps(GstBaseSrc* base, GstCaps* filter) {
    GstCaps* const caps = sourceOf(base).caps();
    if (filter == nullptr) {
        return caps;
    }
    GstCaps* const filtered = gst_caps_intersect_full(caps, filter, GST_CAPS_INTERSECT_FIRST);
    gst_caps_unref(caps);
    return filtered;
}

gboolean negotiate(GstBaseSrc* base) {
    return guarded<gboolean>(base, 0, [base](Source& source) {
        source.adaptRate();
        // Caps are agreed on when the first frame is there: nothing else is certain about frames.
        if (!source.isNegotiable() || parentClass->negotiate(base) != 0) {
            return 1;
        }
        if (GST_PAD_IS_FLUSHING(GST_BASE_SRC_PAD(base))) {
            return 0;
        }
        throw source.refusalOfDownstream();
    });
}

gboolean setCaps(GstBaseSrc* base, GstCaps* caps) {
    return sourceOf(base).setCaps(caps) ? 1 : 0;
}

gboolean decideAllocation(GstBaseSrc* base, GstQuery* query) {
    sourceOf(base).decideAllocation(*query);
    return 1;
}

gboolean query(GstBaseSrc* base, GstQuery* query) {
    if (GST_QUERY_TYPE(query) == GST_QUERY_LATENCY) {
        const auto [least, most] = sourceOf(base).latency();
        gst_query_set_latency(query, 1, least, most);
        return 1;
    }
    return parentClass->query(base, query);
}

GstFlowReturn create(GstPushSrc* push, GstBuffer** buffer) {
    return guarded(push, GST_FLOW_ERROR, [buffer](Source& source) { return source.create(*buffer); });
}

void installProperties(GObjectClass& objectClass) {
    constexpr auto kAlways = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS);
    constexpr auto kReady = static_cast<GParamFlags>(kAlways | GST_PARAM_MUTABLE_READY);
    constexpr auto kPlaying = static_cast<GParamFlags>(kAlways | GST_PARAM_MUTABLE_PLAYING);
    constexpr auto kReadable = static_cast<GParamFlags>(G_PARAM_READABLE | G_PARAM_STATIC_STRINGS);
    const SourceOptions initial;
    g_object_class_install_property(
        &objectClass, kSerial,
        g_param_spec_string("serial", "Serial number",
                            "Serial number of the camera, as gst-device-monitor-1.0 and 'quill list' show it; "
                            "empty for the first camera that has a stream",
                            "", kReady));
    g_object_class_install_property(
        &objectClass, kFormat,
        g_param_spec_enum("format", "Pixel format",
                          "Pixel format of the buffers. Automatic is the camera's own format where downstream takes "
                          "it, otherwise the first that the library converts to and downstream takes",
                          getFormatType(), initial.format, kReady));
    g_object_class_install_property(
        &objectClass, kQueue,
        g_param_spec_uint("queue", "Queue",
                          "Number of frames that wait for downstream. When more arrive, the oldest is dropped, "
                          "counted and reported by a QoS message",
                          1, CameraInterface::kMaximumQueueCapacity, initial.queueCapacity, kReady));
    g_object_class_install_property(
        &objectClass, kSettingsFile,
        g_param_spec_string("settings-file", "File of settings",
                            "File of settings, as 'quill settings save' writes it for a camera of the same model, "
                            "which the camera gets before it starts; empty for none",
                            "", kReady));
    g_object_class_install_property(
        &objectClass, kExtraProperties,
        g_param_spec_string("extra-properties", "Properties of the camera",
                            "Properties of the camera, by the names and in the units of 'quill properties', such as "
                            "'Video Exposure=12.5, Video Gain=3'. They are written after the settings file, in an "
                            "order that works, or at once if the camera is in use. A backslash takes a comma into a "
                            "value",
                            "", kPlaying));
    g_object_class_install_property(
        &objectClass, kStats,
        g_param_spec_boxed("stats", "Statistics",
                           "Frames since the start, as unsigned 64-bit numbers: captured, delivered to the element, "
                           "waiting, and lost for one reason each: dropped (downstream was too slow, or the pipeline "
                           "paused), and what the camera and its transport lost",
                           GST_TYPE_STRUCTURE, kReadable));
}

void initialiseClass(gpointer klass, gpointer /*data*/) {
    parentClass = static_cast<GstBaseSrcClass*>(g_type_class_peek_parent(klass));

    GObjectClass* const objectClass = G_OBJECT_CLASS(klass);
    objectClass->set_property = setProperty;
    objectClass->get_property = getProperty;
    objectClass->finalize = finalize;
    installProperties(*objectClass);

    GstElementClass* const elementClass = GST_ELEMENT_CLASS(klass);
    elementClass->change_state = changeState;
    elementClass->send_event = sendEvent;
    gst_element_class_set_static_metadata(elementClass, "Quill camera source", "Source/Video/Hardware",
                                          "Delivers the frames of a machine-vision camera, without a copy where "
                                          "downstream takes the camera's pixel format",
                                          "The Quill project");
    GstCaps* const caps = makeTemplateCaps();
    gst_element_class_add_pad_template(elementClass, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);

    GstBaseSrcClass* const baseClass = GST_BASE_SRC_CLASS(klass);
    baseClass->start = start;
    baseClass->stop = stop;
    baseClass->unlock = unlock;
    baseClass->unlock_stop = unlockStop;
    baseClass->get_caps = getCaps;
    baseClass->negotiate = negotiate;
    baseClass->set_caps = setCaps;
    baseClass->decide_allocation = decideAllocation;
    baseClass->query = query;
    GST_PUSH_SRC_CLASS(klass)->create = create;
    gst_type_mark_as_plugin_api(getFormatType(), static_cast<GstPluginAPIFlags>(0));
}

void initialiseInstance(GTypeInstance* instance, gpointer /*klass*/) {
    GstBaseSrc* const base = GST_BASE_SRC(instance);
    static_cast<QuillSrc*>(static_cast<gpointer>(instance))->source = new Source(*base);
    gst_base_src_set_live(base, 1);
    gst_base_src_set_format(base, GST_FORMAT_TIME);
}

} // namespace

GType getSourceType() {
    static const GType type =
        g_type_register_static_simple(GST_TYPE_PUSH_SRC, g_intern_static_string("QuillSrc"), sizeof(QuillSrcClass),
                                      initialiseClass, sizeof(QuillSrc), initialiseInstance, GTypeFlags{});
    return type;
}

} // namespace QuillGStreamer
