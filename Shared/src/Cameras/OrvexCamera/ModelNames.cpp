// SPDX-License-Identifier: Apache-2.0

#include "Cameras/OrvexCamera/ModelNames.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace OrvexAdapter {

namespace {

struct ModelName {
    std::uint32_t cameraId;
    std::string_view designation;
};

// The ids are the maker's. The designations replace the maker's product names, which are not available: the id of the
// model, or of the model whose name it shares.
constexpr std::array<ModelName, 110> kModelNames{{
    {0x81, "Model 081"},      {0x85, "Model 085"},      {0x86, "Model 086"},      {0x87, "Model 087"},
    {0x8A, "Model 08A"},      {0x8B, "Model 08B"},      {0x8C, "Model 08C"},      {0x8D, "Model 08D"},
    {0x90, "Model 090"},      {0x91, "Model 091"},      {0x92, "Model 092"},      {0x93, "Model 093"},
    {0x94, "Model 094"},      {0x95, "Model 095"},      {0x96, "Model 096"},      {0x97, "Model 097"},
    {0x98, "Model 098"},      {0x99, "Model 099"},      {0x9A, "Model 09A"},      {0x9B, "Model 09B"},
    {0x9D, "Model 09D"},      {0x9E, "Model 09E"},      {0xA0, "Model 0A0"},      {0xA1, "Model 0A1"},
    {0xA2, "Model 0A2"},      {0xA3, "Model 0A3"},      {0xA4, "Model 0A4"},      {0xA5, "Model 0A5"},
    {0x180, "Model 180"},     {0x184, "Model 184"},     {0x186, "Model 086"},     {0x18A, "Model 08A"},
    {0x18C, "Model 08C"},     {0x196, "Model 096"},     {0x19A, "Model 09A"},     {0x19B, "Model 09B"},
    {0x19E, "Model 09E"},     {0x1A2, "Model 0A2"},     {0x1A4, "Model 0A4"},     {0x1A5, "Model 0A5"},
    {0x1A6, "Model 1A6"},     {0x1A7, "Model 1A7"},     {0x1A8, "Model 1A8"},     {0x1A9, "Model 1A9"},
    {0x1AA, "Model 1AA"},     {0x1AB, "Model 1AB"},     {0x1AC, "Model 1AC"},     {0x1AF, "Model 1AF"},
    {0x1C0, "Model 1C0"},     {0x1C5, "Model 1C5"},     {0x1C6, "Model 1C6"},     {0x1C7, "Model 1C7"},
    {0x1C8, "Model 1C8"},     {0x1C9, "Model 1C9"},     {0x1CA, "Model 1CA"},     {0x1CD, "Model 1CD"},
    {0x1CE, "Model 1CE"},     {0x1D0, "Model 1D0"},     {0x1DA, "Model 1DA"},     {0x1DC, "Model 1DC"},
    {0x1F9, "Model 1F9"},     {0x284, "Model 284"},     {0x28A, "Model 08A"},     {0x28C, "Model 08C"},
    {0x29A, "Model 29A"},     {0x2C5, "Model 2C5"},     {0x2C8, "Model 2C8"},     {0x248, "Model 248"},
    {0x35B, "Model 35B"},     {0x384, "Model 384"},     {0x38B, "Model 38B"},     {0x38D, "Model 38D"},
    {0x39E, "Model 39E"},     {0x3AD, "Model 3AD"},     {0x3F7, "Model 3F7"},     {0x49F, "Model 49F"},
    {0x4A2, "Model 4A2"},     {0x4AE, "Model 4AE"},     {0x4CE, "Model 4CE"},     {0x4F7, "Model 4F7"},
    {0x602, "Model 602"},     {0x604, "Model 604"},     {0x613, "Model 613"},     {0x616, "Model 616"},
    {0x619, "Model 619"},     {0x61C, "Model 61C"},     {0x630, "Model 630"},     {0x639, "Model 639"},
    {0x631, "Model 631"},     {0x635, "Model 635"},     {0x643, "Model 643"},     {0x645, "Model 645"},
    {0x649, "Model 649"},     {0x64C, "Model 64C"},     {0x682, "Model 682"},     {0x684, "Model 684"},
    {0x694, "Model 694"},     {0x696, "Model 696"},     {0x6B6, "Model 6B6"},     {0x711, "Model 711"},
    {0x713, "Model 713"},     {0x716, "Model 716"},     {0x719, "Model 719"},     {0x71C, "Model 71C"},
    {0x743, "Model 743"},     {0x745, "Model 745"},     {0x40080, "Model 40080"}, {0x400C8, "Model 400C8"},
    {0x400CE, "Model 400CE"}, {0x401CE, "Model 401CE"},
}};

constexpr std::size_t countDesignations() {
    std::size_t distinct = 0;
    for (std::size_t row = 0; row < kModelNames.size(); ++row) {
        bool isNew = true;
        for (std::size_t earlier = 0; earlier < row; ++earlier) {
            isNew = isNew && kModelNames[earlier].designation != kModelNames[row].designation;
        }
        distinct += isNew ? 1 : 0;
    }
    return distinct;
}
static_assert(!kModelNames.back().designation.empty(), "110 rows");
static_assert(countDesignations() == 98);

} // namespace

std::string getModelNameFromCameraId(std::uint32_t cameraId) {
    const auto* row = std::find_if(kModelNames.begin(), kModelNames.end(),
                                   [&](const ModelName& model) { return model.cameraId == cameraId; });
    return row == kModelNames.end() ? std::string() : std::string(row->designation);
}

} // namespace OrvexAdapter
