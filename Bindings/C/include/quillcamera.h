// SPDX-License-Identifier: Apache-2.0
#ifndef QUILL_QUILLCAMERA_H
#define QUILL_QUILLCAMERA_H

#include <stdbool.h> // NOLINT(modernize-deprecated-headers): C as well
#include <stddef.h>  // NOLINT(modernize-deprecated-headers): C as well
#include <stdint.h>  // NOLINT(modernize-deprecated-headers): C as well

/// @file
/// The C interface of the camera library: the model of its C++ headers, without a second vocabulary.
///
/// Names are those of C++ in C's manner: Camera::startStream() is quill_camera_start_stream(), a static operation of
/// Camera has no "camera" in its name. The header of a C++ class says more about an operation than is repeated here.
///
/// **Failures.** Every function returns a status, 0 for success, and takes as its last argument a quill_error that it
/// fills on failure, or NULL. The status is the class of the exception that the C++ operation throws; no exception
/// leaves a function. Results are written on success only. Names of numbers, quill_version() and quill_free() cannot
/// fail and return what they are for. Pointers must not be NULL, except error, the settings of a queue, options,
/// callbacks and their contexts, progress functions, and data of no bytes; else the status is QUILL_NULL_ARGUMENT,
/// before anything happens.
///
/// **Handles** are plain values, copied like numbers, and compared by their id; id 0 is none. A handle that was
/// released, or is of another kind or process, gives QUILL_INVALID_HANDLE. Queues, frames and images belong to the
/// caller and are released by the function named there; an object in use by another thread lives until that call ends.
/// Cameras belong to the library: see quill_get_camera().
///
/// **Memory.** Texts, bytes, lists and reports that a function returns are one block of memory each, which the library
/// allocates and the caller passes to quill_free(), once, whatever is inside. This one rule covers what a camera
/// answers once and at any length, such as flash memory, for which a caller's buffer would have to be guessed. Texts
/// are UTF-8 and end with a zero; bytes have a length and may contain zeros.
///
/// **Structs** begin with their size, so that later versions can append members: start from the QUILL_..._INIT of the
/// struct. Lists of structs are arrays of pointers. Pairs (quill_bytes, quill_entry) never grow.
///
/// **Callbacks** take a context. With the call that registers a callback, the library takes over the context: it calls
/// the release function, if any, exactly once, when the callback is replaced or cleared (by NULL), when what it belongs
/// to ends, or before the call returns if that fails. When a registration returns, the former callback no longer runs.
/// A callback may use the library, but must not leave by longjmp() or an exception.
///
/// **Threads.** What is marked thread-safe may be called by any thread at any time. Otherwise one thread at a time uses
/// a camera, as in C++; different cameras are independent. A thread inside a function must not be cancelled
/// (pthread_cancel()).
///
/// **Forks.** In a forked child, cameras and queues of the parent are invalid handles; images and frames stay usable.
///
/// A program that also uses the C++ headers leaves the workspace and its two callbacks to this interface.

#define QUILL_C_VERSION_MAJOR 0
#define QUILL_C_VERSION_MINOR 1
#define QUILL_C_VERSION_PATCH 0

#if defined(_WIN32)
#    if defined(QUILL_BUILDING_C_LIBRARY)
#        define QUILL_C_API __declspec(dllexport)
#    else
#        define QUILL_C_API __declspec(dllimport)
#    endif
#else
#    define QUILL_C_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

// NOLINTBEGIN(modernize-use-using,modernize-redundant-void-arg): C as well

// --- Failures ---

/// Why a function failed: the class of the exception that the C++ operation throws, or a cause of this interface.
typedef int32_t quill_status;
enum {
    QUILL_OK = 0,

    QUILL_EXCEPTION = 1, ///< KestrelException; its subclasses follow
    QUILL_EXCEPTION_CAMERA = 2,
    QUILL_EXCEPTION_CAMERA_STATE = 3,
    QUILL_EXCEPTION_FUNCTION = 4,
    QUILL_EXCEPTION_INVALID_ARGUMENT = 5,
    QUILL_EXCEPTION_PROPERTY = 6,
    QUILL_EXCEPTION_PROPERTY_COMPARISON = 7,
    QUILL_EXCEPTION_STREAM = 8,

    QUILL_STD_INVALID_ARGUMENT = 20, ///< such as a text that is not a number
    QUILL_STD_OUT_OF_RANGE = 21,
    QUILL_STD_RUNTIME_ERROR = 22,
    QUILL_STD_RANGE_ERROR = 23,
    QUILL_STD_SYSTEM_ERROR = 24, ///< quill_error has its code
    QUILL_STD_BAD_ALLOC = 25,    ///< out of memory, or of handles
    QUILL_REGISTRY_ERROR = 26,   ///< win32::RegistryError; quill_error has its code
    QUILL_OTHER_EXCEPTION = 29,

    QUILL_INVALID_HANDLE = 40, ///< never given out, released, of another kind, or its camera does not exist any more
    QUILL_NULL_ARGUMENT = 41,  ///< a pointer that must not be NULL is
    QUILL_INVALID_SIZE = 42,   ///< the size at the start of a struct was not set
    QUILL_CANCELLED = 43       ///< a progress function ended the operation
};

/// A failure in words. Texts that do not fit are cut.
typedef struct quill_error {
    size_t size;
    quill_status status;
    int32_t code;        ///< of a system or registry error, otherwise 0
    char word[64];       ///< one word for the kind of failure, such as "CameraNotFound"; empty for standard exceptions
    char sentence[1024]; ///< who failed, and why
    char place[256];     ///< source file and line of the throw; empty if it is not known
} quill_error;
#define QUILL_ERROR_INIT                                                                                               \
    {                                                                                                                  \
        sizeof(quill_error), 0, 0, {0}, {0}, {                                                                         \
            0                                                                                                          \
        }                                                                                                              \
    }

/// Returns the name of a status, such as "KestrelException_Camera" or "InvalidHandle"; never freed. Thread-safe.
QUILL_C_API const char* quill_status_name(quill_status status);

// --- The library ---

/// Returns the version of the library that runs, such as "0.1.0"; never freed. The macros QUILL_C_VERSION_... are the
/// version of this header. Thread-safe.
QUILL_C_API const char* quill_version(void);

