// SPDX-License-Identifier: Apache-2.0

#include "Camera/ImageSource.h"

#include <exception>

#include "Camera/ComputedColor.h"
#include "Camera/Region.h"

namespace QuillTool {

namespace {

constexpr std::chrono::milliseconds kRepetition{20}; // a stop that arrives just before the start has no effect

} // namespace

ImageSource::ImageSource(const Interrupt& interrupt, const SelectedCamera& camera)
    : m_Interrupt(interrupt), m_Camera(camera), m_Stopper([this] { stopWhenInterrupted(); }) {}

ImageSource::~ImageSource() {
    m_End.wake();
    m_Stopper.join();
}

std::unique_ptr<Imaging::Image> ImageSource::next() {
    if (m_Interrupt.requested()) {
        return nullptr;
    }
    try {
        return withComputedColor(
            attemptStart(m_Camera, "no image can be captured", [this] { return m_Camera->getImage(); }));
    } catch (const ToolError&) {
        if (m_Interrupt.requested()) {
            return nullptr; // the interrupt stopped the stream
        }
        throw;
    }
}

void ImageSource::stopWhenInterrupted() {
    for (bool hasEnded = waitForAny({&m_End, &m_Interrupt.waker()}) == 0U; !hasEnded;) {
        try {
            m_Camera->stopStream();
        } catch (const std::exception&) {
            // The wait for the image ends on its own and reports the camera's reason.
        }
        hasEnded = waitForAny({&m_End}, kRepetition).has_value();
    }
}

} // namespace QuillTool
