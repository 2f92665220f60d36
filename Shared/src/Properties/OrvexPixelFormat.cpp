// SPDX-License-Identifier: Apache-2.0

#include "Properties/OrvexMemoryProperties.h"

#include <algorithm>
#include <cstdint>

#include "Exceptions/Raise.h"
#include "Properties/OrvexFrameFormat.h"

namespace OrvexAdapter {

using namespace KestrelExceptions;

namespace {

constexpr unsigned long kSmallestCode = 0;
constexpr unsigned long kLargestCode = 7;

} // namespace

OrvexPixelFormat::OrvexPixelFormat(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                   OrvexCamera& camera)
    : MemoryProperty<unsigned long>(name, type, kLargestCode, kSmallestCode, 0, false, true, {}), m_Camera(&camera) {
    const FrameFormat present = readFrameFormat(*m_Camera, *this, QUILL_HERE);
    m_Format = present.format;
    m_FrameRate = present.rate;
    m_CurrentPixelFormat = m_Format.pixelFormat;
    m_Value = m_CurrentPixelFormat;
    m_Default = m_CurrentPixelFormat;

    for (const std::string& text : m_Candidates.getList()) {
        const unsigned long code = m_Candidates.toValue(text);
        FrameFormat trial{m_Format, m_FrameRate};
        trial.format.pixelFormat = static_cast<std::uint32_t>(code);
        // The present format is allowed, whether or not its trial failed.
        if (writeFrameFormat(*m_Camera, trial) || code == m_CurrentPixelFormat) {
            m_ValueEnumeration.insert(text, code);
            m_Minimum = std::min(m_Minimum, code);
            m_Maximum = std::max(m_Maximum, code);
        }
    }
    if (!writeFrameFormat(*m_Camera, {m_Format, m_FrameRate})) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyWriteFailure, getName());
    }
}

} // namespace OrvexAdapter