/// Frees a block of memory that a function returned; does nothing for NULL. Thread-safe.
QUILL_C_API void quill_free(void* block);

/// Bytes that may contain zeros.
typedef struct quill_bytes {
    const void* data;
    size_t length;
} quill_bytes;

/// A text and its key.
typedef struct quill_entry {
    const char* key;
    const char* value;
} quill_entry;

/// Frees the context of a callback.
typedef void (*quill_release_function)(void* context);
/// Hears the fraction that is done, up to 1, on the calling thread. Returns whether to continue; false ends the
/// operation with QUILL_CANCELLED.
typedef bool (*quill_progress_function)(void* context, double fraction);

/// Returns the version of the maker's driver kit. Thread-safe. Fails with QUILL_REGISTRY_ERROR if it is not installed.
QUILL_C_API quill_status quill_get_zeph_version(char** version, quill_error* error);
/// Says whether the driver kit is installed. Thread-safe.
QUILL_C_API quill_status quill_is_zeph_installed(bool* installed, quill_error* error);

// --- Handles ---

/// A camera of the list.
typedef struct quill_camera {
    uint64_t id;
} quill_camera;
/// A queue of frames; the caller's.
typedef struct quill_frame_queue {
    uint64_t id;
} quill_frame_queue;
/// A frame; the caller's.
typedef struct quill_frame {
    uint64_t id;
} quill_frame;
/// An image; the caller's.
typedef struct quill_image {
    uint64_t id;
} quill_image;

// --- The camera list; all of it thread-safe ---

/// Hears that cameras have arrived, on a thread of the library.
typedef void (*quill_new_connect_function)(void* context);
/// Hears which camera went away, on a thread of the library.
typedef void (*quill_disconnect_function)(void* context, const char* model_name, const char* serial_number);

/// Adds every attached camera and starts watching for changes. Further calls only add new cameras.
/// "WouldWaitForItself" inside a callback, or a progress or release function.
QUILL_C_API quill_status quill_initialise_workspace(quill_error* error);
/// Clears both callbacks, stops watching and destroys all cameras: their handles become invalid. First waits for calls
/// of other threads that use a camera; those that wait for an image end, since their stream is stopped. A program may
/// exit without it. "WouldWaitForItself" inside a callback, or a progress or release function.
QUILL_C_API quill_status quill_end_workspace(quill_error* error);
/// Returns the model name (value) of every listed camera by serial number (key).
QUILL_C_API quill_status quill_get_cameras_list(quill_entry** cameras, size_t* count, quill_error* error);
/// Returns the listed camera that has the serial number: the same handle at each call. It needs no release. A camera
/// that leaves the list keeps its handle, which is usable as in C++: connecting fails, the rest has no effect or fails.
/// The handle becomes invalid when the workspace ends, and when 63 further cameras have left. "CameraNotFound".
QUILL_C_API quill_status quill_get_camera(const char* serial_number, quill_camera* camera, quill_error* error);
/// Searches for cameras now and returns the number of those added.
QUILL_C_API quill_status quill_search_for_new_cameras(unsigned* added, quill_error* error);
/// Replaces the function that is called after cameras were added. "WouldWaitForItself" inside a callback, or a progress
/// or release function.
QUILL_C_API quill_status quill_register_new_connect_callback(quill_new_connect_function callback, void* context,
                                                             quill_release_function release, quill_error* error);
/// Replaces the function that is called for every camera that went away. Fails as the one before.
QUILL_C_API quill_status quill_register_disconnect_callback(quill_disconnect_function callback, void* context,
                                                            quill_release_function release, quill_error* error);
/// Returns the failures of the last enumeration: adapter (key) and reason (value).
QUILL_C_API quill_status quill_get_enumeration_failures(quill_entry** failures, size_t* count, quill_error* error);

// --- A camera: identity and connection ---

/// What a camera is, and how it is reached.
typedef int32_t quill_camera_kind;
enum {
    QUILL_KIND_UNKNOWN = 0,
    QUILL_KIND_SDK_DEVICE = 1,
    QUILL_KIND_SOFTWARE_DEVICE = 2,
    QUILL_KIND_SIMULATED = 3,
    QUILL_KIND_USB3_VISION = 4,
    QUILL_KIND_GENICAM = 5
};
typedef int32_t quill_camera_state;
enum { QUILL_STATE_CONNECTED = 0, QUILL_STATE_DISCONNECTED = 1, QUILL_STATE_SUSPENDED = 2 };

/// Returns the kind in words, such as "software device"; never freed. Thread-safe.
QUILL_C_API const char* quill_get_kind_name(quill_camera_kind kind);

/// Returns the serial number under which the camera is listed.
QUILL_C_API quill_status quill_camera_get_serial_number(quill_camera camera, char** serial_number, quill_error* error);
/// Returns the name of the model.
QUILL_C_API quill_status quill_camera_get_model_name(quill_camera camera, char** model_name, quill_error* error);
/// Thread-safe.
QUILL_C_API quill_status quill_camera_get_kind(quill_camera camera, quill_camera_kind* kind, quill_error* error);
/// Says whether a connected camera still answers.
QUILL_C_API quill_status quill_camera_is_camera_alive(quill_camera camera, bool* alive, quill_error* error);
/// Returns descriptive pairs, read from the camera's properties; none before the first connection.
QUILL_C_API quill_status quill_camera_get_camera_info(quill_camera camera, quill_entry** info, size_t* count,
                                                      quill_error* error);
/// Opens the camera; does nothing if it is connected. "CameraConnection".
QUILL_C_API quill_status quill_camera_connect(quill_camera camera, quill_error* error);
/// Stops the stream and closes the camera; does nothing if it is disconnected. "CameraState" if it is suspended.
QUILL_C_API quill_status quill_camera_disconnect(quill_camera camera, quill_error* error);
/// Stops the stream of a connected camera and suspends the camera. "CameraState".
QUILL_C_API quill_status quill_camera_suspend(quill_camera camera, quill_error* error);
/// Thread-safe.
QUILL_C_API quill_status quill_camera_get_state(quill_camera camera, quill_camera_state* state, quill_error* error);
/// Thread-safe.
QUILL_C_API quill_status quill_camera_is_connected(quill_camera camera, bool* connected, quill_error* error);

