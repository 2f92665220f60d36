// SPDX-License-Identifier: Apache-2.0

#include "Streams/StreamStatistics.h"

#include <utility>

namespace CameraInterface {

StreamStatistics::StreamStatistics()
    : m_FrameCounters{std::make_shared<Utilities::FrameCounter>(), std::make_shared<Utilities::FrameCounter>(),
                      std::make_shared<Utilities::FrameCounter>()},
      m_IncompleteFrames(std::make_shared<std::atomic<unsigned long long>>(0)) {}

StreamStatistics::StreamStatistics(const StreamStatistics& other)
    : m_FrameCounters(other.m_FrameCounters), m_IncompleteFrames(other.m_IncompleteFrames),
      m_CaptureTime(other.m_CaptureTime.load()), m_ImageDataTransferTime(other.m_ImageDataTransferTime.load()) {}

StreamStatistics::StreamStatistics(StreamStatistics&& other) noexcept
    : m_FrameCounters(std::move(other.m_FrameCounters)), m_IncompleteFrames(std::move(other.m_IncompleteFrames)),
      m_CaptureTime(other.m_CaptureTime.load()), m_ImageDataTransferTime(other.m_ImageDataTransferTime.load()) {}

StreamStatistics& StreamStatistics::operator=(const StreamStatistics& other) {
    return *this = StreamStatistics(other);
}

StreamStatistics& StreamStatistics::operator=(StreamStatistics&& other) noexcept {
    if (this != &other) {
        m_FrameCounters = std::move(other.m_FrameCounters);
        m_IncompleteFrames = std::move(other.m_IncompleteFrames);
        m_CaptureTime = other.m_CaptureTime.load();
        m_ImageDataTransferTime = other.m_ImageDataTransferTime.load();
    }
    return *this;
}

StreamStatistics::~StreamStatistics() = default;

void StreamStatistics::incrementFrameCount(STREAM_TYPE type) {
    counter(type).incrementFrameCount();
}

double StreamStatistics::getFramesPerSecond(STREAM_TYPE type) {
    return counter(type).getFramesPerSecond();
}

unsigned long long StreamStatistics::getFrameCount(STREAM_TYPE type) {
    return counter(type).getFrameCount();
}

unsigned long long StreamStatistics::getIncompleteFrameCount() const {
    return *m_IncompleteFrames;
}

void StreamStatistics::incrementIncompleteFrameCount() {
    ++*m_IncompleteFrames;
}

double StreamStatistics::getDesiredIntervalTime(STREAM_TYPE type) {
    return counter(type).getDesiredIntervalTime();
}

void StreamStatistics::setDesiredIntervalTime(STREAM_TYPE type, double seconds) {
    counter(type).setDesiredIntervalTime(seconds);
}

double StreamStatistics::getCaptureTime() {
    return m_CaptureTime;
}

void StreamStatistics::setCaptureTime(double seconds) {
    m_CaptureTime = seconds;
}

double StreamStatistics::getImageDataTransferTime() {
    return m_ImageDataTransferTime;
}

void StreamStatistics::setImageDataTransferTime(double seconds) {
    m_ImageDataTransferTime = seconds;
}

Utilities::FrameCounter& StreamStatistics::counter(STREAM_TYPE type) {
    return *m_FrameCounters[static_cast<std::size_t>(type)];
}

} // namespace CameraInterface
