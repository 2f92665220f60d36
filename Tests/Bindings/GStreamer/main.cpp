// SPDX-License-Identifier: Apache-2.0

#include <cstdio>
#include <cstdlib>
#include <string>

#include <gst/gst.h>
#include <gtest/gtest.h>

#include <Quill.h>

namespace {

const std::string kSystemPlugins = QUILL_TEST_GSTREAMER_PLUGINS;

/// Loads only what the tests need: under a sanitizer, other plug-ins are slow, and report what is not ours.
bool loadPlugins() {
    for (const std::string& file : {kSystemPlugins + "/libgstcoreelements.so", kSystemPlugins + "/libgstapp.so",
                                    std::string(QUILL_TEST_PLUGIN)}) {
        GError* error = nullptr;
        GstPlugin* const plugin = gst_plugin_load_file(file.c_str(), &error);
        if (plugin == nullptr) {
            std::fprintf(stderr, "%s: %s\n", file.c_str(), error->message);
            return false;
        }
        gst_object_unref(plugin);
    }
    return true;
}

} // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    if (GTEST_FLAG_GET(list_tests)) { // when the tests are discovered, without what their environment suppresses
        return RUN_ALL_TESTS();
    }
    for (const char* searched :
         {"GST_PLUGIN_SYSTEM_PATH_1_0", "GST_PLUGIN_SYSTEM_PATH", "GST_PLUGIN_PATH_1_0", "GST_PLUGIN_PATH"}) {
        setenv(searched, "", 1);
    }
    setenv("GST_REGISTRY_FORK", "no", 1);
    setenv("GST_REGISTRY", "/dev/null/registry", 1); // neither read nor written
    CameraInterface::GenICam::Settings none;         // whatever this machine's settings say
    none.usb = false;
    CameraInterface::GenICam::configure(none);
    gst_init(&argc, &argv);
    return loadPlugins() ? RUN_ALL_TESTS() : 1;
}