// --- Properties, by the names that the camera lists; "PropertyUnsupported" for any other name ---

typedef int32_t quill_property_type;
enum { QUILL_PROPERTY_INTEGER = 0, QUILL_PROPERTY_FLOAT = 1, QUILL_PROPERTY_STRING = 2, QUILL_PROPERTY_BOOLEAN = 3 };
/// For whom a property is: each level includes those before it.
typedef int32_t quill_property_visibility;
enum {
    QUILL_VISIBILITY_BEGINNER = 0,
    QUILL_VISIBILITY_EXPERT = 1,
    QUILL_VISIBILITY_GURU = 2,
    QUILL_VISIBILITY_INVISIBLE = 3
};
/// Hears that a property changed, on the thread that wrote it.
typedef void (*quill_property_change_function)(void* context, quill_camera camera, const char* name);

/// Returns the names of all properties, in ascending byte-wise order.
QUILL_C_API quill_status quill_camera_get_supported_properties(quill_camera camera, char*** names, size_t* count,
                                                               quill_error* error);
/// Says whether the camera has a property of that name.
QUILL_C_API quill_status quill_camera_is_property_supported(quill_camera camera, const char* name, bool* supported,
                                                            quill_error* error);
/// Replaces the function that is called after a property of the camera changed; it may still run on another thread that
/// writes a property meanwhile.
QUILL_C_API quill_status quill_camera_register_property_change_callback(quill_camera camera,
                                                                        quill_property_change_function callback,
                                                                        void* context, quill_release_function release,
                                                                        quill_error* error);

/// Replaces the function that is called after this property changed, until the camera is connected again, or the
/// function for all properties is replaced.
QUILL_C_API quill_status quill_property_register_on_change_callback(quill_camera camera, const char* name,
                                                                    quill_property_change_function callback,
                                                                    void* context, quill_release_function release,
                                                                    quill_error* error);

/// Reads the value, as text. "PropertyReadFailure".
QUILL_C_API quill_status quill_property_get_value(quill_camera camera, const char* name, char** value,
                                                  quill_error* error);
/// Writes a value, as text. What a text does depends on the kind of property, and the statuses with it: see Property.h
/// and PropertyNames.h.
QUILL_C_API quill_status quill_property_set_value(quill_camera camera, const char* name, const char* value,
                                                  quill_error* error);
/// Reads the value as a number. QUILL_STD_INVALID_ARGUMENT if the text is none, QUILL_STD_OUT_OF_RANGE if it does not
/// fit. Numbers are read and written independent of the locale.
QUILL_C_API quill_status quill_property_get_int(quill_camera camera, const char* name, int64_t* value,
                                                quill_error* error);
/// Reads the value as a number, like quill_property_get_int().
QUILL_C_API quill_status quill_property_get_double(quill_camera camera, const char* name, double* value,
                                                   quill_error* error);
/// Reads "Enabled" or "Disabled"; for any other text, "PropertyValueConversion".
QUILL_C_API quill_status quill_property_get_bool(quill_camera camera, const char* name, bool* value,
                                                 quill_error* error);
/// Writes a number, like quill_property_set_value().
QUILL_C_API quill_status quill_property_set_int(quill_camera camera, const char* name, int64_t value,
                                                quill_error* error);
/// Writes a number as the shortest text without exponent that is read as the same number.
QUILL_C_API quill_status quill_property_set_double(quill_camera camera, const char* name, double value,
                                                   quill_error* error);
/// Writes "Enabled" or "Disabled".
QUILL_C_API quill_status quill_property_set_bool(quill_camera camera, const char* name, bool value, quill_error* error);
/// Returns the smallest value, as text.
QUILL_C_API quill_status quill_property_get_minimum(quill_camera camera, const char* name, char** minimum,
                                                    quill_error* error);
/// Returns the largest value, as text.
QUILL_C_API quill_status quill_property_get_maximum(quill_camera camera, const char* name, char** maximum,
                                                    quill_error* error);
/// Returns the default value, as text.
QUILL_C_API quill_status quill_property_get_default(quill_camera camera, const char* name, char** default_value,
                                                    quill_error* error);
/// Writes the default value.
QUILL_C_API quill_status quill_property_reset_to_default(quill_camera camera, const char* name, quill_error* error);
/// Reports that the value may have changed other than through this property.
QUILL_C_API quill_status quill_property_update(quill_camera camera, const char* name, bool notify_linked,
                                               quill_error* error);
/// Says whether the property can never be written.
QUILL_C_API quill_status quill_property_is_read_only(quill_camera camera, const char* name, bool* read_only,
                                                     quill_error* error);
/// Says whether the property can be written now.
QUILL_C_API quill_status quill_property_is_available_for_writing(quill_camera camera, const char* name, bool* available,
                                                                 quill_error* error);
/// Says whether the value must be one of quill_property_get_value_list().
QUILL_C_API quill_status quill_property_is_discrete(quill_camera camera, const char* name, bool* discrete,
                                                    quill_error* error);
/// Returns the allowed values of a discrete property; none for any other.
QUILL_C_API quill_status quill_property_get_value_list(quill_camera camera, const char* name, char*** values,
                                                       size_t* count, quill_error* error);
/// Returns the unit of the value and its limits; empty if it has none, or nobody knows.
QUILL_C_API quill_status quill_property_get_unit(quill_camera camera, const char* name, char** unit,
                                                 quill_error* error);
/// Returns the step of which the value must be a multiple; empty if there is none.
QUILL_C_API quill_status quill_property_get_increment(quill_camera camera, const char* name, char** increment,
                                                      quill_error* error);
/// Returns one sentence.
QUILL_C_API quill_status quill_property_get_description(quill_camera camera, const char* name, char** description,
                                                        quill_error* error);
/// Returns the category of the Standard Features Naming Convention, in words; empty if nobody knows.
QUILL_C_API quill_status quill_property_get_category(quill_camera camera, const char* name, char** category,
                                                     quill_error* error);
