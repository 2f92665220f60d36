// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <thread>

#include <Quill.h>

#include "Camera/Session.h"
#include "Terminal/Interrupt.h"
#include "Terminal/Waker.h"

namespace QuillTool {

/// Takes images from a camera. An interrupt ends the wait for an image at once, whatever the camera waits for: a thread
/// with the lifetime of the source stops the stream.
class ImageSource {
public:
    ImageSource(const Interrupt& interrupt, const SelectedCamera& camera);
    ImageSource(const ImageSource&) = delete;
    ImageSource& operator=(const ImageSource&) = delete;
    ~ImageSource();

    /// Returns the next image; null after an interrupt. Declares the true layout of colour that the camera computed.
    /// @throws ToolError
    std::unique_ptr<Imaging::Image> next();

private:
    void stopWhenInterrupted();

    const Interrupt& m_Interrupt;
    SelectedCamera m_Camera;
    Waker m_End;
    std::thread m_Stopper;
};

} // namespace QuillTool
