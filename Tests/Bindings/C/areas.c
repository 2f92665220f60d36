// SPDX-License-Identifier: Apache-2.0

// Uses every area of the C interface once, on the devices in software, as any C program would.

#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <quillcamera.h>

static quill_error error = QUILL_ERROR_INIT;

static void require(bool holds, const char* what, int line) {
    if (!holds) {
        fprintf(stderr, "line %d: not so: %s\n%s %s: %s %s\n", line, what, quill_status_name(error.status), error.word,
                error.sentence, error.place);
        exit(1);
    }
}
#define REQUIRE(condition) require((condition), #condition, __LINE__)
#define OK(call) require((call) == QUILL_OK, #call, __LINE__)

static bool fails(quill_status got, quill_status wanted, const char* word) {
    return got == wanted && error.status == wanted && strcmp(error.word, word) == 0 && error.sentence[0] != 0;
}

/// Compares a text with what is expected, and frees it.
static bool is_text(char* text, const char* wanted) {
    const bool equal = strcmp(text, wanted) == 0;
    quill_free(text);
    return equal;
}

static bool contains(char** list, size_t count, const char* wanted) {
    bool found = false;
    for (size_t i = 0; i < count; ++i) {
        found = found || strcmp(list[i], wanted) == 0;
    }
    REQUIRE(list[count] == NULL);
    quill_free(list);
    return found;
}

static const char* value_of(const quill_entry* entries, size_t count, const char* key) {
    for (size_t i = 0; i < count; ++i) {
        if (strcmp(entries[i].key, key) == 0) {
            return entries[i].value;
        }
    }
    return "";
}

static quill_camera use_list(void) {
    quill_entry* cameras;
    size_t count;
    quill_camera camera, again;
    unsigned added;
    char* text;
    quill_camera_kind kind;
    OK(quill_initialise_workspace(&error));
    OK(quill_search_for_new_cameras(&added, &error));
    REQUIRE(added == 0);
    OK(quill_get_cameras_list(&cameras, &count, &error));
    REQUIRE(strcmp(value_of(cameras, count, "41500102"), "Model 08A") == 0);
    quill_free(cameras);
    OK(quill_get_enumeration_failures(&cameras, &count, &error));
    quill_free(cameras);
    REQUIRE(fails(quill_get_camera("nobody", &camera, &error), QUILL_EXCEPTION_CAMERA, "CameraNotFound"));
    REQUIRE(strstr(error.place, "Shared/src/Cameras/") != NULL && strstr(error.sentence, "nobody") != NULL);
    OK(quill_get_camera("41500101", &camera, &error));
    OK(quill_get_camera("41500101", &again, &error));
    REQUIRE(camera.id == again.id);
    OK(quill_camera_get_serial_number(camera, &text, &error));
    REQUIRE(is_text(text, "41500101"));
    OK(quill_camera_get_model_name(camera, &text, &error));
    REQUIRE(is_text(text, "Model 613"));
    OK(quill_camera_get_kind(camera, &kind, &error));
    REQUIRE(kind == QUILL_KIND_SOFTWARE_DEVICE && strcmp(quill_get_kind_name(kind), "software device") == 0);
    return camera;
}

static void use_connection(quill_camera camera) {
    quill_camera_state state;
    quill_entry* info;
    size_t count;
    bool is;
    REQUIRE(fails(quill_camera_suspend(camera, &error), QUILL_EXCEPTION_CAMERA_STATE, "CameraState"));
    OK(quill_camera_connect(camera, &error));
    OK(quill_camera_suspend(camera, &error));
    OK(quill_camera_get_state(camera, &state, &error));
    REQUIRE(state == QUILL_STATE_SUSPENDED);
    OK(quill_camera_connect(camera, &error));
    OK(quill_camera_is_connected(camera, &is, &error));
    REQUIRE(is);
    OK(quill_camera_is_camera_alive(camera, &is, &error));
    REQUIRE(is);
    OK(quill_camera_get_camera_info(camera, &info, &count, &error));
    REQUIRE(strcmp(value_of(info, count, "Model Name"), "Model 613") == 0);
    quill_free(info);
}

static char changed[64];

