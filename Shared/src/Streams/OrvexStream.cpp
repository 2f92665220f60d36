// SPDX-License-Identifier: Apache-2.0

#include "Streams/OrvexStream.h"

#include <exception>
#include <string>
#include <utility>

#include "Base/TextConversion.h"
#include "Cameras/OrvexCamera/ColorFormatLayout.h"
#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "Properties/OrvexEnumerations.h"
#include "PropertyNames.h"
#include "Streams/StreamSettings.h"

namespace OrvexAdapter {

using namespace CameraInterface;
using namespace KestrelExceptions;
using Utilities::MutexLock;

namespace {

constexpr std::uint32_t kInvalidFormatError = 9;
constexpr std::chrono::milliseconds kDefaultTimeout{5000};
/// How long to wait for the worker of a device that refuses to cancel and to stop.
constexpr std::chrono::milliseconds kEndingPatience{2000};

const char* const kVideoText = "Video";
const char* const kStillText = "Still";

} // namespace

OrvexStream::OrvexStream(OrvexCamera& camera) : m_Camera(&camera), m_Statistics(std::make_shared<StreamStatistics>()) {}

OrvexStream::~OrvexStream() {
    OrvexStream::forceStop();
    const MutexLock lock(m_ControlMutex);
    // The camera has closed its handle meanwhile, which may have released the worker.
    if (m_LetGo && !m_LetGo->joinWithin(kEndingPatience)) {
        m_LetGo->detach();
    }
}

bool OrvexStream::isStreaming() {
    return m_Streaming;
}

void OrvexStream::startStream() {
    const MutexLock lock(m_ControlMutex);
    if (m_Streaming) {
        return;
    }
    m_Snapshot = buildStreamSettings(*m_Camera, QUILL_HERE);
    m_FrameFormat = m_Snapshot.format;
    const std::shared_ptr<CaptureRun> run = makeRun(getStreamType());
    describeFramesOfRun(run->mode());
    clearLeftOver(run->handle());
    startCapture(*run);
    startWorker(run);
}

void OrvexStream::describeFrames() {
    const MutexLock lock(m_ControlMutex);
    if (m_Streaming) { // otherwise the next start does it
        frames().describe(readDescription(currentRun()->mode()));
    }
}

FrameDescription OrvexStream::readDescription(StreamMode mode) {
    const auto text = [this](const char* name) { return m_Camera->getProperty(name).getValue(); };
    const auto number = [&](const char* name) -> std::optional<double> {
        try {
            double value = 0;
            Base::extractFirstWord(text(name), value);
            return value;
        } catch (const std::exception&) {
            return std::nullopt;
        }
    };
    FrameDescription description;
    description.layout = getImageFormatFromColorFormat(text(PropertyNames::kColorFormat), QUILL_HERE);
    description.littleEndian = Endianness().toValue(text(PropertyNames::kEndianness));
    if (mode == StreamMode::Still) { // fixed since the start of the run
        description.exposureMs = m_Snapshot.exposure;
        description.gain = m_Snapshot.gain;
    } else {
        description.exposureMs = number(PropertyNames::kVideoExposure);
        description.gain = number(PropertyNames::kVideoGain);
    }
    return description;
}

void OrvexStream::describeFramesOfRun(StreamMode mode) {
    try {
        frames().describe(frames().hasQueues() ? std::optional(readDescription(mode)) : std::nullopt);
    } catch (const std::exception&) {
        raise<KestrelException>(QUILL_HERE, Errors::kInvalidStreamSettings);
    }
}

std::shared_ptr<CaptureRun> OrvexStream::makeRun(StreamMode mode) {
    ORVEX_IMAGE_FORMAT lastFormat{};
    lastFormat.size = sizeof lastFormat;
    if (const std::shared_ptr<CaptureRun> last = currentRun()) {
        lastFormat = last->imageFormat();
    }
    try {
        return std::make_shared<CaptureRun>(mode, m_Camera->getHandle(), m_Snapshot, frames().makeRun(), m_Statistics,
                                            lastFormat);
    } catch (const std::exception&) {
        raise<KestrelException_Stream>(QUILL_HERE, Errors::kStreamMemory, operationsOf(mode).word);
    }
}

void OrvexStream::clearLeftOver(void* handle) {
    if (m_Running && m_Running->second == handle) {
        endCapture(m_Running->first, handle);
    }
    m_Running.reset();
    for (const StreamMode mode : {StreamMode::Video, StreamMode::Still}) {
        callbackIdOf(mode).remove(operationsOf(mode), handle);
    }
}

void OrvexStream::startCapture(const CaptureRun& run) {
    const ModeOperations& mode = operationsOf(run.mode());
    if (!callbackIdOf(run.mode()).add(mode, run.handle(), m_Statistics)) {
        raise<KestrelException>(QUILL_HERE, Errors::kRegisterStreamCallback);
    }
    const bool started = run.mode() == StreamMode::Video ? startVideo(run.handle()) : startStill(run.handle());
    if (!started) {
        raise<KestrelException_Stream>(QUILL_HERE, Errors::kStartStream, mode.word);
    }
    m_Running.emplace(run.mode(), run.handle());
}

bool OrvexStream::startVideo(void* handle) {
    const OrvexApi& api = orvexApi();
    ORVEX_FRAME_FORMAT present{};
    float frameRate = 0;
    return api.sdkGetFormat(handle, &present, &frameRate) != 0 &&
           api.sdkSetFormat(handle, &m_FrameFormat, frameRate) != 0 && api.sdkStreamVideoControl(handle, 1, 0) != 0;
}

bool OrvexStream::startStill(void* handle) {
    const bool started = orvexApi().sdkEnableStillMode(handle, &m_Snapshot) != 0;
    if (!started && orvexApi().sdkGetLastErrorForCamera(handle) == kInvalidFormatError) {
        raise<KestrelException>(QUILL_HERE, Errors::kInvalidStreamFormat);
    }
    return started;
}

void OrvexStream::startWorker(const std::shared_ptr<CaptureRun>& run) {
    try {
        run->start();
    } catch (const std::exception&) { // no thread can be started
        endCapture(run->mode(), run->handle());
        raise<KestrelException_Stream>(QUILL_HERE, Errors::kStartStream, operationsOf(run->mode()).word);
    }
    const MutexLock lock(m_RunMutex);
    m_Run = run;
    m_Streaming = true;
}

void OrvexStream::stopStream() {
    const MutexLock lock(m_ControlMutex);
    if (!m_Streaming) {
        return;
    }
    const std::shared_ptr<CaptureRun> run = currentRun();
    run->requestStop();
    const Ending ending = endCapture(run->mode(), run->handle());
    if (!ending.stopped) {
        raise<KestrelException_Stream>(QUILL_HERE, Errors::kStopStream, operationsOf(run->mode()).word);
    }
    if (!ending.removed) {
        raise<KestrelException>(QUILL_HERE, Errors::kRemoveStreamCallback);
    }
    run->frames().handover().close(FrameHandover::Outcome::Stopped);
    run->join(); // the last frame comes before the end
    endRun(*run);
}

void OrvexStream::forceStop() noexcept {
    const MutexLock lock(m_ControlMutex);
    if (!m_Streaming) {
        return;
    }
    const std::shared_ptr<CaptureRun> run = currentRun();
    run->requestStop();
    const Ending ending = endCapture(run->mode(), run->handle());
    run->frames().handover().close(FrameHandover::Outcome::Stopped);
    if (ending.released) {
        run->join();
    } else if (!run->joinWithin(kEndingPatience)) {
        letGo(run);
    }
    endRun(*run);
}

void OrvexStream::endRun(CaptureRun& run) {
    run.frames().end(FrameHandover::Outcome::Stopped);
    frames().describe(std::nullopt);
    m_Streaming = false;
}

OrvexStream::Ending OrvexStream::endCapture(StreamMode mode, void* handle) {
    const OrvexApi& api = orvexApi();
    const ModeOperations& operations = operationsOf(mode);
    const bool cancelled = (api.*operations.cancelCapture)(handle) != 0;
    const bool stopped = operations.stop(api, handle) != 0;
    if (stopped) {
        m_Running.reset();
    }
    return {cancelled || stopped, stopped, callbackIdOf(mode).remove(operations, handle)};
}

void OrvexStream::letGo(const std::shared_ptr<CaptureRun>& run) {
    if (m_LetGo) {
        m_LetGo->detach();
    }
    m_LetGo = run;
}

FrameCallbackId& OrvexStream::callbackIdOf(StreamMode mode) {
    return mode == StreamMode::Video ? m_VideoCallbackId : m_StillCallbackId;
}

std::shared_ptr<CaptureRun> OrvexStream::currentRun() {
    const MutexLock lock(m_RunMutex);
    return m_Run;
}

StreamMode OrvexStream::getStreamType() {
    const std::string mode = m_Camera->getProperty(PropertyNames::kStreamingMode).getValue();
    if (mode == kVideoText) {
        return StreamMode::Video;
    }
    if (mode == kStillText) {
        return StreamMode::Still;
    }
    raise<KestrelException_InvalidArgument>(QUILL_HERE, Errors::kArgumentUnhandled, "mode");
}

void OrvexStream::setStreamType(StreamMode mode) {
    m_Camera->getProperty(PropertyNames::kStreamingMode).setValue(mode == StreamMode::Still ? kStillText : kVideoText);
}

std::vector<unsigned char> OrvexStream::getImageData() {
    const std::shared_ptr<CaptureRun> run = currentRun();
    if (!run) {
        raiseWithoutFrame(StreamMode::Video, FrameHandover::Outcome::Stopped);
    }
    FrameHandover::Request request(run->frames().handover());
    const FrameHandover::Outcome outcome = waitForFrame(*run, request);
    if (outcome != FrameHandover::Outcome::Frame) {
        raiseWithoutFrame(run->mode(), outcome);
    }
    m_Statistics->incrementFrameCount(STREAM_TYPE::Delivered);
    return request.takeImageData();
}

FrameHandover::Outcome OrvexStream::waitForFrame(const CaptureRun& run, FrameHandover::Request& request) {
    if (const auto timeout = run.timeout()) {
        return request.wait(*timeout);
    }
    std::chrono::nanoseconds bound = kDefaultTimeout;
    FrameHandover::Outcome outcome = request.wait(bound);
    // A long exposure extends the wait, and its settings may have changed meanwhile.
    while (outcome == FrameHandover::Outcome::TimedOut &&
           kDefaultTimeout + getFrameTime(*m_Camera, run.mode()) > bound) {
        bound = kDefaultTimeout + getFrameTime(*m_Camera, run.mode());
        outcome = request.wait(bound);
    }
    return outcome;
}

void OrvexStream::raiseWithoutFrame(StreamMode mode, FrameHandover::Outcome outcome) {
    const char* const word = operationsOf(mode).word;
    if (m_Camera->isRetired()) {
        raise<KestrelException_Stream>(QUILL_HERE, Errors::kStreamCameraGone, word);
    }
    switch (outcome) {
    case FrameHandover::Outcome::TimedOut:
        raise<KestrelException_Stream>(QUILL_HERE, Errors::kStreamTimeout, word);
    case FrameHandover::Outcome::CaptureEnded:
        raise<KestrelException_Stream>(QUILL_HERE, Errors::kStreamEnded, word);
    case FrameHandover::Outcome::OutOfMemory:
        raise<KestrelException_Stream>(QUILL_HERE, Errors::kStreamOutOfMemory, word);
    default:
        raise<KestrelException_Stream>(QUILL_HERE, Errors::kStreamStopped, word);
    }
}

FrameGeometry OrvexStream::getImageFormat() {
    const std::shared_ptr<CaptureRun> run = currentRun();
    const ORVEX_IMAGE_FORMAT format = run ? run->imageFormat() : ORVEX_IMAGE_FORMAT{};
    return {format.height, format.width, getBitsPerPixel(format.pixelFormat)};
}

StreamStatistics& OrvexStream::getStreamStatistics() {
    return *m_Statistics;
}

} // namespace OrvexAdapter
