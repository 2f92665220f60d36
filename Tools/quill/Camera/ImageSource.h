// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <thread>

#include <Quill.h>

#include "Camera/Session.h"
#include "Terminal/Interrupt.h"
#include "Terminal/WakePipe.h"

namespace QuillTool {

/// The images of a camera. Waiting for one ends at once when an interrupt is requested, whatever the camera waits for:
/// a thread that lives as long as the source stops the stream then.
class ImageSource {
public:
    ImageSource(const Interrupt& interrupt, const SelectedCamera& camera);
    ImageSource(const ImageSource&) = delete;
    ImageSource& operator=(const ImageSource&) = delete;
    ~ImageSource();

    /// The next image; null after an interrupt. Colour that the camera computed itself is declared as such.
    /// @throws ToolError
    std::unique_ptr<Imaging::Image> next();

private:
    void stopWhenInterrupted();

    const Interrupt& m_Interrupt;
    SelectedCamera m_Camera;
    WakePipe m_End;
    std::thread m_Stopper;
};

} // namespace QuillTool