static void note_change(void* context, quill_camera camera, const char* name) {
    bool connected = false;
    if (quill_camera_is_connected(camera, &connected, NULL) == QUILL_OK && connected) {
        snprintf(changed, sizeof changed, "%s", name);
    }
    REQUIRE(fails(quill_end_workspace(&error), QUILL_EXCEPTION, "WouldWaitForItself"));
    ++*(int*)context;
}
static void note_release(void* context) {
    *(int*)context = -100;
}

static void use_properties(quill_camera camera) {
    const char* const exposure = "Video Exposure";
    char** list;
    char* text;
    size_t count;
    int64_t integer;
    double number;
    bool is;
    quill_property_type type;
    quill_property_visibility visibility;
    int calls = 0;
    OK(quill_camera_get_supported_properties(camera, &list, &count, &error));
    REQUIRE(contains(list, count, exposure));
    OK(quill_camera_is_property_supported(camera, "Iris", &is, &error));
    REQUIRE(!is);
    REQUIRE(fails(quill_property_get_value(camera, "Iris", &text, &error), QUILL_EXCEPTION_PROPERTY,
                  "PropertyUnsupported"));
    OK(quill_camera_register_property_change_callback(camera, note_change, &calls, note_release, &error));
    OK(quill_property_set_value(camera, exposure, "12.5", &error));
    REQUIRE(calls > 0 && strcmp(changed, exposure) == 0);
    OK(quill_camera_register_property_change_callback(camera, NULL, NULL, NULL, &error));
    REQUIRE(calls == -100);
    calls = 0;
    OK(quill_property_register_on_change_callback(camera, "Video Gain", note_change, &calls, note_release, &error));
    OK(quill_property_set_value(camera, exposure, "12.5", &error));
    REQUIRE(calls == 0);
    OK(quill_property_set_value(camera, "Video Gain", "2", &error));
    REQUIRE(calls == 1 && strcmp(changed, "Video Gain") == 0);
    OK(quill_property_register_on_change_callback(camera, "Video Gain", NULL, NULL, NULL, &error));
    REQUIRE(calls == -100);
    OK(quill_property_get_value(camera, exposure, &text, &error));
    REQUIRE(is_text(text, "12.500000"));
    OK(quill_property_set_double(camera, exposure, 0.0625, &error));
    OK(quill_property_get_double(camera, exposure, &number, &error));
    REQUIRE(fabs(number - 0.0625) < 1e-6);
    REQUIRE(fails(quill_property_get_int(camera, exposure, &integer, &error), QUILL_STD_INVALID_ARGUMENT, ""));
    REQUIRE(fails(quill_property_set_value(camera, exposure, "long", &error), QUILL_STD_INVALID_ARGUMENT, ""));
    OK(quill_property_set_int(camera, "Width", 640, &error));
    OK(quill_property_get_int(camera, "Width", &integer, &error));
    REQUIRE(integer == 640);
    OK(quill_property_set_bool(camera, "Buffer Last Frame", true, &error));
    OK(quill_property_get_bool(camera, "Buffer Last Frame", &is, &error));
    REQUIRE(is);
    REQUIRE(fails(quill_property_get_bool(camera, "Width", &is, &error), QUILL_EXCEPTION, "PropertyValueConversion"));
    OK(quill_property_reset_to_default(camera, "Buffer Last Frame", &error));
    OK(quill_property_update(camera, "Buffer Last Frame", true, &error));
    OK(quill_property_get_minimum(camera, "Width", &text, &error));
    REQUIRE(strtol(text, NULL, 10) > 0);
    quill_free(text);
    OK(quill_property_get_maximum(camera, "Width", &text, &error));
    REQUIRE(is_text(text, "2592"));
    OK(quill_property_get_default(camera, "Buffer Last Frame", &text, &error));
    REQUIRE(is_text(text, "Disabled"));
    OK(quill_property_is_read_only(camera, "Model Name", &is, &error));
    REQUIRE(is);
    OK(quill_property_is_available_for_writing(camera, exposure, &is, &error));
    REQUIRE(is);
    OK(quill_property_is_discrete(camera, "Pixel Format", &is, &error));
    REQUIRE(is);
    OK(quill_property_get_value_list(camera, "Pixel Format", &list, &count, &error));
    REQUIRE(contains(list, count, "16"));
    OK(quill_property_get_unit(camera, exposure, &text, &error));
    REQUIRE(is_text(text, "ms"));
    OK(quill_property_get_increment(camera, "Width", &text, &error));
    REQUIRE(strtol(text, NULL, 10) > 0);
    quill_free(text);
    OK(quill_property_get_description(camera, exposure, &text, &error));
    REQUIRE(strlen(text) > 10);
    quill_free(text);
    OK(quill_property_get_category(camera, exposure, &text, &error));
    REQUIRE(is_text(text, "Acquisition Control"));
    OK(quill_property_get_type(camera, exposure, &type, &error));
    OK(quill_property_get_visibility(camera, exposure, &visibility, &error));
    REQUIRE(type == QUILL_PROPERTY_FLOAT && visibility == QUILL_VISIBILITY_BEGINNER);
}

