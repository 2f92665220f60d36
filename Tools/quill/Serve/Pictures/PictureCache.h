// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include <Quill.h>

#include "Serve/Pictures/JpegEncoder.h"
#include "Serve/Pictures/LiveFeed.h"
#include "Serve/Pictures/PictureMaker.h"

namespace QuillTool::Serve {

/// The pictures of one frame: each view is encoded when it is asked for first, and the frame is measured once.
class PictureCache {
public:
    /// Takes another frame, and forgets the pictures of the former one.
    void setFrame(CameraInterface::Frame frame);
    /// Without an image at first.
    const CameraInterface::Frame& frame() const { return m_Frame; }
    /// @throws std::exception  the frame cannot be shown
    std::shared_ptr<const LivePicture> picture(const View& view);

private:
    struct Entry {
        View view;
        std::shared_ptr<const LivePicture> picture;
    };

    CameraInterface::Frame m_Frame;
    std::optional<Json> m_Analysis;
    std::vector<Entry> m_Entries;
    PictureMaker m_Maker;
    JpegEncoder m_Encoder;
};

} // namespace QuillTool::Serve
