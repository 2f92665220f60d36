// SPDX-License-Identifier: Apache-2.0

#include "ReceivingRun.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace GenICamAdapter {

using namespace CameraInterface;
using Utilities::MutexLock;

namespace {

/// Frames that Aravis may fill before the worker takes the first: as many as fit this memory, but at least a few.
constexpr std::size_t kBufferMemory = std::size_t{64} << 20;
constexpr std::size_t kFewestBuffers = 5;
/// Aravis objects that wait for their memory to come back from a consumer.
constexpr std::size_t kMostIdle = 256;
/// Holds a burst of frames at 10 GigE; the kernel grants at most its limit.
constexpr int kSocketBufferBytes = 8 << 20;
/// How long an incomplete frame waits for a packet. A busy computer, or camera, needs more than Aravis' 0.1 s. Where no
/// packet is sent again, waiting only costs: every packet that comes is compared with all frames that wait.
constexpr std::chrono::duration<double> kShortestPatience{0.1};
constexpr std::chrono::duration<double> kLongestPatience{0.5};
/// A packet that stays away is requested again after that time; fast repetitions reach the limit before a busy camera
/// has answered the first.
constexpr guint kPauseBetweenRequestsUs = 40000;
/// Requests for packets of a frame, in proportion to its packets.
constexpr double kMostRequestsPerPacket = 0.5;
/// A larger gap between two numbers is a camera that counts anew.
constexpr std::uint64_t kLargestGap = 1U << 15;
constexpr std::uint64_t kLargestShortId = 0xFFFF;

} // namespace

ReceivingRun::ReceivingRun(std::shared_ptr<Device> device, const RunSettings& settings,
                           std::shared_ptr<FrameRun> frames, std::shared_ptr<StreamStatistics> statistics)
    : m_Device(std::move(device)), m_Settings(settings), m_Frames(std::move(frames)),
      m_Statistics(std::move(statistics)) {}

ReceivingRun::~ReceivingRun() {
    stop();
}

void ReceivingRun::start() {
    Failure failure;
    m_Device->prepareStream();
    if (m_Device->isOnNetwork()) {
        auto* const network = ARV_GV_DEVICE(m_Device->get());
        arv_gv_device_set_packet_size_adjustment(network, ARV_GV_PACKET_SIZE_ADJUSTMENT_ON_FAILURE_ONCE);
        arv_gv_device_set_stream_options(
            network, m_Settings.packetSocket ? ARV_GV_STREAM_OPTION_NONE : ARV_GV_STREAM_OPTION_PACKET_SOCKET_DISABLED);
    }
    m_Stream.reset(arv_device_create_stream(m_Device->get(), onEvent, this, failure.out()));
    if (!m_Stream) {
        throw std::runtime_error(failure.text());
    }
    const std::size_t buffers =
        std::clamp(kBufferMemory / std::max<std::size_t>(m_Settings.payloadBytes, 1), kFewestBuffers, kMostBuffers);
    if (m_Device->isOnNetwork()) {
        configureNetwork(buffers);
    }
    for (std::size_t i = 0; i < buffers; ++i) {
        offer(m_Frames->takeBuffer(m_Settings.payloadBytes));
    }
    m_Frames->begin();
    m_Thread = std::thread([this] { runThread(); });
}

void ReceivingRun::configureNetwork(std::size_t buffers) {
    // The frames behind an incomplete one need buffers while it waits for its packets.
    const double framesBehind = static_cast<double>(buffers) / 2;
    const double patienceSeconds =
        m_Settings.framesPerSecond > 0
            ? std::clamp(framesBehind / m_Settings.framesPerSecond, kShortestPatience.count(), kLongestPatience.count())
            : kShortestPatience.count();
    setPatience(patienceSeconds);
    g_object_set(m_Stream.get(), "packet-timeout", kPauseBetweenRequestsUs, "packet-request-ratio",
                 kMostRequestsPerPacket, "socket-buffer", ARV_GV_STREAM_SOCKET_BUFFER_FIXED, "socket-buffer-size",
                 kSocketBufferBytes, nullptr);
    growSocketBuffer();
}

void ReceivingRun::setPatience(double seconds) {
    g_object_set(m_Stream.get(), "frame-retention", static_cast<guint>(seconds * 1e6), nullptr);
}