static void use_functions(quill_camera camera) {
    static const char data[] = {'Q', 0, '\x55', '\n'};
    const quill_bytes write[] = {{"0x100", 5}, {data, sizeof data}};
    const quill_bytes erase[] = {{"0x100", 5}, {"4", 1}};
    char** names;
    quill_bytes* results;
    quill_parameter_descriptor** format;
    size_t count;
    bool is;
    OK(quill_camera_get_supported_functions(camera, &names, &count, &error));
    REQUIRE(contains(names, count, "Read Flash"));
    OK(quill_function_is_available(camera, "Read Flash", &is, &error));
    REQUIRE(is);
    OK(quill_function_get_parameters(camera, "Read Flash", &format, &count, &error));
    REQUIRE(count == 2 && strcmp(format[1]->label, "Length") == 0 && format[1]->type == QUILL_PARAMETER_INTEGER);
    quill_free(format);
    OK(quill_function_get_return_format(camera, "Read Flash", &format, &count, &error));
    REQUIRE(count == 1 && format[0]->type == QUILL_PARAMETER_STRING && format[1] == NULL);
    quill_free(format);
    REQUIRE(fails(quill_camera_perform(camera, "Read Flash", NULL, 0, &results, &count, &error),
                  QUILL_EXCEPTION_INVALID_ARGUMENT, "ArgumentEmpty"));
    OK(quill_camera_perform(camera, "Erase Flash", erase, 2, &results, &count, &error));
    quill_free(results);
    OK(quill_camera_perform(camera, "Write Flash", write, 2, &results, &count, &error));
    quill_free(results);
    OK(quill_camera_perform(camera, "Read Flash", erase, 2, &results, &count, &error));
    REQUIRE(count == 1 && results[0].length == sizeof data && memcmp(results[0].data, data, sizeof data) == 0);
    quill_free(results);
}

static void keep_frame(void* context, quill_frame frame) {
    quill_frame* const kept = context;
    if (kept->id == 0) {
        quill_frame_copy(frame, kept, NULL);
    }
}

