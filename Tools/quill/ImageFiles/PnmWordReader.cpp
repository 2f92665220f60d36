// SPDX-License-Identifier: Apache-2.0

#include "ImageFiles/PnmWordReader.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <system_error>

#include <fmt/format.h>

#include "Terminal/Text.h"

namespace QuillTool {

namespace {

constexpr std::string_view kWordEnds = " \t\n\v\f\r#";
constexpr char kComment = '#';

} // namespace

std::string_view PnmWordReader::word() {
    skipTo(m_Rest.find_first_not_of(kBlanks));
    while (!m_Rest.empty() && m_Rest.front() == kComment) {
        skipTo(m_Rest.find('\n'));
        skipTo(m_Rest.find_first_not_of(kBlanks));
    }
    const std::string_view word = m_Rest.substr(0, m_Rest.find_first_of(kWordEnds));
    skipTo(word.size());
    return word;
}

unsigned PnmWordReader::number(std::string_view name) {
    const std::string_view digits = word();
    const char* const digitsEnd = digits.data() + digits.size();
    unsigned value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digitsEnd, value);
    if (error != std::errc() || end != digitsEnd) {
        throw std::runtime_error(fmt::format("the file has no number for {}", name));
    }
    return value;
}

void PnmWordReader::endHeader() {
    if (!m_Rest.empty() && m_Rest.front() == kComment) {
        skipTo(m_Rest.find('\n'));
    }
    if (m_Rest.empty() || kBlanks.find(m_Rest.front()) == std::string_view::npos) {
        throw std::runtime_error("the file ends in its header");
    }
    skipTo(1);
}

void PnmWordReader::skipTo(std::size_t position) {
    m_Rest.remove_prefix(std::min(position, m_Rest.size()));
}

} // namespace QuillTool
