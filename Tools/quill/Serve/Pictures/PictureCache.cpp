// SPDX-License-Identifier: Apache-2.0

#include "Serve/Pictures/PictureCache.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "Serve/Pictures/Analysis.h"

namespace QuillTool::Serve {

namespace {

Json orNull(const std::optional<double>& value) {
    return value ? Json(*value) : Json();
}

double millisecondsSinceEpoch(std::chrono::system_clock::time_point time) {
    return std::chrono::duration<double, std::milli>(time.time_since_epoch()).count();
}

Json describePicture(const CameraInterface::Frame& frame, const Bitmap& bitmap, const Json& analysis) {
    const SampleView view(*frame.image);
    return {{"frame", frame.information.number},
            {"width", view.width},
            {"height", view.height},
            {"pictureWidth", bitmap.width},
            {"pictureHeight", bitmap.height},
            {"layout", Imaging::getFormatName(view.format)},
            {"bitDepth", view.bitDepth},
            {"arrival", millisecondsSinceEpoch(frame.information.arrivalWallTime)},
            {"exposureMs", orNull(frame.information.exposureMs)},
            {"gain", orNull(frame.information.gain)},
            {"analysis", analysis}};
}

} // namespace

void PictureCache::setFrame(CameraInterface::Frame frame) {
    m_Frame = std::move(frame);
    m_Analysis.reset();
    m_Entries.clear();
}

std::shared_ptr<const LivePicture> PictureCache::picture(const View& view) {
    const auto known =
        std::find_if(m_Entries.begin(), m_Entries.end(), [&](const Entry& entry) { return entry.view == view; });
    if (known != m_Entries.end()) {
        return known->picture;
    }
    if (!m_Analysis) {
        m_Analysis = analyse(*m_Frame.image);
    }
    const Bitmap bitmap = m_Maker.make(*m_Frame.image, view.scale);
    auto picture =
        std::make_shared<const LivePicture>(describePicture(m_Frame, bitmap, *m_Analysis),
                                            m_Encoder.encode(bitmap, view.quality), m_Frame.information.number);
    m_Entries.push_back({view, picture});
    return picture;
}

} // namespace QuillTool::Serve
