// SPDX-License-Identifier: Apache-2.0

// What GigE Vision cameras answer.

#include <algorithm>
#include <cctype>

#include "Gvcp.h"
#include "Support/Input.h"

namespace {

using namespace Fuzzing;
using namespace GenICamAdapter;

void checkText(const std::string& text, std::size_t longest) {
    require(text.size() <= longest, "a text is as long as its field at most");
    require(
        std::none_of(text.begin(), text.end(), [](char c) { return std::iscntrl(static_cast<unsigned char>(c)) != 0; }),
        "a text is printable");
}

void checkDiscovery(const Gvcp::Answer& answer) {
    const auto record = Gvcp::parseDiscovery(answer);
    require(record.has_value() == (answer.status == 0 && answer.size >= 0xF8), "a whole answer describes a camera");
    if (record) {
        checkText(record->vendor, 32);
        checkText(record->model, 32);
        checkText(record->version, 32);
        checkText(record->serialNumber, 16);
        checkText(record->userName, 16);
        checkText(record->hardwareAddress, 17);
        checkText(record->address, 15);
    }
}

void checkUrl(const std::string& url) {
    const auto place = Gvcp::placeOfDescription(url);
    require(!place || (url.size() >= 10 && std::count(url.begin(), url.end(), ';') >= 2), "a place has two numbers");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    const auto id = static_cast<std::uint16_t>(input.byte() << 8 | input.byte());
    const auto wanted = static_cast<std::size_t>(input.byte()) * 4;
    const Bytes packet = input.rest();
    checkUrl({packet.begin(), packet.end()});
    const auto answer = Gvcp::parseAnswer(packet.data(), packet.size());
    require(!answer || (answer->payload == packet.data() + 8 && answer->size <= packet.size() - 8),
            "the payload lies in the packet");
    if (!answer) {
        return 0;
    }
    checkDiscovery(*answer);
    require(!Gvcp::nameOfStatus(answer->status).empty(), "a status has a name");
    for (const auto command : {Gvcp::Command::Discovery, Gvcp::Command::ReadRegister, Gvcp::Command::WriteRegister,
                               Gvcp::Command::ReadMemory, Gvcp::Command::WriteMemory}) {
        const Gvcp::Match match = Gvcp::matchOf(*answer, id, command);
        require(match == Gvcp::Match::Foreign || answer->id == id, "an answer to another command is none");
        require(match != Gvcp::Match::Pending || Gvcp::pendingMsOf(*answer) == Gvcp::readBig16(answer->payload + 2),
                "a pending answer has a time");
    }
    const std::uint8_t* const memory = Gvcp::memoryOf(*answer, wanted);
    require((memory != nullptr) == (answer->size >= 4 + wanted), "memory has the size that was asked for");
    require(memory == nullptr || memory + wanted <= packet.data() + packet.size(), "memory lies in the packet");
    return 0;
}
