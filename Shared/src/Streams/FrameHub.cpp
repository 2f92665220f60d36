// SPDX-License-Identifier: Apache-2.0

#include "Streams/FrameHub.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "Imaging/BufferPool.h"
#include "Streams/FrameQueueState.h"
#include "Utilities/Stopwatch.h"

namespace CameraInterface {

using Utilities::MutexLock;

FrameHub::FrameHub()
    : m_Images(std::make_shared<Imaging::SharedImagePool>()), m_Counts(std::make_shared<FrameCounts>()) {}

FrameHub::~FrameHub() = default;

FrameQueue FrameHub::openQueue(const FrameQueueSettings& settings) {
    const MutexLock lock(m_Mutex);
    auto state = std::make_shared<FrameQueueState>(settings, m_End, m_Counts);
    state->letPass(m_LetPassRun);
    auto queues = std::make_shared<Queues>();
    if (m_Queues) {
        std::copy_if(m_Queues->begin(), m_Queues->end(), std::back_inserter(*queues),
                     [](const Queue& queue) { return !queue->isClosed(); });
    }
    queues->push_back(state);
    m_Queues = std::move(queues);
    m_HasQueues = true;
    return FrameQueue(std::move(state));
}

std::shared_ptr<const FrameHub::Queues> FrameHub::openQueues() {
    const MutexLock lock(m_Mutex);
    if (m_Queues && std::all_of(m_Queues->begin(), m_Queues->end(), [](const Queue& q) { return q->isClosed(); })) {
        m_Queues = nullptr;
        m_HasQueues = false;
    }
    return m_Queues;
}

void FrameHub::describe(const std::optional<FrameDescription>& description) {
    const MutexLock lock(m_Mutex);
    m_Description = description;
}

std::optional<FrameDescription> FrameHub::description() {
    const MutexLock lock(m_Mutex);
    return m_Description;
}

void FrameHub::declarePackets() {
    m_Counts->hasPackets = true;
}

std::shared_ptr<FrameRun> FrameHub::makeRun() {
    return std::make_shared<FrameRun>(shared_from_this());
}

std::uint64_t FrameHub::begin() {
    const MutexLock lock(m_Mutex);
    m_Running = ++m_Runs;
    m_ExpectedEnd = FrameQueueStatus::Stopped;
    setEndLocked(std::nullopt);
    return m_Running;
}

void FrameHub::end(std::uint64_t run, FrameHandover::Outcome outcome) {
    const MutexLock lock(m_Mutex);
    if (run == 0 || m_Running != run) { // it never began, or another one runs
        return;
    }
    m_Running = 0;
    switch (outcome) {
    case FrameHandover::Outcome::CaptureEnded:
        return setEndLocked(FrameQueueStatus::RunEnded);
    case FrameHandover::Outcome::OutOfMemory:
        return setEndLocked(FrameQueueStatus::OutOfMemory);
    default:
        return setEndLocked(m_ExpectedEnd);
    }
}

void FrameHub::expectEnd(FrameQueueStatus reason) {
    const MutexLock lock(m_Mutex);
    m_ExpectedEnd = reason;
    if (m_Running == 0) {
        setEndLocked(reason);
    }
}

void FrameHub::retire() {
    const MutexLock lock(m_Mutex);
    m_Retired = true;
    if (m_Running == 0) { // otherwise the end of the run says it, after the last frame
        setEndLocked(FrameQueueStatus::CameraGone);
    }
}

void FrameHub::setEndLocked(std::optional<FrameQueueStatus> end) {
    m_End = m_Retired ? FrameQueueStatus::CameraGone : end;
    if (m_Queues) {
        for (const Queue& queue : *m_Queues) {
            queue->setEnd(m_End);
        }
    }
}

void FrameHub::letPass(std::uint64_t run) {
    const MutexLock lock(m_Mutex);
    m_LetPassRun = run;
    if (m_Queues) {
        for (const Queue& queue : *m_Queues) {
            queue->letPass(run);
        }
    }
}

std::vector<StreamCounter> FrameHub::counters() {
    std::vector<StreamCounter> counters = m_Counts->counters();
    if (const auto queues = openQueues()) {
        for (const Queue& queue : *queues) {
            if (!queue->isClosed()) {
                const std::string& name = queue->settings().name;
                counters.push_back({"Dropped by " + (name.empty() ? "queue" : name), queue->dropped(),
                                    "Frames that this open queue dropped because it was full.", true});
            }
        }
    }
    return counters;
}

FrameRun::FrameRun(std::shared_ptr<FrameHub> hub) : m_Hub(std::move(hub)) {}

FrameRun::~FrameRun() {
    end(FrameHandover::Outcome::Stopped);
}

void FrameRun::begin() {
    m_Run = m_Hub->begin();
}

std::vector<unsigned char> FrameRun::takeBuffer(std::size_t size) {
    return m_Hub->m_Images->takeBuffer(size);
}

void FrameRun::giveBack(std::vector<unsigned char> buffer) noexcept {
    m_Hub->m_Images->giveBack(std::move(buffer));
}

bool FrameRun::publish(std::vector<unsigned char>& data, std::size_t bytes, const FrameGeometry& geometry,
                       const FrameInformation& known) {
    Utilities::Stopwatch stopwatch;
    stopwatch.start();
    ++m_Number;
    FrameCounts& counts = *m_Hub->m_Counts;
    const auto queues = m_Hub->hasQueues() ? m_Hub->openQueues() : nullptr;
    const auto description = queues ? m_Hub->description() : std::nullopt;
    bool isDelivered = false;
    if (!description || geometry.bitsPerPixel == 0) {
        isDelivered = deliverToCaller(data, bytes, geometry);
        m_TransferSeconds = stopwatch.delta();
    } else {
        data.resize(bytes);
        const Frame frame = makeFrame(data, geometry, known, *description);
        isDelivered = deliverCopy(*frame.image, geometry);
        m_TransferSeconds = stopwatch.delta();
        for (const auto& queue : *queues) {
            isDelivered |= queue->push(frame);
        }
    }
    if (isDelivered) {
        ++counts.delivered;
    } else if (!queues) {
        ++counts.unused;
    } else if (data.empty()) {
        ++counts.turnedAway;
    } else {
        countLoss(FrameLoss::Undescribed, 1);
    }
    return data.empty();
}

bool FrameRun::deliverToCaller(std::vector<unsigned char>& data, std::size_t bytes, const FrameGeometry& geometry) {
    if (!m_Handover.isRequested()) {
        return false;
    }
    data.resize(bytes);
    return m_Handover.deliver(std::move(data), geometry);
}

bool FrameRun::deliverCopy(const Imaging::Image& image, const FrameGeometry& geometry) {
    if (!m_Handover.isRequested()) {
        return false;
    }
    // The caller will own its bytes, and the queues share theirs.
    std::vector<unsigned char> copy = Imaging::BufferPool::instance().take(image.getImageSize());
    std::copy_n(image.getDataAddress(), copy.size(), copy.begin());
    return m_Handover.deliver(std::move(copy), geometry);
}

Frame FrameRun::makeFrame(std::vector<unsigned char>& data, const FrameGeometry& geometry,
                          const FrameInformation& known, const FrameDescription& description) {
    Frame frame{nullptr, known};
    frame.information.run = m_Run;
    frame.information.number = m_Number;
    frame.information.arrivalWallTime =
        std::chrono::system_clock::now() - std::chrono::duration_cast<std::chrono::system_clock::duration>(
                                               std::chrono::steady_clock::now() - known.arrival);
    frame.information.exposureMs = description.exposureMs;
    frame.information.gain = description.gain;
    frame.image = m_Hub->m_Images->makeImage(geometry.width, geometry.height, std::move(data), geometry.bitsPerPixel,
                                             description.littleEndian, description.layout);
    return frame;
}

void FrameRun::lose(FrameLoss why, std::uint64_t frames) {
    m_Number += frames;
    countLoss(why, frames);
}

void FrameRun::countLoss(FrameLoss why, std::uint64_t frames) {
    m_Hub->m_Counts->losses[static_cast<std::size_t>(why)] += frames;
}

void FrameRun::loseIncomplete(std::uint64_t receivedBytes, std::uint64_t expectedBytes) {
    m_Hub->m_Counts->incompleteBytesReceived += receivedBytes;
    m_Hub->m_Counts->incompleteBytesExpected += expectedBytes;
    lose(FrameLoss::Incomplete);
}

void FrameRun::countPackets(std::uint64_t resent, std::uint64_t missing) {
    m_Hub->m_Counts->resentPackets += resent;
    m_Hub->m_Counts->missingPackets += missing;
}

void FrameRun::letPass() {
    m_Hub->letPass(m_Run);
}

void FrameRun::end(FrameHandover::Outcome outcome) {
    m_Handover.close(outcome);
    m_Hub->end(m_Run, outcome);
}

} // namespace CameraInterface