/// Says for whom the property is; beginners unless the camera says otherwise.
QUILL_C_API quill_status quill_property_get_visibility(quill_camera camera, const char* name,
                                                       quill_property_visibility* visibility, quill_error* error);
/// Returns the type that the text represents.
QUILL_C_API quill_status quill_property_get_type(quill_camera camera, const char* name, quill_property_type* type,
                                                 quill_error* error);

// --- Functions, by the names that the camera lists; "FunctionUnsupported" for any other name ---

typedef int32_t quill_parameter_type;
enum {
    QUILL_PARAMETER_INTEGER = 0,
    QUILL_PARAMETER_STRING = 1,
    QUILL_PARAMETER_BOOLEAN = 2,
    QUILL_PARAMETER_FLOAT = 3
};
/// One parameter or result of a function.
typedef struct quill_parameter_descriptor {
    size_t size;
    const char* label;
    quill_parameter_type type;
} quill_parameter_descriptor;

/// Returns the names of all functions, in ascending byte-wise order.
QUILL_C_API quill_status quill_camera_get_supported_functions(quill_camera camera, char*** names, size_t* count,
                                                              quill_error* error);
/// Performs a function and returns its results, one per descriptor of quill_function_get_return_format(). Numbers are
/// texts, "0x" and "0" as in C; data are bytes. "ArgumentEmpty", "FunctionExecution". Blocks for as long as the camera
/// takes.
QUILL_C_API quill_status quill_camera_perform(quill_camera camera, const char* name, const quill_bytes* parameters,
                                              size_t parameter_count, quill_bytes** results, size_t* count,
                                              quill_error* error);
/// Says whether the function can be performed now.
QUILL_C_API quill_status quill_function_is_available(quill_camera camera, const char* name, bool* available,
                                                     quill_error* error);
/// Describes the parameters, in their order.
QUILL_C_API quill_status quill_function_get_parameters(quill_camera camera, const char* name,
                                                       quill_parameter_descriptor*** parameters, size_t* count,
                                                       quill_error* error);
/// Describes the results, in their order.
QUILL_C_API quill_status quill_function_get_return_format(quill_camera camera, const char* name,
                                                          quill_parameter_descriptor*** results, size_t* count,
                                                          quill_error* error);

// --- The stream; "StreamUnsupported" for a camera without one ---

/// Selects one of the frame counters of a stream.
typedef int32_t quill_stream_type;
enum { QUILL_STREAM_DELIVERED = 1, QUILL_STREAM_RECEIVED = 2 };
/// Counts and rates of a stream.
typedef struct quill_stream_statistics {
    size_t size;
    double delivered_frames_per_second;
    double received_frames_per_second;
    uint64_t delivered_frame_count;
    uint64_t received_frame_count;
    uint64_t incomplete_frame_count;
    double delivered_interval_time; ///< over which the rate is averaged, in seconds
    double received_interval_time;
    double capture_time;             ///< of the last capture, in seconds
    double image_data_transfer_time; ///< taken to hand over the last image, in seconds
} quill_stream_statistics;
#define QUILL_STREAM_STATISTICS_INIT                                                                                   \
    { sizeof(quill_stream_statistics), 0, 0, 0, 0, 0, 0, 0, 0, 0 }
/// A counter that says what it counts.
typedef struct quill_stream_counter {
    size_t size;
    const char* name;        ///< such as "Captured"
    uint64_t value;          ///< frames, unless the description names another unit
    const char* description; ///< one sentence
    bool is_loss;            ///< it counts frames that somebody did not get
} quill_stream_counter;

/// Says whether the stream runs; false for a camera without one.
QUILL_C_API quill_status quill_camera_is_streaming(quill_camera camera, bool* streaming, quill_error* error);
/// Starts the stream with the present settings. "InvalidStreamSettings", "InvalidStreamFormat",
/// "RegisterStreamCallback", "StartStream".
QUILL_C_API quill_status quill_camera_start_stream(quill_camera camera, quill_error* error);
/// Stops the stream: when it returns, no frame is captured any more. May be called while another thread waits in
/// quill_camera_get_image(), which then fails with "StreamStopped". "StopStream", "RemoveStreamCallback".
QUILL_C_API quill_status quill_camera_stop_stream(quill_camera camera, quill_error* error);
/// Returns the rates and counts of the stream.
QUILL_C_API quill_status quill_camera_get_stream_statistics(quill_camera camera, quill_stream_statistics* statistics,
                                                            quill_error* error);
/// Sets the interval over which a frame rate is averaged, in seconds.
QUILL_C_API quill_status quill_camera_set_desired_interval_time(quill_camera camera, quill_stream_type type,
                                                                double seconds, quill_error* error);
/// Returns what became of all frames that the camera captured.
QUILL_C_API quill_status quill_camera_get_stream_counters(quill_camera camera, quill_stream_counter*** counters,
                                                          size_t* count, quill_error* error);
/// Returns the next image, which the caller releases. Starts the stream for it if it does not run. The wait is bounded
/// by the property "Timeout". "StreamTimeout", "StreamStopped".
QUILL_C_API quill_status quill_camera_get_image(quill_camera camera, quill_image* image, quill_error* error);

// --- Every frame ---

/// What happens to a frame that arrives while a queue is full.
typedef int32_t quill_when_full;
enum {
    QUILL_DROP_OLDEST = 0,
    QUILL_DROP_NEWEST = 1,
    QUILL_HOLD_BACK = 2 ///< the stream waits until the queue has space
};
/// How many frames a queue holds, and what becomes of the others.
typedef struct quill_frame_queue_settings {
    size_t size;
    size_t capacity; ///< frames that wait: 1 to 65536
    quill_when_full when_full;
    const char* name; ///< distinguishes the queue in quill_camera_get_stream_counters()
} quill_frame_queue_settings;
#define QUILL_FRAME_QUEUE_SETTINGS_INIT                                                                                \
    { sizeof(quill_frame_queue_settings), 8, QUILL_DROP_OLDEST, "" }
