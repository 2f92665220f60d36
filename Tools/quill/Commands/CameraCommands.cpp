// SPDX-License-Identifier: Apache-2.0

#include <exception>
#include <map>
#include <optional>
#include <string>

#include <CLI/CLI.hpp>
#include <Quill.h>
#include <fmt/format.h>

#include "Camera/CameraJson.h"
#include "Camera/CameraKind.h"
#include "Camera/ComputedColor.h"
#include "Commands/Command.h"

namespace QuillTool {

namespace {

using CameraInterface::Camera;
using OrvexAdapter::CGigE;
using OrvexAdapter::GigEDescription;

class ListCommand : public Command {
public:
    void describe(CLI::App& parser) override { addJsonFlag(parser, m_Json); }

    ExitCode run(Context& context) override {
        Table table{{"SERIAL", "MODEL", "KIND", "STATE"}, {}};
        Json cameras = Json::array();
        for (const auto& [serialNumber, modelName] : context.session.listCameras()) {
            const Json camera = listedCameraJson(serialNumber, modelName);
            table.rows.push_back({serialNumber, modelName, camera["kind"], camera["state"]});
            cameras.push_back(camera);
        }
        if (m_Json) {
            context.output.printJson(Json{{"cameras", cameras}, {"failures", enumerationFailuresJson()}});
        } else {
            context.output.printTable(table);
            hint(context.output);
        }
        if (const std::string incomplete = Session::incompleteness(); !incomplete.empty()) {
            throw ToolError(ExitCode::Failed, "the list is not complete: " + incomplete);
        }
        return ExitCode::Done;
    }

private:
    /// Tells people how GigE Vision cameras are looked for, where they are not.
    static void hint(Output& output) {
        const CameraInterface::GenICam::Settings settings = CameraInterface::GenICam::getSettings();
        if (output.isOnTerminal() && settings.cards.empty() && settings.addresses.empty()) {
            output.notify(
                "no network is searched for GigE Vision cameras; 'quill list --genicam eth1' searches that of "
                "network card eth1");
        }
    }

    bool m_Json = false;
};

/// Names an address of a GigE camera or of the host's adapter for the table and for JSON.
struct NetworkAddress {
    const char* title;
    const char* owner;
    const char* key;
    std::string (CGigE::*text)() const;
};

constexpr NetworkAddress kNetworkAddresses[] = {
    {"Camera MAC Address", "camera", "macAddress", &CGigE::GetCamMacAddress},
    {"Camera IP Address", "camera", "ipAddress", &CGigE::GetCamIPAddress},
    {"Camera Subnet Mask", "camera", "subnetMask", &CGigE::GetCamMaskAddress},
    {"Camera Gateway", "camera", "gateway", &CGigE::GetCamGatewayAddress},
    {"Host MAC Address", "host", "macAddress", &CGigE::GetHostMacAddress},
    {"Host IP Address", "host", "ipAddress", &CGigE::GetHostIPAddress},
    {"Host Subnet Mask", "host", "subnetMask", &CGigE::GetHostMaskAddress},
    {"Host Gateway", "host", "gateway", &CGigE::GetHostGatewayAddress},
};

class InfoCommand : public Command {
public:
    void describe(CLI::App& parser) override {
        addCameraArgument(parser, m_Camera);
        addJsonFlag(parser, m_Json);
    }

    ExitCode run(Context& context) override {
        const SelectedCamera camera = context.session.connect(m_Camera);
        camera.attempt("its description cannot be read", [&] {
            m_Network = OrvexAdapter::readGigE(*camera);
            const std::string model = camera->getModelName();
            const char* state = stateName(camera->getState());
            const std::size_t properties = camera->getSupportedProperties().size();
            const std::size_t functions = camera->getSupportedFunctions().size();
            const std::map<std::string, std::string> information = camera->getCameraInfo();
            const CameraKind kind = kindOf(*camera);
            if (kind == CameraKind::Sdk) {
                m_Pixels = findDeliveredLayout(*camera);
            }
            if (m_Json) {
                m_Document = {{"serialNumber", camera.serialNumber()},
                              {"modelName", model},
                              {"state", state},
                              {"properties", properties},
                              {"functions", functions},
                              {"information", information}};
                if (m_Pixels) {
                    m_Document["pixels"] = {{"format", Imaging::getFormatName(m_Pixels->format)},
                                            {"bitDepth", m_Pixels->bitDepth}};
                }
                addNetworkToDocument();
                return;
            }
            m_Table.rows = {{"Serial Number", camera.serialNumber()},
                            {"Model Name", model},
                            {"State", state},
                            {"Properties", std::to_string(properties)},
                            {"Functions", std::to_string(functions)}};
            if (m_Pixels) {
                m_Table.rows.push_back({"Image", fmt::format("{}, {} bits", Imaging::getFormatName(m_Pixels->format),
                                                             m_Pixels->bitDepth)});
            } else if (kind == CameraKind::Simulated) {
                m_Table.rows.push_back({"Image", kPlaceholder});
            }
            for (const auto& [name, value] : information) {
                if (name != "Serial Number" && name != "Model Name") {
                    m_Table.rows.push_back({name, value});
                }
            }
            addNetworkToTable();
        });
        if (m_Json) {
            context.output.printJson(m_Document);
        } else {
            context.output.printTable(m_Table);
            context.output.print(m_Network ? m_Network->statistics.value_or("") : "");
        }
        if (m_Network && m_Network->failure) {
            camera.attempt("its network cannot be described in full",
                           [this] { std::rethrow_exception(m_Network->failure); });
        }
        return ExitCode::Done;
    }

private:
    void addNetworkToDocument() {
        if (!m_Network) {
            return;
        }
        Json& network = m_Document["network"] = Json::object();
        if (m_Network->settings) {
            for (const NetworkAddress& address : kNetworkAddresses) {
                network[address.owner][address.key] = (*m_Network->settings.*address.text)();
            }
        }
        if (m_Network->statistics) {
            network["statistics"] = *m_Network->statistics;
        }
    }

    void addNetworkToTable() {
        if (!m_Network || !m_Network->settings) {
            return;
        }
        for (const NetworkAddress& address : kNetworkAddresses) {
            m_Table.rows.push_back({address.title, (*m_Network->settings.*address.text)()});
        }
    }

    std::string m_Camera;
    bool m_Json = false;
    std::optional<GigEDescription> m_Network; // of a GigE camera
    std::optional<PixelLayout> m_Pixels;      // of an SDK camera
    Json m_Document;
    Table m_Table{{"WHAT", "VALUE"}, {}};
};

} // namespace

std::vector<CommandDescription> cameraCommands() {
    return {
        {"list", "List the cameras: serial number, model, kind and state",
         "GigE Vision cameras are looked for on the network cards, and at the addresses,\n"
         "that are named. Ends with 1 if a kind of camera cannot be enumerated.\n\n"
         "Examples:\n"
         "  quill list\n"
         "  quill list --genicam eth1\n"
         "  quill list --json | jq -r '.cameras[].serialNumber'\n",
         makeCommand<ListCommand>},
        {"info", "Describe a camera",
         "For a GigE camera, also prints the addresses at both ends and the stream's\n"
         "counters. Ends with 1 if the camera does not report one of them.\n\n"
         "Examples:\n"
         "  quill info 90001\n"
         "  quill info 90001 --json | jq -r '.information[\"Firmware Version\"]'\n",
         makeCommand<InfoCommand>},
    };
}

} // namespace QuillTool