static void use_stream(quill_camera camera) {
    quill_frame_queue_settings settings = QUILL_FRAME_QUEUE_SETTINGS_INIT;
    quill_stream_statistics statistics = QUILL_STREAM_STATISTICS_INIT;
    quill_frame_information information = QUILL_FRAME_INFORMATION_INIT;
    quill_image_layout layout = QUILL_IMAGE_LAYOUT_INIT, same = QUILL_IMAGE_LAYOUT_INIT;
    quill_stream_counter** counters;
    quill_frame_queue queue;
    quill_frame_queue_status status;
    quill_frame frame, kept = {0};
    quill_image image;
    size_t count;
    bool is;
    settings.capacity = 0;
    REQUIRE(fails(quill_camera_open_frame_queue(camera, &settings, &queue, &error), QUILL_EXCEPTION_INVALID_ARGUMENT,
                  "ArgumentUnhandled"));
    settings.capacity = 4;
    settings.name = "areas";
    OK(quill_camera_open_frame_queue(camera, &settings, &queue, &error));
    OK(quill_frame_queue_capacity(queue, &count, &error));
    REQUIRE(count == 4);
    OK(quill_frame_queue_pop(queue, QUILL_NO_LIMIT, &status, &frame, &error));
    REQUIRE(status == QUILL_QUEUE_STOPPED && frame.id == 0 && strlen(quill_describe(status)) > 10);
    OK(quill_camera_set_frame_callback(camera, &settings, keep_frame, &kept, NULL, &error));
    OK(quill_camera_start_stream(camera, &error));
    OK(quill_frame_queue_wait_for_run(queue, QUILL_NO_LIMIT, &status, &error));
    OK(quill_camera_is_streaming(camera, &is, &error));
    REQUIRE(status == QUILL_QUEUE_FRAME && is);
    OK(quill_frame_queue_pop(queue, QUILL_NO_LIMIT, &status, &frame, &error));
    REQUIRE(status == QUILL_QUEUE_FRAME);
    OK(quill_frame_get_information(frame, &information, &error));
    REQUIRE(information.run > 0 && information.number > 0 && information.has_exposure && information.arrival_ns > 0);
    OK(quill_frame_get_layout(frame, &layout, &error));
    REQUIRE(layout.width == 640 && layout.image_size == (uint64_t)layout.stride * layout.height);
    OK(quill_frame_get_image(frame, &image, &error));
    OK(quill_frame_release(frame, &error));
    REQUIRE(fails(quill_frame_release(frame, &error), QUILL_INVALID_HANDLE, ""));
    OK(quill_image_get_layout(image, &same, &error));
    REQUIRE(same.data == layout.data && same.format == QUILL_BAYER_RGGB);
    OK(quill_image_release(image, &error));
    OK(quill_camera_get_image(camera, &image, &error));
    OK(quill_image_release(image, &error));
    OK(quill_camera_set_desired_interval_time(camera, QUILL_STREAM_DELIVERED, 2, &error));
    OK(quill_camera_get_stream_statistics(camera, &statistics, &error));
    REQUIRE(statistics.received_frame_count > 0 && statistics.delivered_interval_time == 2);
    OK(quill_camera_get_stream_counters(camera, &counters, &count, &error));
    REQUIRE(count > 0 && strcmp(counters[0]->name, "Captured") == 0 && counters[0]->value > 0);
    quill_free(counters);
    OK(quill_camera_set_frame_callback(camera, NULL, NULL, NULL, NULL, &error));
    OK(quill_camera_stop_stream(camera, &error));
    OK(quill_frame_get_layout(kept, &layout, &error)); // the callback got the first frame before this thread
    OK(quill_frame_release(kept, &error));
    OK(quill_frame_queue_get_counters(queue, &counters, &count, &error));
    quill_free(counters);
    OK(quill_frame_queue_close(queue, &error));
    OK(quill_frame_queue_size(queue, &count, &error));
    REQUIRE(count == 0);
    OK(quill_frame_queue_pop(queue, 0, &status, &frame, &error));
    REQUIRE(status == QUILL_QUEUE_CLOSED);
    OK(quill_frame_queue_release(queue, &error));
}

static void use_images(quill_camera camera) {
    static const unsigned char red[] = {200, 30, 10}; // and three zeros
    static const unsigned char deep[] = {0xFF, 0x0F, 0x01, 0x00};
    quill_image image, converted;
    quill_image_layout layout = QUILL_IMAGE_LAYOUT_INIT;
    quill_image_format format = 0;
    quill_conversion** conversions;
    unsigned char* bytes;
    uint16_t* samples;
    char* text;
    size_t count;
    double channel[4];
    bool is;
    OK(quill_create_image(2, 1, red, sizeof red, 8, true, QUILL_RGB, &image, &error));
    OK(quill_convert_image(image, QUILL_BGRA, &converted, &error));
    OK(quill_image_get_layout(converted, &layout, &error));
    REQUIRE(memcmp(layout.data, "\x0A\x1E\xC8\xFF\x00\x00\x00\xFF", 8) == 0 && layout.image_size == 8);
    OK(quill_image_release(converted, &error));
    OK(quill_camera_convert_image(camera, image, QUILL_MONO, &converted, &error));
    OK(quill_image_release(converted, &error));
    OK(quill_image_get_pixel(image, 0, 0, channel, &error));
    REQUIRE(channel[0] == 200 && channel[2] == 10);
    REQUIRE(fails(quill_image_get_pixel(image, 1, 0, channel, &error), QUILL_STD_INVALID_ARGUMENT, ""));
    REQUIRE(fails(quill_convert_image(image, 99, &converted, &error), QUILL_STD_RUNTIME_ERROR, ""));
    OK(quill_image_release(image, &error));
    REQUIRE(
        fails(quill_create_image(0, 1, NULL, 0, 8, true, QUILL_RGB, &image, &error), QUILL_STD_INVALID_ARGUMENT, ""));
    OK(quill_create_image(2, 1, deep, sizeof deep, 12, true, QUILL_MONO, &image, &error));
    OK(quill_image_get_16bit_image_data(image, &samples, &count, &error));
    REQUIRE(count == 2 && samples[0] == 0xFFF && samples[1] == 1);
    quill_free(samples);
    OK(quill_image_get_8bit_image_data(image, &bytes, &count, &error));
    REQUIRE(count == 2 && bytes[0] == 255);
    quill_free(bytes);
    OK(quill_image_release(image, &error));
    OK(quill_conversion_exists(QUILL_BAYER_BGGR, QUILL_RGB, &is, &error));
    REQUIRE(is);
    OK(quill_get_available_conversions(&conversions, &count, &error));
    REQUIRE(count == 108 && strstr(conversions[107]->name, "_TO_") != NULL);
    quill_free(conversions);
    OK(quill_get_format_name(QUILL_BGRA_PLANAR, &text, &error));
    REQUIRE(is_text(text, "BGRA_PLANAR"));
    OK(quill_find_format("BGR", &is, &format, &error));
    REQUIRE(is && format == QUILL_BGR);
}