/// Why a wait for a frame ended.
typedef int32_t quill_frame_queue_status;
enum {
    QUILL_QUEUE_FRAME = 0,
    QUILL_QUEUE_TIMED_OUT = 1,
    QUILL_QUEUE_STOPPED = 2,   ///< the stream does not run
    QUILL_QUEUE_RUN_ENDED = 3, ///< the camera ended its capture by itself
    QUILL_QUEUE_OUT_OF_MEMORY = 4,
    QUILL_QUEUE_SUSPENDED = 5,
    QUILL_QUEUE_CAMERA_GONE = 6, ///< no frame will ever come
    QUILL_QUEUE_CLOSED = 7
};
/// A limit of a wait that has none.
#define QUILL_NO_LIMIT (-1)
/// What a camera's own timestamps count from.
typedef int32_t quill_camera_clock;
enum { QUILL_CLOCK_NONE = 0, QUILL_CLOCK_CAMERA = 1, QUILL_CLOCK_EPOCH = 2 };
/// Which frame an image is, and when it came.
typedef struct quill_frame_information {
    size_t size;
    uint64_t run;                 ///< the run of the stream, from 1
    uint64_t number;              ///< in the run, from 1; a gap is a lost frame
    uint64_t camera_number;       ///< that the camera gave the frame; 0 unless has_camera_number
    int64_t camera_time_ns;       ///< the camera's own timestamp, on camera_clock; 0 unless has_camera_time
    int64_t arrival_ns;           ///< when the last byte was here, on CLOCK_MONOTONIC
    int64_t arrival_wall_time_ns; ///< the same since 1970-01-01 00:00 UTC
    double exposure_ms;           ///< 0 unless has_exposure
    double gain;                  ///< in the unit of the camera's gain property; 0 unless has_gain
    quill_camera_clock camera_clock;
    bool has_camera_number;
    bool has_camera_time;
    bool has_exposure;
    bool has_gain;
} quill_frame_information;
#define QUILL_FRAME_INFORMATION_INIT                                                                                   \
    { sizeof(quill_frame_information), 0, 0, 0, 0, 0, 0, 0, 0, 0, false, false, false, false }
/// Gets every frame, on a thread of its own. The frame is valid during the call; quill_frame_copy() keeps it.
typedef void (*quill_frame_function)(void* context, quill_frame frame);

/// Returns a sentence about the status, such as "The stream does not run."; never freed. Thread-safe.
QUILL_C_API const char* quill_describe(quill_frame_queue_status status);

/// Opens a queue that gets every frame from now on, and which the caller releases. Does not start the stream.
/// "ArgumentUnhandled": the capacity is out of range, or when_full is none of its numbers.
QUILL_C_API quill_status quill_camera_open_frame_queue(quill_camera camera, const quill_frame_queue_settings* settings,
                                                       quill_frame_queue* queue, quill_error* error);
/// Replaces the function that is called for every frame of a queue with these settings. Fails as the one before, and
/// with "WouldWaitForItself" inside such a function.
QUILL_C_API quill_status quill_camera_set_frame_callback(quill_camera camera,
                                                         const quill_frame_queue_settings* settings,
                                                         quill_frame_function callback, void* context,
                                                         quill_release_function release, quill_error* error);

// Queues are thread-safe, and outlive their camera.

/// Takes the oldest frame, which the caller releases, and waits for one at most limit_ns nanoseconds: 0 does not wait,
/// QUILL_NO_LIMIT waits for as long as the stream runs. A wait that ends without a frame is no failure: the status says
/// why, and the frame's id is 0.
QUILL_C_API quill_status quill_frame_queue_pop(quill_frame_queue queue, int64_t limit_ns,
                                               quill_frame_queue_status* status, quill_frame* frame,
                                               quill_error* error);
/// Waits until the stream runs or a frame is there: QUILL_QUEUE_FRAME if so.
QUILL_C_API quill_status quill_frame_queue_wait_for_run(quill_frame_queue queue, int64_t limit_ns,
                                                        quill_frame_queue_status* status, quill_error* error);
/// Drops all frames, takes no more, and ends all waits with QUILL_QUEUE_CLOSED.
QUILL_C_API quill_status quill_frame_queue_close(quill_frame_queue queue, quill_error* error);
/// Returns the number of frames that wait.
QUILL_C_API quill_status quill_frame_queue_size(quill_frame_queue queue, size_t* size, quill_error* error);
/// Returns the number of frames that can wait.
QUILL_C_API quill_status quill_frame_queue_capacity(quill_frame_queue queue, size_t* capacity, quill_error* error);
/// Returns what became of the frames that were captured since the queue was opened.
QUILL_C_API quill_status quill_frame_queue_get_counters(quill_frame_queue queue, quill_stream_counter*** counters,
                                                        size_t* count, quill_error* error);
/// Closes the queue and ends its handle. Waits of other threads end with QUILL_QUEUE_CLOSED.
QUILL_C_API quill_status quill_frame_queue_release(quill_frame_queue queue, quill_error* error);

// --- Frames and images; thread-safe, since neither ever changes ---

/// The pixel layout of an image: see ImageFormat.h.
typedef int32_t quill_image_format;
enum {
    QUILL_MONO = 0,
    QUILL_BAYER_RGGB = 1,
    QUILL_BAYER_GRBG = 2,
    QUILL_BAYER_GBRG = 3,
    QUILL_BAYER_BGGR = 4,
    QUILL_RGB = 5,
    QUILL_RGBA = 6,
    QUILL_BGR = 7,
    QUILL_BGRA = 8,
    QUILL_RGB_PLANAR = 9,
    QUILL_RGBA_PLANAR = 10,
    QUILL_BGR_PLANAR = 11,
    QUILL_BGRA_PLANAR = 12
};
/// The size and the bytes of an image: rows follow each other without padding, as do the planes of a planar image.
/// Samples have one byte up to a depth of 8 bits, otherwise two.
typedef struct quill_image_layout {
    size_t size;
    const unsigned char* data; ///< image_size bytes, valid until the handle is released
    uint64_t image_size;
    uint32_t width;
    uint32_t height;
    uint32_t bit_depth; ///< significant bits per sample; see Image::getBitDepth()
    uint32_t bytes_per_channel;
    uint32_t number_of_channels;
    uint32_t number_of_planes;
    uint32_t bytes_per_pixel;
    uint32_t stride;       ///< bytes from one row to the next
    uint32_t plane_stride; ///< bytes from one plane to the next
    quill_image_format format;
    bool little_endian; ///< byte order of two-byte samples
} quill_image_layout;
#define QUILL_IMAGE_LAYOUT_INIT                                                                                        \
    { sizeof(quill_image_layout), NULL, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, false }