void ReceivingRun::growSocketBuffer() {
    // Aravis enlarges the buffer with the first packet, when part of the first frame is lost already.
    const std::uint16_t port = arv_gv_stream_get_port(ARV_GV_STREAM(m_Stream.get()));
    std::error_code failure;
    std::filesystem::directory_iterator entry("/proc/self/fd", failure);
    for (; !failure && entry != std::filesystem::directory_iterator(); entry.increment(failure)) {
        const std::string name = entry->path().filename();
        int descriptor = -1;
        std::from_chars(name.data(), name.data() + name.size(), descriptor);
        sockaddr_in address{};
        socklen_t size = sizeof address;
        int type = 0;
        socklen_t typeSize = sizeof type;
        if (getsockopt(descriptor, SOL_SOCKET, SO_TYPE, &type, &typeSize) == 0 && type == SOCK_DGRAM &&
            getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size) == 0 &&
            address.sin_family == AF_INET && ntohs(address.sin_port) == port) {
            setsockopt(descriptor, SOL_SOCKET, SO_RCVBUF, &kSocketBufferBytes, sizeof kSocketBufferBytes);
        }
    }
}

void ReceivingRun::stop() noexcept {
    if (m_Thread.joinable()) {
        {
            const MutexLock lock(m_FinishedMutex);
            m_StopRequested = true;
        }
        m_Finished.notify_all();
        m_Frames->letPass();
        m_Thread.join();
    }
    m_Stream.reset(); // joins Aravis' thread, which finishes what it has begun
    m_Idle.clear();
    m_Device.reset();
    const MutexLock lock(m_FinishedMutex);
    m_Frames->lose(FrameLoss::Aborted, std::exchange(m_ArrivalCount, 0));
}

FrameGeometry ReceivingRun::geometry() const {
    const MutexLock lock(m_GeometryMutex);
    return m_Geometry;
}

ReceivingRun::Receptacle& ReceivingRun::receptacleOf(ArvBuffer* buffer) {
    return *static_cast<Receptacle*>(const_cast<void*>(arv_buffer_get_user_data(buffer)));
}

void ReceivingRun::onEvent(void* self, ArvStreamCallbackType type, ArvBuffer* buffer) {
    if (type != ARV_STREAM_CALLBACK_TYPE_BUFFER_DONE || buffer == nullptr) {
        return;
    }
    // Aravis notes by the computer's clock when the first packet came; setting that clock must not give nonsense.
    const gint64 sinceFirst = g_get_real_time() * 1000 - static_cast<gint64>(arv_buffer_get_system_timestamp(buffer));
    const Arrival arrival{Clock::now(), std::max(0.0, static_cast<double>(sinceFirst) * 1e-9)};
    auto& run = *static_cast<ReceivingRun*>(self);
    if (arv_buffer_get_status(buffer) == ARV_BUFFER_STATUS_SUCCESS) {
        run.m_LastWhole = arrival.time;
    }
    {
        const MutexLock lock(run.m_FinishedMutex);
        run.m_Arrivals[(run.m_FirstArrival + run.m_ArrivalCount) % run.m_Arrivals.size()] = arrival;
        ++run.m_ArrivalCount; // at most as many as there are buffers
    }
    run.m_Finished.notify_one();
}

void ReceivingRun::offer(std::vector<unsigned char> bytes) {
    const auto known = m_Idle.find(bytes.data());
    if (known != m_Idle.end()) {
        ObjectPointer<ArvBuffer> buffer = std::move(known->second);
        m_Idle.erase(known);
        receptacleOf(buffer.get()).bytes = std::move(bytes);
        giveBack(std::move(buffer));
        return;
    }
    auto* const receptacle = new Receptacle{std::move(bytes)};
    giveBack(
        ObjectPointer<ArvBuffer>(arv_buffer_new_full(receptacle->bytes.size(), receptacle->bytes.data(), receptacle,
                                                     [](void* content) { delete static_cast<Receptacle*>(content); })));
}

void ReceivingRun::giveBack(ObjectPointer<ArvBuffer> buffer) {
    arv_stream_push_buffer(m_Stream.get(), buffer.release());
}

