// SPDX-License-Identifier: Apache-2.0

#include <array>
#include <charconv>
#include <memory>
#include <string>

#include <benchmark/benchmark.h>

#include "Claims.h"
#include "Properties/MemoryProperty.h"

namespace Benchmarks {

namespace {

using CameraInterface::MemoryProperty;
using CameraInterface::PROPERTY_TYPE;

constexpr double kLimit = 1.3;
/// Values in turn, so that no two writes in a row are the same; a power of two.
constexpr std::size_t kValues = 64;

double valueAt(std::size_t i) {
    return 0.25 + 137.13 * static_cast<double>(i);
}

std::string textOf(double value) {
    std::array<char, 320>
        buffer; // NOLINT(cppcoreguidelines-pro-type-member-init): the floor must not fill unused bytes
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::fixed, 2);
    return {buffer.data(), end.ptr};
}

/// Calls @p use with 0, 1, 2 ... kValues - 1, 0, ...
template <typename Use>
Variant inTurn(Use use) {
    return {[use, i = std::size_t{0}]() mutable { use(i++ % kValues); }};
}

std::pair<Variant, Variant> reading() {
    auto properties = std::make_shared<std::vector<MemoryProperty<double>>>();
    for (std::size_t i = 0; i < kValues; ++i) {
        properties->emplace_back("Exposure", PROPERTY_TYPE::Float, 0.0, 1e6, valueAt(i), false, false,
                                 std::map<std::string, double>{});
    }
    return {inTurn([](std::size_t i) { benchmark::DoNotOptimize(textOf(valueAt(i))); }),
            inTurn([properties](std::size_t i) { benchmark::DoNotOptimize((*properties)[i].getValue()); })};
}

std::pair<Variant, Variant> writing() {
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < kValues; ++i) {
        texts.push_back(textOf(valueAt(i)));
    }
    const auto property = std::make_shared<MemoryProperty<double>>("Exposure", PROPERTY_TYPE::Float, 0.0, 1e6, -1.0,
                                                                   false, false, std::map<std::string, double>{});
    return {inTurn([texts](std::size_t i) {
                double value = 0;
                std::from_chars(texts[i].data(), texts[i].data() + texts[i].size(), value);
                benchmark::DoNotOptimize(value);
            }),
            inTurn([texts, property](std::size_t i) { property->setValue(texts[i]); })};
}

} // namespace

std::vector<Claim> propertyClaims(Scope) {
    return {{"P17", "MemoryProperty<double> read as text", "to_chars", kLimit, reading},
            {"P17", "MemoryProperty<double> written as text", "from_chars", kLimit, writing}};
}

} // namespace Benchmarks