/// A pair of formats that convert: the key is source x 256 + target, the name such as "BAYER_RGGB_TO_BGR".
typedef struct quill_conversion {
    size_t size;
    uint16_t key;
    const char* name;
} quill_conversion;

/// Says which frame it is, and when it came.
QUILL_C_API quill_status quill_frame_get_information(quill_frame frame, quill_frame_information* information,
                                                     quill_error* error);
/// Describes the frame's image; its bytes are valid until the frame's handle is released.
QUILL_C_API quill_status quill_frame_get_layout(quill_frame frame, quill_image_layout* layout, quill_error* error);
/// Returns the frame's image, which the caller releases. Nothing is copied.
QUILL_C_API quill_status quill_frame_get_image(quill_frame frame, quill_image* image, quill_error* error);
/// Returns a further handle of the frame, which the caller releases. Nothing else is copied.
QUILL_C_API quill_status quill_frame_copy(quill_frame frame, quill_frame* copy, quill_error* error);
/// Ends the handle; the memory is free once no handle shares it.
QUILL_C_API quill_status quill_frame_release(quill_frame frame, quill_error* error);

/// Creates an image from a copy of bytes, cut to the image's size or padded with zeros.
/// QUILL_STD_INVALID_ARGUMENT: width or height is 0. QUILL_STD_RUNTIME_ERROR: not a format.
QUILL_C_API quill_status quill_create_image(uint32_t width, uint32_t height, const void* data, size_t length,
                                            uint32_t bit_depth, bool little_endian, quill_image_format format,
                                            quill_image* image, quill_error* error);
/// Describes the image; its bytes are valid until the handle is released.
QUILL_C_API quill_status quill_image_get_layout(quill_image image, quill_image_layout* layout, quill_error* error);
/// Returns the channel values of a pixel, unscaled: see Pixel.h. QUILL_STD_INVALID_ARGUMENT: out of bounds.
/// @param channel  four numbers
QUILL_C_API quill_status quill_image_get_pixel(quill_image image, uint32_t row, uint32_t column, double* channel,
                                               quill_error* error);
/// Returns the image as bytes, scaled so that its brightest sample becomes 255; depth 8 as it is.
QUILL_C_API quill_status quill_image_get_8bit_image_data(quill_image image, unsigned char** data, size_t* length,
                                                         quill_error* error);
/// Returns the samples in machine byte order, unscaled; none for an image of depth 8.
/// @param count  number of samples
QUILL_C_API quill_status quill_image_get_16bit_image_data(quill_image image, uint16_t** data, size_t* count,
                                                          quill_error* error);
/// Ends the handle; the memory is free once no handle shares it.
QUILL_C_API quill_status quill_image_release(quill_image image, quill_error* error);

/// Returns a new image in another format. QUILL_STD_RUNTIME_ERROR: no conversion, or samples of more than two bytes.
QUILL_C_API quill_status quill_convert_image(quill_image image, quill_image_format format, quill_image* converted,
                                             quill_error* error);
/// The same by a camera, which may demosaic its own images; not thread-safe.
QUILL_C_API quill_status quill_camera_convert_image(quill_camera camera, quill_image image, quill_image_format format,
                                                    quill_image* converted, quill_error* error);
/// Says whether quill_convert_image() converts between two different formats.
QUILL_C_API quill_status quill_conversion_exists(quill_image_format from, quill_image_format to, bool* exists,
                                                 quill_error* error);
/// Returns all pairs of formats that convert.
QUILL_C_API quill_status quill_get_available_conversions(quill_conversion*** conversions, size_t* count,
                                                         quill_error* error);
/// Returns the name, such as "BAYER_RGGB". QUILL_STD_RUNTIME_ERROR: not a format.
QUILL_C_API quill_status quill_get_format_name(quill_image_format format, char** name, quill_error* error);
/// Finds the format that has the name, matched whole.
QUILL_C_API quill_status quill_find_format(const char* name, bool* found, quill_image_format* format,
                                           quill_error* error);

// --- Settings ---

/// What a camera is set to: the values of its writable properties, and which camera they come from.
typedef struct quill_camera_settings {
    size_t size;
    const char* kind;
    const char* model_name;
    const char* serial_number;
    const quill_entry* values; ///< by name of the property
    size_t value_count;
} quill_camera_settings;
/// A property that does not have the value that the settings give.
typedef struct quill_setting_difference {
    size_t size;
    const char* name;
    const char* wanted;
    const char* present; ///< empty if it cannot be read
    const char* reason;  ///< why it cannot be written or read; empty if it only has another value
} quill_setting_difference;
/// The result of quill_write_settings().
typedef struct quill_settings_report {
    size_t size;
    const char* const* written;
    size_t written_count;
    const quill_setting_difference* const* different; ///< accepted a write, but read otherwise afterwards
    size_t different_count;
    const quill_setting_difference* const* failed; ///< refused, missing on this camera, or not reached
    size_t failed_count;
    quill_status interruption; ///< what ended the writing before its time; QUILL_OK if all was tried
    const char* interruption_sentence;
    bool is_complete; ///< the camera has all values of the settings
} quill_settings_report;
/// Hears the name of each property before it is looked at; returns whether to continue.
typedef bool (*quill_settings_progress_function)(void* context, const char* name);
/// What quill_write_settings() accepts, and the function that gets its progress.
typedef struct quill_settings_options {
    size_t size;
    bool accept_other_models;
    quill_settings_progress_function progress;
    void* context; ///< of the progress function
} quill_settings_options;
#define QUILL_SETTINGS_OPTIONS_INIT                                                                                    \
    { sizeof(quill_settings_options), false, NULL, NULL }