void ReceivingRun::runThread() noexcept {
    auto why = FrameHandover::Outcome::Stopped;
    try {
        receive();
    } catch (const std::exception&) {
        why = FrameHandover::Outcome::OutOfMemory; // no other exception occurs
    }
    m_Frames->end(why);
}

void ReceivingRun::receive() {
    std::optional<std::size_t> left; // frames that had come when the stop was requested
    while (!left || *left > 0) {
        Arrival arrival;
        {
            MutexLock lock(m_FinishedMutex);
            lock.wait(m_Finished,
                      [this]() QUILL_REQUIRES(m_FinishedMutex) { return m_ArrivalCount > 0 || m_StopRequested; });
            if (m_StopRequested && !left) {
                left = m_ArrivalCount;
                continue;
            }
            arrival = m_Arrivals[m_FirstArrival];
            m_FirstArrival = (m_FirstArrival + 1) % m_Arrivals.size();
            --m_ArrivalCount;
        }
        left = left ? std::optional(*left - 1) : left;
        if (ObjectPointer<ArvBuffer> buffer{arv_stream_pop_buffer(m_Stream.get())}) {
            take(std::move(buffer), arrival);
        }
    }
}

void ReceivingRun::take(ObjectPointer<ArvBuffer> buffer, const Arrival& arrival) {
    m_Statistics->incrementFrameCount(STREAM_TYPE::Received);
    if (m_Device->isOnNetwork()) {
        countPackets();
        if (arv_buffer_get_status(buffer.get()) == ARV_BUFFER_STATUS_TIMEOUT && m_Counted.resentPackets == 0) {
            setPatience(kShortestPatience.count());
        }
    }
    countGap(buffer.get());
    if (countFailure(buffer.get())) {
        m_Statistics->incrementIncompleteFrameCount();
        giveBack(std::move(buffer));
        return;
    }
    const PixelFormat* const format = findPixelFormat(arv_buffer_get_image_pixel_format(buffer.get()));
    if (format == nullptr || format->layout != m_Settings.format->layout) {
        m_Frames->lose(FrameLoss::Undescribed);
        giveBack(std::move(buffer));
        return;
    }
    m_Statistics->setCaptureTime(arrival.receivingSeconds);
    publish(std::move(buffer), *format, arrival);
}

bool ReceivingRun::countFailure(ArvBuffer* buffer) {
    switch (arv_buffer_get_status(buffer)) {
    case ARV_BUFFER_STATUS_SUCCESS:
        break;
    case ARV_BUFFER_STATUS_TIMEOUT:
        m_Frames->lose(FrameLoss::TimedOut);
        return true;
    case ARV_BUFFER_STATUS_MISSING_PACKETS:
    case ARV_BUFFER_STATUS_WRONG_PACKET_ID:
        m_Frames->lose(FrameLoss::MissingPackets);
        return true;
    case ARV_BUFFER_STATUS_SIZE_MISMATCH:
        m_Frames->lose(FrameLoss::SizeMismatch);
        return true;
    default:
        m_Frames->lose(FrameLoss::Aborted);
        return true;
    }
    const ArvBufferPayloadType payload = arv_buffer_get_payload_type(buffer);
    if (payload != ARV_BUFFER_PAYLOAD_TYPE_IMAGE && payload != ARV_BUFFER_PAYLOAD_TYPE_EXTENDED_CHUNK_DATA) {
        m_Frames->lose(FrameLoss::Undescribed);
        return true;
    }
    // A frame that is larger than its buffer is cut off and called a success.
    const PixelFormat* const format = findPixelFormat(arv_buffer_get_image_pixel_format(buffer));
    gint paddingX = 0;
    gint paddingY = 0;
    arv_buffer_get_image_padding(buffer, &paddingX, &paddingY);
    std::size_t size = 0;
    arv_buffer_get_image_data(buffer, &size);
    const gint width = arv_buffer_get_image_width(buffer);
    const gint height = arv_buffer_get_image_height(buffer);
    const bool hasSize = width > 0 && height > 0 && paddingX == 0 && paddingY == 0;
    const auto bytes = format == nullptr || !hasSize
                           ? std::nullopt
                           : format->frameBytes(static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height));
    if (format != nullptr && (!bytes || *bytes > size)) {
        m_Frames->lose(FrameLoss::SizeMismatch);
        return true;
    }
    return false;
}

