// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexMemoryProperties.h"

#include <algorithm>
#include <vector>

#include "Base/TextConversion.h"
#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "OrvexApi/OrvexApi.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;

namespace {

const char* const kNone = "None (1x1)";
constexpr std::uint8_t kEqualFactors = 0x80;

std::string samplingText(const char* label, int horizontal, int vertical) {
    return std::string(label) + " (" + Base::toText(horizontal) + "x" + Base::toText(vertical) + ")";
}

/// The texts of one kind of sampling, the largest factors last.
template <std::size_t Slots>
std::vector<std::string> samplingTexts(const char* label, const std::uint8_t (&factors)[Slots], std::size_t count,
                                       bool equalFactors) {
    std::vector<std::string> texts;
    const auto* const end = factors + std::min(count, Slots);
    for (const auto* horizontal = factors; horizontal != end; ++horizontal) {
        for (const auto* vertical = factors; vertical != end; ++vertical) {
            if (!equalFactors || horizontal == vertical) {
                texts.push_back(samplingText(label, *horizontal, *vertical));
            }
        }
    }
    return texts;
}

} // namespace

OrvexSamplingDescription::OrvexSamplingDescription(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                                   OrvexCamera& camera)
    : MemoryProperty<std::string>(name, type, "", "", "", false, true, {}), m_Camera(&camera) {
    if (orvexApi().sdkGetSamplingDescription(m_Camera->getHandle(), &m_Description) == 0) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyUnsupported, getName());
    }
    const bool equalFactors = (m_Description.flags & kEqualFactors) != 0;
    std::vector<std::string> texts{kNone};
    for (const auto& kind :
         {samplingTexts("Binning", m_Description.binningFactors, m_Description.binningCount, equalFactors),
          samplingTexts("Subsampling", m_Description.subsamplingFactors, m_Description.subsamplingCount,
                        equalFactors)}) {
        texts.insert(texts.end(), kind.begin(), kind.end());
    }
    for (const std::string& text : texts) {
        m_ValueEnumeration.insert(text, text);
    }
    m_Minimum = kNone;
    m_Maximum = texts.back(); // the last subsampling, else the last binning
    m_Value = kNone;
    m_Default = kNone;
}

} // namespace OrvexAdapter