static bool stop_at_half(void* context, double fraction) {
    return context == NULL || fraction < 0.5;
}
static bool stop_at_name(void* context, const char* name) {
    return strcmp(name, context) != 0;
}

static void use_firmware(quill_camera camera) {
    unsigned char data[1000];
    unsigned char* flipped;
    uint8_t status;
    quill_boot_image* boot;
    quill_xsvf_report* report;
    bool is;
    static const unsigned char image[] = {'C', 'Y', 0x1C, 0xB0, 1, 0, 0, 0, 0, 1, 0, 0,
                                          9,   9,   9,    9,    0, 0, 0, 0, 0, 1, 0, 0};
    static const unsigned char xsvf[] = {0x00}; // XCOMPLETE
    memset(data, 0x5A, sizeof data);
    OK(quill_programmer_write_buffer_to_flash(camera, data, sizeof data, 0x20000, 4096, 100, stop_at_half, NULL,
                                              &error));
    OK(quill_programmer_compare_flash(camera, data, sizeof data, 0x20000, 100, NULL, NULL, &is, &error));
    REQUIRE(is);
    REQUIRE(fails(quill_programmer_write_buffer_to_flash(camera, data, sizeof data, 0x20000, 4096, 100, stop_at_half,
                                                         &is, &error),
                  QUILL_CANCELLED, ""));
    REQUIRE(fails(
        quill_programmer_write_firmware_to_flash(camera, data, sizeof data, 0x20000, 4096, 100, NULL, NULL, &error),
        QUILL_STD_INVALID_ARGUMENT, ""));
    REQUIRE(fails(quill_programmer_write_firmware_to_ram(camera, data, sizeof data, NULL, NULL, &error),
                  QUILL_STD_INVALID_ARGUMENT, ""));
    OK(quill_programmer_read_flash_status(camera, 0, &status, &error));
    OK(quill_programmer_write_flash_status(camera, 0, status, &error));
    OK(quill_programmer_flip_bit_order("\x01\x80", 2, &flipped, &error));
    REQUIRE(flipped[0] == 0x80 && flipped[1] == 0x01);
    quill_free(flipped);
    OK(quill_read_boot_image(image, sizeof image, &boot, &error));
    REQUIRE(boot->section_count == 1 && boot->sections[0]->length == 4 && boot->entry_address == 0x100 &&
            boot->image_size == sizeof image);
    quill_free(boot);
    OK(quill_check_xsvf(xsvf, sizeof xsvf, &report, &error));
    REQUIRE(report->succeeded && report->command_count == 1);
    quill_free(report);
    OK(quill_can_play_xsvf(camera, &is, &error));
    REQUIRE(is);
    OK(quill_play_xsvf(camera, "\xEE", 1, stop_at_half, NULL, &report, &error));
    REQUIRE(report->error == QUILL_XSVF_ILLEGAL_COMMAND && !report->succeeded && report->expected_tdo.length == 0);
    quill_free(report);
    OK(quill_programmer_jtag_xsvf(camera, xsvf, sizeof xsvf, &error));
}