void ReceivingRun::countGap(ArvBuffer* buffer) {
    const std::uint64_t frameId = arv_buffer_get_frame_id(buffer);
    const std::uint64_t before = std::exchange(receptacleOf(buffer).lastFrameId, frameId);
    if (arv_buffer_get_status(buffer) != ARV_BUFFER_STATUS_SUCCESS && frameId == before) {
        ++m_UnnumberedSince;
        return;
    }
    const std::optional<std::uint64_t> last = std::exchange(m_LastFrameId, frameId);
    const std::uint64_t unnumbered = std::exchange(m_UnnumberedSince, 0);
    m_IsExtendedId = m_IsExtendedId || frameId > kLargestShortId;
    if (!last) {
        return;
    }
    // A number of 16 bits goes from its largest value to 1.
    const bool wraps = !m_IsExtendedId && frameId < *last;
    const std::uint64_t step = wraps ? kLargestShortId - *last + frameId : frameId - *last;
    if (step <= unnumbered + 1 || step > kLargestGap) {
        return;
    }
    // Aravis counts packets for which no buffer was free, not frames, and those of frames that come later.
    const std::uint64_t present = underruns();
    const bool hadNoBuffer = present != std::exchange(m_Counted.underruns, present);
    m_Frames->lose(hadNoBuffer ? FrameLoss::Missed : FrameLoss::DroppedByCamera, step - 1 - unnumbered);
}

std::uint64_t ReceivingRun::underruns() const {
    guint64 completed = 0;
    guint64 failures = 0;
    guint64 underruns = 0;
    arv_stream_get_statistics(m_Stream.get(), &completed, &failures, &underruns);
    return underruns;
}

void ReceivingRun::countPackets() {
    guint64 resent = 0;
    guint64 missing = 0;
    arv_gv_stream_get_statistics(ARV_GV_STREAM(m_Stream.get()), &resent, &missing);
    m_Frames->countPackets(resent - m_Counted.resentPackets, missing - m_Counted.missingPackets);
    m_Counted.resentPackets = resent;
    m_Counted.missingPackets = missing;
}

void ReceivingRun::publish(ObjectPointer<ArvBuffer> buffer, const PixelFormat& format, const Arrival& arrival) {
    const auto width = static_cast<std::uint32_t>(arv_buffer_get_image_width(buffer.get()));
    const auto height = static_cast<std::uint32_t>(arv_buffer_get_image_height(buffer.get()));
    const std::size_t bytes = *format.imageBytes(width, height); // checked before
    std::vector<unsigned char>& receptacle = receptacleOf(buffer.get()).bytes;
    FrameInformation known;
    known.arrival = arrival.time;
    known.cameraNumber = arv_buffer_get_frame_id(buffer.get());
    if (const guint64 timestamp = arv_buffer_get_timestamp(buffer.get()); timestamp != 0) {
        known.cameraTime = std::chrono::nanoseconds(timestamp);
        known.cameraClock = CameraClock::Camera;
    }
    const FrameGeometry geometry{height, width, format.depth};
    {
        const MutexLock lock(m_GeometryMutex);
        m_Geometry = geometry;
    }
    if (format.unpacking != Unpacking::None) {
        std::vector<unsigned char> image = m_Frames->takeBuffer(bytes);
        format.unpack(receptacle.data(), width, height, image.data());
        giveBack(std::move(buffer));
        if (m_Frames->publish(image, bytes, geometry, known)) {
            m_Statistics->setImageDataTransferTime(m_Frames->transferSeconds());
        } else {
            m_Frames->giveBack(std::move(image));
        }
        return;
    }
    const void* const memory = receptacle.data();
    std::vector<unsigned char> image = std::move(receptacle);
    if (!m_Frames->publish(image, bytes, geometry, known)) {
        image.resize(m_Settings.payloadBytes); // a caller that left may have had it cut to the frame's size
        receptacle = std::move(image);
        giveBack(std::move(buffer));
        return;
    }
    m_Statistics->setImageDataTransferTime(m_Frames->transferSeconds());
    if (m_Idle.size() >= kMostIdle) {
        m_Idle.clear(); // their memory was freed meanwhile
    }
    m_Idle[memory] = std::move(buffer);
    offer(m_Frames->takeBuffer(m_Settings.payloadBytes));
}

} // namespace GenICamAdapter
