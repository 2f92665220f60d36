// SPDX-License-Identifier: Apache-2.0

#include "Cameras/OrvexCamera/GigE.h"

#include <iterator>
#include <stdexcept>
#include <vector>

#include "Base/TextConversion.h"
#include "Base/TextPieces.h"
#include "Exceptions/KestrelException.h"
#include "OrvexApi/OrvexApi.h"

namespace OrvexAdapter {

namespace {

using KestrelExceptions::KestrelException;

enum Address { IpAddress, SubnetMask, Gateway };

constexpr std::size_t kAddressPieces = 4;
constexpr std::size_t kMacBytes = 6;
constexpr std::uint32_t kGigeCounters = 1; // selects the counters to read
constexpr int kNoCounter = -1;

/// One line of the report: its label and the counter that follows it.
struct ReportLine {
    const char* label;
    int counter;
};

// Counters 3 to 6 have a second meaning for USB transports; the report gives both.
constexpr ReportLine kReportLines[] = {
    {"\nActual frame drop: ", 2},
    {"Frame completed: ", 0},
    {"Frame dropped: ", 1},
    {"GEV STATS", kNoCounter},
    {"Block id missing: ", 17},
    {"Blocks dropped: ", 16},
    {"Data over run: ", 5},
    {"Expected resend: ", 3},
    {"Expected single resend: ", 9},
    {"Full line missing: ", 7},
    {"Ignored packet: ", 13},
    {"Lost packet: ", 4},
    {"Other errors: ", 8},
    {"Packet Out of order: ", 15},
    {"Partial line missing: ", 6},
    {"Redundant packet: ", 14},
    {"Resend Group Requested: ", 11},
    {"Resend Packet requested: ", 12},
    {"GEV RESULTS STATS", kNoCounter},
    {"Image Error: ", 18},
    {"Missing packets: ", 19},
    {"Resend Failure: ", 23},
    {"State Error: ", 20},
    {"Too many consecutive resends: ", 22},
    {"Too Many resends: ", 21},
    {"Gige USB stats", kNoCounter},
    {"Unexpedted resend: ", 10},
    {"Babble errors: ", 5},
    {"Other Errors: ", 6},
    {"Short Errors: ", 3},
    {"Xact Errors: ", 4},
};
static_assert(std::size(kReportLines) == 31);

std::string hexadecimal(unsigned byte) {
    constexpr const char* kDigits = "0123456789ABCDEF";
    std::string text = byte < 0x10 ? "" : hexadecimal(byte / 0x10);
    text += kDigits[byte % 0x10];
    return text;
}

std::string macText(const unsigned char* mac) {
    std::string text = mac[0] < 0x10 ? "0" : "";
    for (std::size_t index = 0; index < kMacBytes; ++index) {
        text += (index == 0 ? "" : ":") + hexadecimal(mac[index]);
    }
    return text;
}

} // namespace

void CGigE::raise(int line, const std::string& description) {
    throw KestrelException::create("GigEError", "Shared/include/Cameras/OrvexCamera/GigE.h", line, description);
}

bool CGigE::readEthernetInfo(int index) {
    return orvexApi().sdkGetEthernetInfo(index, m_Ethernet.cameraMac, m_Ethernet.cameraAddresses, m_Ethernet.hostMac,
                                         m_Ethernet.hostAddresses) != 0;
}

bool CGigE::writeEthernetInfo(int index) {
    if (orvexApi().sdkSetEthernetInfo(index, m_Ethernet.cameraAddresses) == 0) {
        return false;
    }
    orvexApi().sdkNumCameras(); // makes the SDK look for the camera at its new address
    return true;
}

std::string CGigE::GetCamIPAddress() const {
    return IpString(m_Ethernet.cameraAddresses[IpAddress]);
}

std::string CGigE::GetCamMaskAddress() const {
    return IpString(m_Ethernet.cameraAddresses[SubnetMask]);
}

std::string CGigE::GetCamGatewayAddress() const {
    return IpString(m_Ethernet.cameraAddresses[Gateway]);
}

std::string CGigE::GetHostIPAddress() const {
    return IpString(m_Ethernet.hostAddresses[IpAddress]);
}

std::string CGigE::GetHostMaskAddress() const {
    return IpString(m_Ethernet.hostAddresses[SubnetMask]);
}

std::string CGigE::GetHostGatewayAddress() const {
    return IpString(m_Ethernet.hostAddresses[Gateway]);
}

std::string CGigE::GetCamMacAddress() const {
    return macText(m_Ethernet.cameraMac);
}

std::string CGigE::GetHostMacAddress() const {
    return macText(m_Ethernet.hostMac);
}

void CGigE::SetCamIpAddress(const std::string& text) {
    m_Ethernet.cameraAddresses[IpAddress] = static_cast<std::uint32_t>(GetIpFromString(text));
}

void CGigE::SetCamMaskAddress(const std::string& text) {
    m_Ethernet.cameraAddresses[SubnetMask] = static_cast<std::uint32_t>(GetIpFromString(text));
}

void CGigE::SetCamGatewayAddress(const std::string& text) {
    m_Ethernet.cameraAddresses[Gateway] = static_cast<std::uint32_t>(GetIpFromString(text));
}

void CGigE::SetHostIpAddress(const std::string& text) {
    m_Ethernet.hostAddresses[IpAddress] = static_cast<std::uint32_t>(GetIpFromString(text));
}

void CGigE::SetHostMaskAddress(const std::string& text) {
    m_Ethernet.hostAddresses[SubnetMask] = static_cast<std::uint32_t>(GetIpFromString(text));
}

void CGigE::SetHostGatewayAddress(const std::string& text) {
    m_Ethernet.hostAddresses[Gateway] = static_cast<std::uint32_t>(GetIpFromString(text));
}

void CGigE::SetCamMacAddress(const std::string& text) {
    SetMacFromString(m_Ethernet.cameraMac, text);
}

void CGigE::SetHostMacAddress(const std::string& text) {
    SetMacFromString(m_Ethernet.hostMac, text);
}

bool CGigE::readStatistics(void* handle) {
    // The boundary's record. It starts as the last statistics, because a failed read may leave it unchanged.
    ::_ORVEX_STREAM_STATS statistics{};
    std::copy(std::begin(m_StreamStats.counters), std::end(m_StreamStats.counters), statistics.counters);
    const bool read = orvexApi().sdkGetStreamStats(handle, kGigeCounters, &statistics, sizeof(statistics)) != 0;
    std::copy(std::begin(statistics.counters), std::end(statistics.counters), m_StreamStats.counters);
    return read;
}

std::uint32_t CGigE::getLastError(void* handle) {
    return orvexApi().sdkGetLastErrorForCamera(handle);
}

std::string CGigE::GetGigeCamStatsString() {
    std::string report;
    for (const ReportLine& line : kReportLines) {
        report += line.label;
        if (line.counter != kNoCounter) {
            report += Base::toText(static_cast<unsigned long>(m_StreamStats.counters[line.counter]));
        }
        report += '\n';
    }
    return report;
}

std::string CGigE::GetGigeCamStatsToString(void* handle) {
    GetGigeCamStats(handle);
    return GetGigeCamStatsString();
}

unsigned long CGigE::GetIpFromString(const std::string& text) {
    const std::vector<std::string> pieces = Base::split(text, '.');
    if (pieces.size() > kAddressPieces) {
        throw std::invalid_argument("An address has at most four numbers.");
    }
    std::uint32_t address = 0;
    for (const std::string& piece : pieces) {
        int number = 0;
        Base::extractFirstWord(piece, number);
        address = address << 8 | (static_cast<std::uint32_t>(number) & 0xFF);
    }
    return address;
}

std::string CGigE::IpString(const unsigned long& address) {
    return Base::dottedBytes(static_cast<std::uint32_t>(address), kAddressPieces);
}

void CGigE::SetMacFromString(unsigned char* mac, const std::string& text) {
    const std::vector<std::string> pieces = Base::split(text, ':');
    if (pieces.size() > kMacBytes) {
        throw std::invalid_argument("A MAC address has at most six numbers.");
    }
    std::vector<unsigned char> bytes;
    bytes.reserve(kMacBytes);
    for (const std::string& piece : pieces) {
        bytes.push_back(static_cast<unsigned char>(Base::parseUnsigned(piece, 16)));
    }
    std::copy(bytes.begin(), bytes.end(), mac);
}

} // namespace OrvexAdapter
