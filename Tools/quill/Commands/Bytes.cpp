// SPDX-License-Identifier: Apache-2.0

#include "Commands/Bytes.h"

#include <array>
#include <iterator>
#include <vector>

#include <fmt/format.h>

#include "ImageFiles/AtomicFile.h"
#include "ImageFiles/ImageFile.h"
#include "ImageFiles/InputFile.h"
#include "Terminal/ToolError.h"

namespace QuillTool {

namespace {

constexpr std::size_t kBytesPerLine = 16;

std::string readFile(const std::string& path) {
    return attempt(fmt::format("file '{}': cannot be read", path), [&] {
        const std::vector<unsigned char> bytes = readInputFile(path);
        return std::string(bytes.begin(), bytes.end());
    });
}

std::string fromHex(std::string_view digits) {
    std::string bytes;
    int high = -1;
    for (const char digit : digits) {
        if (digit == ' ') {
            continue;
        }
        constexpr std::string_view kDigits = "0123456789abcdef0123456789ABCDEF";
        const std::size_t position = kDigits.find(digit);
        if (position == std::string_view::npos) {
            throw ToolError(ExitCode::Usage,
                            fmt::format("argument 'hex:{}': '{}' is not a hexadecimal digit", digits, digit));
        }
        const int value = static_cast<int>(position % 16);
        if (high < 0) {
            high = value;
        } else {
            bytes += static_cast<char>(high * 16 + value);
            high = -1;
        }
    }
    if (high >= 0) {
        throw ToolError(ExitCode::Usage, fmt::format("argument 'hex:{}': the number of digits is odd", digits));
    }
    return bytes;
}

std::string literal(const std::string& text) {
    return text;
}

/// A prefix that selects the reading of the rest of an argument.
struct ArgumentForm {
    std::string_view prefix;
    std::string (*read)(const std::string& rest);
};

constexpr std::array kArgumentForms{
    ArgumentForm{"@", readFile},
    ArgumentForm{"hex:", [](const std::string& rest) { return fromHex(rest); }},
    ArgumentForm{"text:", literal},
};

/// Calls @p read for the bytes of a file, which are at least one and at most so many.
template <typename Read>
std::vector<unsigned char> readWhole(const std::string& path, std::size_t maximumSize, Read read) {
    std::vector<unsigned char> bytes = attempt(fmt::format("file '{}': cannot be read", path), read);
    if (bytes.empty()) {
        throw ToolError(ExitCode::Failed, fmt::format("file '{}': is empty", path));
    }
    if (bytes.size() > maximumSize) {
        throw ToolError(ExitCode::Failed,
                        fmt::format("file '{}': has {} bytes, more than {}", path, bytes.size(), maximumSize));
    }
    return bytes;
}

} // namespace

std::string readArgument(const std::string& argument) {
    for (const ArgumentForm& form : kArgumentForms) {
        if (argument.compare(0, form.prefix.size(), form.prefix) == 0) {
            return form.read(argument.substr(form.prefix.size()));
        }
    }
    return argument;
}

std::vector<unsigned char> readFileForCamera(const std::string& path, std::size_t maximumSize) {
    return readWhole(path, maximumSize, [&] { return readInputFile(path); });
}

std::vector<unsigned char> readDocument(const std::string& path, std::size_t maximumSize) {
    return readWhole(path, maximumSize,
                     [&] { return path == kStandardStream ? readStandardInput() : readInputFile(path); });
}

std::string toHex(std::string_view bytes) {
    std::string digits;
    digits.reserve(2 * bytes.size());
    for (const char byte : bytes) {
        fmt::format_to(std::back_inserter(digits), "{:02x}", static_cast<unsigned char>(byte));
    }
    return digits;
}

std::string hexDump(std::string_view bytes, std::size_t first) {
    std::string dump;
    for (std::size_t offset = 0; offset < bytes.size(); offset += kBytesPerLine) {
        const std::string_view row = bytes.substr(offset, kBytesPerLine);
        std::string digits;
        std::string characters;
        for (const char byte : row) {
            fmt::format_to(std::back_inserter(digits), "{:02x} ", static_cast<unsigned char>(byte));
            characters += byte >= 0x20 && byte < 0x7F ? byte : '.';
        }
        fmt::format_to(std::back_inserter(dump), "{:08x}  {:<{}} |{}|\n", first + offset, digits, 3 * kBytesPerLine,
                       characters);
    }
    return dump;
}

void writeWholeFile(const std::string& path, std::string_view bytes) {
    attempt(fmt::format("file '{}': cannot be written", path), [&] {
        AtomicFile file(path);
        file.write(bytes.data(), bytes.size());
        file.commit();
    });
}

} // namespace QuillTool
