// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Cameras/Camera.h"
#include "OrvexApi/OrvexApi.h"

namespace TestSupport {

/// Replaces operations of the camera SDK for its own lifetime, and ends the workspace before restoring them. Only one
/// may exist at a time.
class OrvexApiChange {
public:
    template <typename Change>
    explicit OrvexApiChange(Change change) {
        s_Original = OrvexAdapter::orvexApi();
        m_Api = s_Original;
        change(m_Api);
        OrvexAdapter::useOrvexApi(&m_Api);
    }
    OrvexApiChange(const OrvexApiChange&) = delete;
    OrvexApiChange& operator=(const OrvexApiChange&) = delete;
    ~OrvexApiChange() {
        CameraInterface::Camera::unitialisedWorkpace();
        OrvexAdapter::useOrvexApi(nullptr);
    }

    static const OrvexAdapter::OrvexApi& original() { return s_Original; }

private:
    OrvexAdapter::OrvexApi m_Api;
    inline static OrvexAdapter::OrvexApi s_Original;
};

} // namespace TestSupport