/// Reads the values of all properties that are not read-only. "CameraConnection": the camera is not connected.
QUILL_C_API quill_status quill_read_settings(quill_camera camera, quill_camera_settings** settings, quill_error* error);
/// Writes the values that differ, in an order that works. What a property refuses, and a cancellation, is in the
/// report. "CameraConnection", "SettingsModel".
QUILL_C_API quill_status quill_write_settings(quill_camera camera, const quill_camera_settings* settings,
                                              const quill_settings_options* options, quill_settings_report** report,
                                              quill_error* error);
/// Returns what differs between a camera and the settings.
QUILL_C_API quill_status quill_compare_settings(quill_camera camera, const quill_camera_settings* settings,
                                                quill_setting_difference*** differences, size_t* count,
                                                quill_error* error);
/// Returns the settings as a JSON document. Thread-safe.
QUILL_C_API quill_status quill_to_json(const quill_camera_settings* settings, char** json, quill_error* error);
/// Reads such a document. Thread-safe. "SettingsInvalid".
QUILL_C_API quill_status quill_parse_settings(const char* json, quill_camera_settings** settings, quill_error* error);

// --- Firmware and JTAG; addresses and lengths count bytes. All operations block: see Programmer.h, Xsvf.h ---

/// Says whether the flash from an address on holds the data.
QUILL_C_API quill_status quill_programmer_compare_flash(quill_camera camera, const void* data, size_t length,
                                                        uint32_t address, uint32_t chunk_size,
                                                        quill_progress_function progress, void* context, bool* equal,
                                                        quill_error* error);
/// Erases as many bytes of flash as the data has, and writes the data in chunks.
QUILL_C_API quill_status quill_programmer_write_buffer_to_flash(quill_camera camera, const void* data, size_t length,
                                                                uint32_t address, uint32_t maximum_size,
                                                                uint32_t chunk_size, quill_progress_function progress,
                                                                void* context, quill_error* error);
/// The same for a boot image, whose header is written last.
QUILL_C_API quill_status quill_programmer_write_firmware_to_flash(quill_camera camera, const void* data, size_t length,
                                                                  uint32_t address, uint32_t maximum_size,
                                                                  uint32_t chunk_size, quill_progress_function progress,
                                                                  void* context, quill_error* error);
/// Loads a boot image into RAM and starts it.
QUILL_C_API quill_status quill_programmer_write_firmware_to_ram(quill_camera camera, const void* data, size_t length,
                                                                quill_progress_function progress, void* context,
                                                                quill_error* error);
/// Reads a status register of the flash. "FunctionExecution".
QUILL_C_API quill_status quill_programmer_read_flash_status(quill_camera camera, uint32_t address, uint8_t* status,
                                                            quill_error* error);
/// Writes a status register of the flash.
QUILL_C_API quill_status quill_programmer_write_flash_status(quill_camera camera, uint32_t address, uint8_t status,
                                                             quill_error* error);
/// Returns the data with the bits of every byte reversed. Thread-safe.
QUILL_C_API quill_status quill_programmer_flip_bit_order(const void* data, size_t length, unsigned char** flipped,
                                                         quill_error* error);
/// Plays an XSVF file through the function "Jtag", without a report.
QUILL_C_API quill_status quill_programmer_jtag_xsvf(quill_camera camera, const void* data, size_t length,
                                                    quill_error* error);

/// A part of a boot image that is loaded to one place in the camera's RAM.
typedef struct quill_boot_image_section {
    size_t size;
    uint32_t address; ///< in RAM
    size_t offset;    ///< of its first byte in the image
    size_t length;
} quill_boot_image_section;
/// The structure of a boot image.
typedef struct quill_boot_image {
    size_t size;
    const quill_boot_image_section* const* sections;
    size_t section_count;
    uint32_t entry_address;
    size_t image_size; ///< bytes up to the end of the last section
} quill_boot_image;
/// Parses a boot image to its end. Thread-safe. QUILL_STD_INVALID_ARGUMENT.
QUILL_C_API quill_status quill_read_boot_image(const void* data, size_t length, quill_boot_image** image,
                                               quill_error* error);

/// Why an XSVF file was not played to its end.
typedef int32_t quill_xsvf_error;
enum {
    QUILL_XSVF_NONE = 0,
    QUILL_XSVF_TDO_MISMATCH = 2,
    QUILL_XSVF_RETRIES_EXHAUSTED = 3,
    QUILL_XSVF_ILLEGAL_COMMAND = 4,
    QUILL_XSVF_ILLEGAL_STATE = 5,
    QUILL_XSVF_DATA_OVERFLOW = 6
};
/// The result of a play: see Xsvf.h.
typedef struct quill_xsvf_report {
    size_t size;
    bool succeeded; ///< the file ran to its end without error and all of it reached the camera
    bool opened;
    bool data_ended;
    bool camera_gone;
    quill_xsvf_error error;
    uint32_t command_count;
    uint32_t failed_command;
    size_t command_offset;
    size_t failed_offset;
    uint64_t failed_transfers;
    quill_bytes expected_tdo; ///< bits of the last comparison that failed
    quill_bytes captured_tdo;
    quill_bytes tdo_mask;
} quill_xsvf_report;
/// Plays an XSVF file into a camera's JTAG port. A file that fails is no failure of the call: the report says so.
/// "FunctionUnsupported", "FunctionExecution".
QUILL_C_API quill_status quill_play_xsvf(quill_camera camera, const void* data, size_t length,
                                         quill_progress_function progress, void* context, quill_xsvf_report** report,
                                         quill_error* error);
/// Says whether the JTAG port of a camera can be reached.
QUILL_C_API quill_status quill_can_play_xsvf(quill_camera camera, bool* can, quill_error* error);
/// Reads an XSVF file to its end without a device. Thread-safe.
QUILL_C_API quill_status quill_check_xsvf(const void* data, size_t length, quill_xsvf_report** report,
                                          quill_error* error);

// --- GenICam cameras; thread-safe. What is unknown is NULL, or -1 ---

/// Where cameras are looked for, and how they are driven: see GenICam.h.
typedef struct quill_genicam_settings {
    size_t size;
    const char* const* cards;
    size_t card_count;
    const char* const* addresses;
    size_t address_count;
    bool usb;
    bool packet_socket;
    uint32_t heartbeat_ms;
} quill_genicam_settings;
#define QUILL_GENICAM_SETTINGS_INIT                                                                                    \
    { sizeof(quill_genicam_settings), NULL, 0, NULL, 0, true, false, 0 }
