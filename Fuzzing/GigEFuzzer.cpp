// SPDX-License-Identifier: Apache-2.0

// Texts of network addresses.

#include <charconv>
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

/// The notation of an address.
struct Notation {
    std::size_t numbers;
    char separator;
    int base;
    const char* example;
};

constexpr Notation kAddressNotation{4, '.', 10, "1.2.3.4"};
constexpr Notation kMacNotation{6, ':', 16, "01:2:3:4:5:6"};

/// The numbers of an address, if their count is correct and all are below 256; otherwise nothing.
std::vector<unsigned int> numbersOf(const std::string& text, const Notation& notation) {
    std::vector<unsigned int> numbers;
    const char* next = text.data();
    const char* const end = next + text.size();
    while (numbers.size() < notation.numbers && (numbers.empty() || (next != end && *next++ == notation.separator))) {
        unsigned int number = 256;
        next = std::from_chars(next, end, number, notation.base).ptr;
        if (number > 255) {
            return {};
        }
        numbers.push_back(number);
    }
    return next == end && numbers.size() == notation.numbers ? numbers : std::vector<unsigned int>{};
}

/// @return whether the text was accepted
bool check(const Setting& setting, const Notation& notation, const std::string& text) {
    CGigE gige;
    (gige.*setting.set)(notation.example);
    require((gige.*setting.get)() == notation.example, "an address reads back");
    const std::vector<unsigned int> numbers = numbersOf(text, notation);
    if (isRefused<std::invalid_argument, std::out_of_range>([&] { (gige.*setting.set)(text); })) {
        require(numbers.empty(), "an address is accepted");
        require((gige.*setting.get)() == notation.example, "a refused text changes nothing");
        return false;
    }
    const std::string accepted = (gige.*setting.get)();
    const std::vector<unsigned int> acceptedNumbers = numbersOf(accepted, notation);
    require(!acceptedNumbers.empty(), "an accepted text gives an address");
    require(numbers.empty() || numbers == acceptedNumbers, "an address is not changed");
    CGigE other;
    (other.*setting.set)(accepted);
    require((other.*setting.get)() == accepted, "an accepted address reads back");
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text = Input(data, size).text();
    for (const Setting& address : kAddresses) {
        const bool accepted = check(address, kAddressNotation, text);
        require(accepted == (std::count(text.begin(), text.end(), '.') < 4), "at most four numbers are accepted");
    }
    for (const Setting& mac : kMacs) {
        const bool accepted = check(mac, kMacNotation, text);
        require(!accepted || std::count(text.begin(), text.end(), ':') < 6, "at most six numbers are accepted");
    }
    return 0;
}
