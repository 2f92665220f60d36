// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <utility>

#include <Quill.h>

#include "Handles.h"
#include "quillcamera.h"

namespace CInterface {

class FrameQueueObject : public HandledObject {
public:
    static constexpr HandleKind kKind = HandleKind::FrameQueue;

    explicit FrameQueueObject(CameraInterface::FrameQueue queue) : m_Queue(std::move(queue)) {}

    CameraInterface::FrameQueue& queue() { return m_Queue; }

private:
    CameraInterface::FrameQueue m_Queue;
};

class FrameObject : public HandledObject {
public:
    static constexpr HandleKind kKind = HandleKind::Frame;

    explicit FrameObject(CameraInterface::Frame frame) : m_Frame(std::move(frame)) {}

    const CameraInterface::Frame& frame() const { return m_Frame; }

private:
    const CameraInterface::Frame m_Frame;
};

class ImageObject : public HandledObject {
public:
    static constexpr HandleKind kKind = HandleKind::Image;

    explicit ImageObject(std::shared_ptr<const Imaging::Image> image) : m_Image(std::move(image)) {}

    const Imaging::Image& image() const { return *m_Image; }

private:
    const std::shared_ptr<const Imaging::Image> m_Image;
};

inline void giveImage(std::shared_ptr<const Imaging::Image> image, quill_image* handle) {
    handle->id = handles().create<ImageObject>(std::move(image));
}

/// Copies the layout of an image into the caller's struct.
void giveLayout(const Imaging::Image& image, quill_image_layout& layout);

} // namespace CInterface