/// Where a device is in an IPv4 network.
typedef struct quill_network_place {
    size_t size;
    const char* address;
    const char* mask;
    const char* gateway; ///< "0.0.0.0" for none
} quill_network_place;
#define QUILL_NETWORK_PLACE_INIT                                                                                       \
    { sizeof(quill_network_place), "", "", "0.0.0.0" }
typedef int32_t quill_address_origin;
enum { QUILL_ORIGIN_PERSISTENT = 0, QUILL_ORIGIN_DHCP = 1, QUILL_ORIGIN_LINK_LOCAL = 2, QUILL_ORIGIN_TEMPORARY = 3 };
typedef int32_t quill_controller;
enum { QUILL_CONTROLLER_NOBODY = 0, QUILL_CONTROLLER_THIS_PROGRAM = 1, QUILL_CONTROLLER_ANOTHER_PROGRAM = 2 };
typedef int32_t quill_link_verdict;
enum { QUILL_LINK_GOOD = 0, QUILL_LINK_HINT = 1, QUILL_LINK_FAULT = 2 };
/// The network side of one camera.
typedef struct quill_camera_network {
    size_t size;
    const char* hardware_address;
    const quill_network_place* present;
    const quill_network_place* persistent;
    const char* card; ///< of this computer
    const char* card_address;
    const char* card_mask;
    const char* obstacle;           ///< why the camera's registers cannot be read; empty if they were read
    const char* controller_address; ///< of the computer that controls it
    int64_t card_speed_mbps;
    int64_t link_speed_mbps;
    int64_t packet_size; ///< bytes, with headers
    int64_t packet_delay_ns;
    int64_t heartbeat_ms;
    quill_controller controller;
    quill_address_origin origin;
    bool is_persistent_supported;
    bool is_persistent_enabled;
    bool is_dhcp_supported;
    bool is_dhcp_enabled;
} quill_camera_network;
/// One thing about a link that was looked at.
typedef struct quill_link_finding {
    size_t size;
    const char* subject;
    const char* sentence;
    const char* remedy; ///< the command line that mends it; empty if there is none
    quill_link_verdict verdict;
} quill_link_finding;

/// Returns the origin in words, such as "DHCP", or "unknown"; never freed. Thread-safe.
QUILL_C_API const char* quill_get_origin_name(quill_address_origin origin);
/// Returns the verdict in words, such as "good", or "unknown"; never freed. Thread-safe.
QUILL_C_API const char* quill_get_verdict_name(quill_link_verdict verdict);

/// Replaces the settings; the next enumeration uses them. "ArgumentUnhandled".
QUILL_C_API quill_status quill_genicam_configure(const quill_genicam_settings* settings, quill_error* error);
/// "SettingsInvalid": the file of the settings has a line that is none.
QUILL_C_API quill_status quill_genicam_get_settings(quill_genicam_settings** settings, quill_error* error);

// Functions of the network take cameras as the list names them: see GenICamNetwork.h. "CameraNotFound",
// "NetworkSettings", "CameraEnumeration"; "ArgumentUnhandled" for a number or an address that none can be.

/// Reads the network side of a camera, also of one that cannot be reached: then the obstacle says why.
QUILL_C_API quill_status quill_describe_network(const char* serial_number, quill_camera_network** network,
                                                quill_error* error);
/// Stores the address that the camera takes at its next start.
QUILL_C_API quill_status quill_set_persistent_address(const char* serial_number, const quill_network_place* place,
                                                      quill_error* error);
/// Stores from where the camera gets its address at its next start.
QUILL_C_API quill_status quill_set_address_mode(const char* serial_number, bool persistent, bool dhcp,
                                                quill_error* error);
/// Sets the size of the packets of images, with their headers: 220 to 16384 bytes; returns the size that the camera
/// took.
QUILL_C_API quill_status quill_set_packet_size(const char* serial_number, uint32_t bytes, uint32_t* taken,
                                               quill_error* error);
/// Sets the pause between two packets of an image, 0 to 100,000,000 ns; returns the pause that the camera took.
QUILL_C_API quill_status quill_set_packet_delay_ns(const char* serial_number, uint64_t nanoseconds, uint64_t* taken,
                                                   quill_error* error);
/// Sets the time without a sign of life after which the camera becomes free, 500 to 3,600,000 ms; returns the time that
/// the camera took.
QUILL_C_API quill_status quill_set_heartbeat_ms(const char* serial_number, uint32_t milliseconds, uint32_t* taken,
                                                quill_error* error);
/// Gives a camera an address until it restarts, and waits until it answers there. "NetworkTimeout".
/// @param camera  its serial number, or its hardware address with colons
QUILL_C_API quill_status quill_force_address(const char* camera, const quill_network_place* place, quill_error* error);
/// Examines the way from a camera to this program.
QUILL_C_API quill_status quill_examine_link(const char* serial_number, quill_link_finding*** findings, size_t* count,
                                            quill_error* error);
/// Returns the pause between packets with which cameras share one link without loss.
QUILL_C_API quill_status quill_compute_packet_delay_ns(uint32_t cameras, uint32_t link_speed_mbps, uint32_t packet_size,
                                                       uint32_t camera_speed_mbps, uint64_t* nanoseconds,
                                                       quill_error* error);

/// The network settings and counters of a GigE camera of the maker's SDK. What cannot be read is NULL.
typedef struct quill_gige_description {
    size_t size;
    const char* camera_ip_address;
    const char* camera_mask_address;
    const char* camera_gateway_address;
    const char* camera_mac_address;
    const char* host_ip_address;
    const char* host_mask_address;
    const char* host_gateway_address;
    const char* host_mac_address;
    const char* statistics; ///< the report of the stream's counters
    const char* failure;    ///< why a member is missing; NULL if none is
} quill_gige_description;
/// Reads them from a connected camera; NULL for any other camera.
QUILL_C_API quill_status quill_read_gige(quill_camera camera, quill_gige_description** description, quill_error* error);

// NOLINTEND(modernize-use-using,modernize-redundant-void-arg)

#ifdef __cplusplus
}
#endif

#endif