static void use_settings(quill_camera camera) {
    quill_camera_settings *settings, *parsed;
    quill_settings_options options = QUILL_SETTINGS_OPTIONS_INIT;
    quill_settings_report* report;
    quill_setting_difference** differences;
    char* json;
    size_t count;
    OK(quill_read_settings(camera, &settings, &error));
    OK(quill_to_json(settings, &json, &error));
    OK(quill_parse_settings(json, &parsed, &error));
    REQUIRE(parsed->value_count == settings->value_count && strcmp(parsed->model_name, "Model 613") == 0);
    REQUIRE(fails(quill_parse_settings("{", &settings, &error), QUILL_EXCEPTION, "SettingsInvalid"));
    OK(quill_property_set_value(camera, "Width", "320", &error));
    OK(quill_compare_settings(camera, parsed, &differences, &count, &error));
    REQUIRE(count == 1 && strcmp(differences[0]->name, "Width") == 0 && strcmp(differences[0]->wanted, "640") == 0);
    quill_free(differences);
    options.progress = stop_at_name;
    options.context = (void*)"Width";
    OK(quill_write_settings(camera, parsed, &options, &report, &error));
    REQUIRE(report->interruption == QUILL_CANCELLED && !report->is_complete && report->failed_count > 0);
    quill_free(report);
    OK(quill_write_settings(camera, parsed, NULL, &report, &error));
    REQUIRE(report->is_complete && report->written_count == 1 && strcmp(report->written[0], "Width") == 0);
    quill_free(report);
    quill_free(parsed);
    quill_free(settings);
    quill_free(json);
}

static void use_network(quill_camera camera) {
    static const char* const addresses[] = {"127.0.0.300"};
    quill_genicam_settings settings = QUILL_GENICAM_SETTINGS_INIT;
    quill_genicam_settings* present;
    quill_camera_network* network;
    quill_gige_description* description;
    uint64_t delay;
    settings.usb = false;
    settings.heartbeat_ms = 1000;
    OK(quill_genicam_configure(&settings, &error));
    OK(quill_genicam_get_settings(&present, &error));
    REQUIRE(present->heartbeat_ms == 1000 && !present->usb && present->card_count == 0 && present->cards[0] == NULL);
    quill_free(present);
    settings.addresses = addresses;
    settings.address_count = 1;
    REQUIRE(fails(quill_genicam_configure(&settings, &error), QUILL_EXCEPTION_INVALID_ARGUMENT, "ArgumentUnhandled"));
    REQUIRE(strstr(error.sentence, "127.0.0.300") != NULL);
    OK(quill_compute_packet_delay_ns(2, 1000, 1500, 0, &delay, &error));
    REQUIRE(delay > 0);
    REQUIRE(quill_describe_network("nobody", &network, &error) == QUILL_EXCEPTION_CAMERA ||
            strncmp(error.word, "CameraEnumeration", 17) == 0); // without the adapter
    REQUIRE(strcmp(quill_get_verdict_name(QUILL_LINK_FAULT), "fault") == 0);
    REQUIRE(strcmp(quill_get_origin_name(QUILL_ORIGIN_DHCP), "DHCP") == 0);
    REQUIRE(strcmp(quill_get_origin_name(99), "unknown") == 0);
    OK(quill_read_gige(camera, &description, &error));
    REQUIRE(description == NULL);
}

static void use_library(void) {
    char version[32];
    char* kit;
    bool is;
    snprintf(version, sizeof version, "%d.%d.%d", QUILL_C_VERSION_MAJOR, QUILL_C_VERSION_MINOR, QUILL_C_VERSION_PATCH);
    REQUIRE(strcmp(version, quill_version()) == 0);
    OK(quill_is_zeph_installed(&is, &error));
    REQUIRE(is == (quill_get_zeph_version(&kit, &error) == QUILL_OK) && (is || error.code == 2));
    quill_free(is ? kit : NULL);
}

int main(void) {
    const quill_camera camera = use_list();
    use_connection(camera);
    use_properties(camera);
    use_functions(camera);
    use_stream(camera);
    use_images(camera);
    use_firmware(camera);
    use_settings(camera);
    use_network(camera);
    use_library();
    OK(quill_camera_disconnect(camera, &error));
    OK(quill_end_workspace(&error));
    REQUIRE(fails(quill_camera_connect(camera, &error), QUILL_INVALID_HANDLE, ""));
    return 0;
}
