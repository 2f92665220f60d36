// SPDX-License-Identifier: Apache-2.0

#include "Flash/FlashJob.h"

#include <algorithm>
#include <csignal>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <Quill.h>
#include <gtest/gtest.h>

namespace {

using namespace QuillTool;
using Bytes = std::vector<unsigned char>;

constexpr unsigned kAddress = 0x100;

enum class Mishap { None, Failure, Interrupt };

/// A mishap at a certain call of a function.
struct Incident {
    std::string function;
    int call = 0;
    Mishap mishap = Mishap::None;
};

/// A camera with flash and one incident.
class FragileCamera : public CameraInterface::Camera {
public:
    explicit FragileCamera(const Incident& incident) : m_Incident(incident) { buildFunctions(); }

    std::unique_ptr<Imaging::Image> getImage() override { return nullptr; }
    std::map<std::string, std::string> getCameraInfo() override { return {}; }
    std::string getSerialNumber() override { return "1"; }
    std::string getModelName() override { return "Fragile"; }
    bool isCameraAlive() override { return true; }
    void connect() override {}
    void disconnect() override {}
    void suspend() override {}

    std::map<unsigned long, char> m_Flash;
    std::optional<unsigned long> m_DeadByte; ///< never changes

private:
    class FlashFunction : public CameraInterface::Function {
    public:
        FlashFunction(const std::string& name, FragileCamera& camera) : Function(name), m_Camera(camera) {}

        std::vector<std::string> perform(std::vector<std::string>& parameters) override {
            m_Camera.meetIncident(getName());
            const unsigned long address = std::stoul(parameters[0]);
            if (getName() == "Write Flash") {
                m_Camera.store(address, parameters[1]);
                return {};
            }
            const unsigned long length = std::stoul(parameters[1]);
            if (getName() == "Erase Flash") {
                m_Camera.store(address, std::string(length, '\xFF'));
                return {};
            }
            std::string bytes;
            for (unsigned long offset = 0; offset < length; ++offset) {
                bytes += m_Camera.m_Flash[address + offset];
            }
            return {bytes};
        }
        bool isAvailable() override { return true; }
        std::vector<CameraInterface::ParameterDescriptor> getParameters() override { return {}; }
        std::vector<CameraInterface::ParameterDescriptor> getReturnFormat() override { return {}; }

    private:
        FragileCamera& m_Camera;
    };

    void buildProperties() override {}
    void buildFunctions() override {
        for (const char* name : {"Erase Flash", "Write Flash", "Read Flash"}) {
            m_Functions[name] = std::make_unique<FlashFunction>(name, *this);
        }
    }

    void meetIncident(const std::string& function) {
        if (function != m_Incident.function || --m_Incident.call != 0) {
            return;
        }
        if (m_Incident.mishap == Mishap::Failure) {
            throw KestrelExceptions::KestrelException_Function("FunctionExecution", "", 0, "It broke.", function);
        }
        std::raise(SIGINT);
    }

    void store(unsigned long address, const std::string& bytes) {
        for (const char byte : bytes) {
            if (address != m_DeadByte) {
                m_Flash[address] = byte;
            }
            ++address;
        }
    }

    Incident m_Incident;
};

/// Writes to a camera as the commands do.
class FlashJobTest : public ::testing::Test {
protected:
    void write(FragileCamera& camera, const Bytes& data, bool firmware) {
        Interrupt interrupt;
        interrupt.clear();
        Context context{m_Session, m_Output, interrupt};
        FlashJob job(context, SelectedCamera(camera, "1"), {kAddress, data.size()}, m_Options,
                     {FlashStage::Erase, FlashStage::Write, FlashStage::Verify});
        firmware ? job.writeFirmware(data) : job.write(data);
        job.compare(data);
        job.finish();
    }

    Output m_Output;
    Session m_Session{m_Output};
    FlashOptions m_Options = [] {
        FlashOptions options;
        options.chunkSize = 8;
        options.progress.quiet = true;
        return options;
    }();
    const Bytes m_Data{'C', 'Y', 0, 0xB0, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19};
};

TEST_F(FlashJobTest, NamesStageAddressAndStateOfWhatEndsIt) {
    constexpr bool kPlain = false;
    constexpr bool kFirmware = true;
    const std::string partly = "the flash there is partly written";
    const std::string headless = partly + "; the image's header was not written, so the camera does not start it";
    const std::string unknown = "the flash there is written, except possibly the image's header";
    const std::string changed = "the flash there is changed as requested, but only partly verified";
    const struct {
        bool firmware;
        Incident incident;
        std::string place;
        std::string state;
    } cases[] = {
        {kPlain, {"Erase Flash", 1, Mishap::Failure}, "erased at 0x100", "the flash there may be partly erased"},
        {kPlain, {"Write Flash", 1, Mishap::Failure}, "written at 0x100", partly},
        {kPlain, {"Write Flash", 3, Mishap::Failure}, "written at 0x110", partly},
        {kPlain, {"Read Flash", 2, Mishap::Failure}, "verified at 0x108", changed},
        {kFirmware, {"Write Flash", 1, Mishap::Failure}, "written at 0x104", headless},
        {kFirmware, {"Write Flash", 3, Mishap::Failure}, "written at 0x100", unknown},
        {kPlain, {"Erase Flash", 1, Mishap::Interrupt}, "writing at 0x108", partly},
        {kPlain, {"Write Flash", 3, Mishap::Interrupt}, "verifying at 0x100", changed},
        {kFirmware, {"Write Flash", 2, Mishap::Interrupt}, "writing at 0x100", headless},
    };
    for (const auto& [firmware, incident, place, state] : cases) {
        SCOPED_TRACE(place + ": " + state);
        FragileCamera camera(incident);
        const bool interrupted = incident.mishap == Mishap::Interrupt;
        try {
            write(camera, m_Data, firmware);
            ADD_FAILURE() << "The write succeeded.";
        } catch (const ToolError& failure) {
            EXPECT_EQ(failure.code(), interrupted ? ExitCode::Interrupted : ExitCode::CameraGone);
            EXPECT_EQ(failure.what(),
                      interrupted
                          ? "camera 1: interrupted while " + place + " of 0x100..0x114: " + state
                          : "camera 1: 0x100..0x114 cannot be " + place + ": It broke. The camera is gone; " + state);
        }
        EXPECT_FALSE(firmware && camera.m_Flash[kAddress] == 'C');
    }
}

TEST_F(FlashJobTest, FindsTheFirstByteThatDiffers) {
    for (const bool firmware : {false, true}) {
        FragileCamera camera({});
        camera.m_DeadByte = kAddress + 13;
        try {
            write(camera, m_Data, firmware);
            ADD_FAILURE() << "The write succeeded.";
        } catch (const ToolError& failure) {
            EXPECT_EQ(failure.code(), ExitCode::Difference);
            EXPECT_STREQ(failure.what(), "camera 1: 0x100..0x114 differs at 0x10D: 0x00 instead of 0x0D");
        }
        camera.m_DeadByte.reset();
        write(camera, m_Data, firmware);
        EXPECT_TRUE(std::all_of(m_Data.begin(), m_Data.end(), [&, address = kAddress](unsigned char byte) mutable {
            return static_cast<unsigned char>(camera.m_Flash[address++]) == byte;
        }));
    }
}

} // namespace
