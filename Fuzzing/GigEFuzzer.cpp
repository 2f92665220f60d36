// SPDX-License-Identifier: Apache-2.0

// Texts of network addresses.

#include <cstdlib>
#include <iomanip>
#include <locale>
#include <sstream>
#include <stdexcept>

#include "Cameras/OrvexCamera/GigE.h"
#include "Support/Input.h"

namespace {

using namespace Fuzzing;
using OrvexAdapter::CGigE;

/// A setting with its setter and getter.
struct Setting {
    void (CGigE::*set)(const std::string&);
    std::string (CGigE::*get)() const;
};

constexpr Setting kAddresses[] = {{&CGigE::SetCamIpAddress, &CGigE::GetCamIPAddress},
                                  {&CGigE::SetCamMaskAddress, &CGigE::GetCamMaskAddress},
                                  {&CGigE::SetCamGatewayAddress, &CGigE::GetCamGatewayAddress},
                                  {&CGigE::SetHostIpAddress, &CGigE::GetHostIPAddress},
                                  {&CGigE::SetHostMaskAddress, &CGigE::GetHostMaskAddress},
                                  {&CGigE::SetHostGatewayAddress, &CGigE::GetHostGatewayAddress}};
constexpr Setting kMacs[] = {{&CGigE::SetCamMacAddress, &CGigE::GetCamMacAddress},
                             {&CGigE::SetHostMacAddress, &CGigE::GetHostMacAddress}};

std::vector<std::string> piecesOf(const std::string& text, char separator) {
    std::vector<std::string> pieces;
    std::istringstream stream(text + separator);
    for (std::string piece; std::getline(stream, piece, separator);) {
        pieces.push_back(piece);
    }
    return pieces;
}

/// A decimal number as a stream reads it; what is none is 0.
unsigned int decimal(const std::string& piece) {
    std::istringstream stream(piece);
    stream.imbue(std::locale::classic());
    int number = 0;
    stream >> number;
    return static_cast<unsigned int>(number);
}

/// A hexadecimal number of 32 bits, with its sign.
unsigned int hexadecimal(const std::string& piece) {
    const long long number = std::stoll(piece, nullptr, 16);
    if (std::abs(number) > 0xFFFFFFFFLL) {
        throw std::out_of_range("");
    }
    return static_cast<unsigned int>(number);
}

/// What an address becomes by a text: fewer numbers than it has are its last ones, after zeros.
std::string addressOf(const std::string& /*former*/, const std::string& text) {
    std::vector<std::string> pieces = piecesOf(text, '.');
    if (pieces.size() > 4) {
        throw std::invalid_argument("");
    }
    pieces.insert(pieces.begin(), 4 - pieces.size(), "0");
    std::string address;
    for (const std::string& piece : pieces) {
        address += (address.empty() ? "" : ".") + std::to_string(decimal(piece) & 0xFFU);
    }
    return address;
}

/// What a MAC address becomes by a text: fewer numbers than it has are its first ones, and the others stay.
std::string macOf(const std::string& former, const std::string& text) {
    const std::vector<std::string> pieces = piecesOf(text, ':');
    if (pieces.size() > 6) {
        throw std::invalid_argument("");
    }
    std::ostringstream mac;
    mac << std::hex << std::uppercase << std::setfill('0');
    std::size_t index = 0;
    for (const std::string& before : piecesOf(former, ':')) {
        mac << (index == 0 ? "" : ":") << std::setw(index == 0 ? 2 : 1)
            << (hexadecimal(index < pieces.size() ? pieces[index] : before) & 0xFFU);
        ++index;
    }
    return mac.str();
}

/// What an address becomes, or which kind of failure says that it stays as it is.
template <typename Change>
std::string outcomeOf(const Change& change) {
    try {
        return change();
    } catch (const std::invalid_argument&) {
        return "no address";
    } catch (const std::out_of_range&) {
        return "no number of 32 bits";
    }
}

void check(const Setting& setting, const std::string& former, const std::string& text,
           std::string (*expected)(const std::string& former, const std::string& text)) {
    CGigE gige;
    (gige.*setting.set)(former);
    require((gige.*setting.get)() == former, "an address comes back");
    const std::string outcome = outcomeOf([&] {
        (gige.*setting.set)(text);
        return (gige.*setting.get)();
    });
    require(outcome == outcomeOf([&] { return expected(former, text); }), "an address becomes what the text says");
    require(outcome == (gige.*setting.get)() || (gige.*setting.get)() == former, "what is refused changes nothing");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = Input(data, size).text();
    for (const Setting& address : kAddresses) {
        check(address, "1.2.3.4", text, addressOf);
    }
    for (const Setting& mac : kMacs) {
        check(mac, "01:2:3:4:5:6", text, macOf);
    }
    return 0;
}
