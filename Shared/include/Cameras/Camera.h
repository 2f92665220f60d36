// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "../Exceptions/SourceLocation.h"
#include "../Export.h"
#include "../Functions/Function.h"
#include "../Imaging/Conversion.h"
#include "../Imaging/Image.h"
#include "../Properties/Property.h"
#include "../Streams/FrameQueue.h"
#include "../Streams/Stream.h"
#include "../Utilities/Mutex.h"
#include "CameraKind.h"
#include "CameraState.h"

/// Cameras, and what they offer: properties, functions and streams.
namespace CameraInterface {

class CameraList;
class FrameDispatcher;
class PresentCameras;

/// A camera, independent of how it is reached, and the process-wide list of cameras.
///
/// The static operations are thread-safe. initialiseWorkspace() fills the list and starts two threads that keep it up
/// to date: one removes cameras that went away, every 500 ms, the other adds cameras that arrived, every 5000 ms. Each
/// reports to the application through its callback. Inside such a callback the list is up to date and may be used.
/// initialiseWorkspace(), unitialisedWorkpace() and the two registrations throw a KestrelException "WouldWaitForItself"
/// there, because they wait for the callback's own thread. A callback must not wait for another thread that makes one
/// of these calls.
///
/// A reference from getCamera() stays usable until unitialisedWorkpace(). A camera that leaves the list earlier is
/// retired: its stream is stopped, connect() throws "CameraConnection", and its other operations have no effect or
/// throw. The last 64 retired cameras are kept; the oldest is destroyed when one more retires.
///
/// A camera is identified by its kind and serial number: a camera that restarts as another kind (USB3 Vision or not)
/// leaves the list, with its callback, and is added as a new camera.
///
/// A forked child begins with an empty list and no watching threads. The parent's cameras stay with the parent: the
/// child must not use a reference to them. Images may be used and converted in both processes.
///
/// The operations of one camera are reentrant: one thread at a time uses a camera.
class QUILL_API Camera {
public:
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;
    virtual ~Camera();

    // --- The camera list ---

    /// Adds every attached camera and starts watching for changes. Further calls only add new cameras.
    /// @throws std::system_error  a thread cannot be started; a further call starts what does not run yet
    static void initialiseWorkspace();
    /// Clears both callbacks, stops watching and destroys all cameras. When it returns, none of the library's threads
    /// runs, except a thread that a device holds in a capture although the library cancelled, stopped and closed it.
    static void unitialisedWorkpace();
    /// Returns the model name of every listed camera, by serial number. Omits cameras whose name cannot be read.
    static std::map<std::string, std::string> getCamerasList();
    /// Returns the listed camera that has the serial number.
    /// @throws KestrelException_Camera "CameraNotFound"
    static Camera& getCamera(const std::string& serialNumber);
    /// Searches for cameras now and adds the new ones.
    /// @return the number of cameras added
    static unsigned int searchForNewCameras();
    /// Replaces the function that is called after the watching thread has added cameras; an empty function clears it.
    /// When the call returns, the former callback no longer runs.
    static void registerNewConnectCallback(std::function<void()> callback);
    /// Replaces the function that is called, with model name and serial number, for every camera that went away.
    /// Otherwise like registerNewConnectCallback().
    static void registerDisconnectCallback(std::function<void(const std::string&, const std::string&)> callback);
    /// Returns the failures of the last enumeration: adapter name to reason; empty if all succeeded. An adapter that
    /// fails contributes no cameras and affects neither the other adapters nor the application.
    static std::map<std::string, std::string> getEnumerationFailures();

    // --- Image stream ---

    /// Whether the stream is running; false for a camera without a stream.
    virtual bool isStreaming();
    /// Starts the stream with the present settings of the camera's properties.
    /// @throws KestrelException "StreamUnsupported"  the camera has no stream
    /// @throws KestrelException "InvalidStreamSettings"  a property that the stream needs cannot be read
    /// @throws KestrelException "InvalidStreamFormat", "RegisterStreamCallback"
    /// @throws KestrelException_Stream "StartStream"  the camera refuses, or memory or a thread is not available
    virtual void startStream();
    /// Stops the stream. This is a barrier: when it returns, no frame is captured any more. May be called while another
    /// thread waits in getImage(), which then throws "StreamStopped".
    /// @throws KestrelException "StreamUnsupported"  the camera has no stream
    /// @throws KestrelException_Stream "StopStream", KestrelException "RemoveStreamCallback"  the camera refuses; the
    ///     stream still counts as running
    virtual void stopStream();
    /// Returns the statistics of the stream.
    /// @throws KestrelException "StreamUnsupported"  the camera has no stream
    virtual StreamStatistics& getStreamStatistics();

    /// Returns the next image. If the stream does not run, starts it for this image and stops it again. The wait is
    /// bounded by the property "Timeout" in milliseconds; a negative one means 5 s plus the frame's own time (video:
    /// exposure and frame period; still: exposure and exposure delay). An incomplete frame never becomes an image: it
    /// is counted, and the wait continues.
    /// @throws KestrelException_Stream "StreamTimeout", "StreamStopped"; what startStream() and stopStream() throw
    /// @throws KestrelException_Property  a property that describes the image cannot be read
    /// @throws std::runtime_error "Method not implemented."  a camera in USB3 Vision mode
    virtual std::unique_ptr<Imaging::Image> getImage() = 0;
    /// Returns a new image in another format; see Imaging::convertImage(). A camera that demosaics its own images reads
    /// its properties first.
    /// @throws KestrelException_Property  such a camera does not answer, or was never connected
    virtual std::unique_ptr<Imaging::Image> convertImage(const std::unique_ptr<Imaging::Image>& image,
                                                         Imaging::IMAGE_FORMAT format);

    // --- Every frame ---

    /// Opens a queue that gets every frame from now on, in this run of the stream and in later ones. Does not start the
    /// stream.
    /// @throws KestrelException "StreamUnsupported"  the camera has no stream
    /// @throws KestrelException_InvalidArgument "ArgumentUnhandled"  the capacity is out of range
    /// @throws KestrelException_Property  the stream runs, and a property that describes its frames cannot be read
    FrameQueue openFrameQueue(const FrameQueueSettings& settings = {});
    /// Replaces the function that is called for every frame, on a thread of its own, from a queue with these settings.
    /// An empty function clears it. When the call returns, the former function no longer runs and is destroyed. The
    /// function may use the camera like any other thread, but must not wait for a thread that makes this call or ends
    /// the workspace; nor for an image if its queue holds the stream back.
    /// Exceptions that it throws are dropped. Once the camera leaves the list, it is no longer called.
    /// @throws KestrelException "WouldWaitForItself"  called by such a function, as are initialiseWorkspace(),
    ///     unitialisedWorkpace() and the two registrations; what openFrameQueue() throws: then the former function
    ///     stays
    /// @throws std::system_error  the thread cannot be started; then there is no function
    void setFrameCallback(std::function<void(const Frame&)> callback, const FrameQueueSettings& settings = {});
    /// Returns what became of all frames that this object captured: "Captured" is the sum of "Delivered", "Turned
    /// Away", "Unused" and of the losses before any queue. Then, for each open queue, how many of the delivered frames
    /// it dropped. While no queue is open, the camera is not asked for what it dropped itself.
    /// @throws KestrelException "StreamUnsupported"  the camera has no stream
    std::vector<StreamCounter> getStreamCounters();

    /// Returns descriptive key/value pairs, read from the camera's properties; empty before the first connection.
    virtual std::map<std::string, std::string> getCameraInfo() = 0;
    /// The identity of the camera in the list.
    virtual std::string getSerialNumber() = 0;
    virtual std::string getModelName() = 0;
    /// What the camera is. Thread-safe; does not ask the camera, and does not change.
    CameraKind getKind() const { return m_Kind; }
    /// Whether a connected camera still answers. For a camera that is not connected, the result depends on its kind.
    virtual bool isCameraAlive() = 0;

    // --- Connection ---

    /// Opens the camera and builds its properties and functions. Does nothing if the camera is connected.
    /// @throws KestrelException_Camera "CameraConnection"  the camera cannot be opened, or has left the list. A
    ///     suspended camera that cannot be resumed because it is gone also leaves the list
    virtual void connect() = 0;
    /// Stops the stream and closes the camera. Does nothing if the camera is disconnected.
    /// @throws KestrelException_CameraState "CameraState"  the camera is suspended; what stopStream() throws
    virtual void disconnect() = 0;
    /// Stops the stream of a connected camera and suspends the camera.
    /// @throws KestrelException_CameraState "CameraState"  the camera is not connected; what stopStream() throws
    virtual void suspend() = 0;

    /// Returns the state. A camera that has left the list keeps its last state.
    CameraState getState();
    bool isConnected() const;

    // --- Properties and functions, by name ---

    /// @throws KestrelException_Property "PropertyUnsupported"
    Property& getProperty(const std::string& name);
    bool isPropertySupported(const std::string& name);
    /// Returns the names of all properties, in ascending byte-wise order.
    std::vector<std::string> getSupportedProperties();
    /// @throws KestrelException_Function "FunctionUnsupported"
    Function& getFunction(std::string name);
    /// Returns the names of all functions, in ascending byte-wise order.
    std::vector<std::string> getSupportedFunctions();
    /// Performs a function and returns its results.
    /// @throws KestrelException_Function "FunctionUnsupported", and what Function::perform() throws
    std::vector<std::string> perform(const std::string& name, std::vector<std::string>& parameters);

    /// Replaces the function that is called, on the writing thread, after a property changed; also for properties of
    /// later connections. An empty function clears it.
    ///
    /// Before it is called for the property that was written, it is called for each property whose range, choices or
    /// availability may have changed with it: for "Framerate" with "Video Clock Speed" and "Video Tap Configuration",
    /// and the reverse; for those that stand for one of two properties, such as "Exposure", with "Streaming Mode".
    /// Limits and choices are asked of the camera at every call, so that the function gets the new ones. A write
    /// through "Exposure" is reported for the property that it stands for. Starting and stopping the stream, which
    /// changes what can be written, is not reported.
    void registerPropertyChangeCallback(std::function<void(Property&)> callback);

protected:
    virtual void buildProperties() = 0;
    virtual void buildFunctions() = 0;

    explicit Camera(CameraKind kind = CameraKind::Unknown);

    static bool isCameraInList(const std::string& serialNumber, const std::vector<std::unique_ptr<Camera>>& cameras);
    static void runNewConnectCallback();
    static void runDisconnectCallback(const std::string& modelName, const std::string& serialNumber);

    /// Returns the word for a state: "connected", "disconnected" or "suspended"; empty for any other number.
    std::string getStateString(CameraState state);
    /// Whether the present state may change to @p target.
    bool validateState(CameraState target) const;
    /// The guard that every connect(), disconnect() and suspend() starts with.
    /// @throws KestrelException_CameraState "CameraState"  the transition is not allowed
    /// @throws KestrelException_Camera "CameraConnection"  the camera is retired and @p target is Connected
    void requireTransition(CameraState target, const KestrelExceptions::SourceLocation& here);
    /// Ends a connect() that finds nothing to open. A suspended camera stays suspended but is no longer kept: if no
    /// camera of its kind has its serial number, the watching thread makes it disconnected and removes it.
    /// @throws KestrelException_Camera "CameraConnection"  always
    /// @param reason  further sentences for the exception
    [[noreturn]] void refuseConnection(const KestrelExceptions::SourceLocation& here, const std::string& reason = "");
    /// Whether the camera has left the list. It does not come back as this object.
    bool isRetired() const;
    /// Marks that a connected camera is being closed, so that the watching thread does not take its silence for a loss.
    class Closing {
    public:
        explicit Closing(Camera& camera) : m_Camera(camera) { ++camera.m_ClosingSteps; }
        Closing(const Closing&) = delete;
        Closing& operator=(const Closing&) = delete;
        ~Closing() { ++m_Camera.m_ClosingSteps; }

    private:
        Camera& m_Camera;
    };
    /// Passes the property-change callback to every property. Called after they are built.
    void updatePropertyChangeCallback();
    /// Says why the stream will end, or does not run.
    void expectStreamEnd(FrameQueueStatus reason);
    /// Tells properties, such as "Width", which property holds their increment. Called after they are built.
    void connectIncrements();
    /// Lets the stream find out again what frames are described by, whenever the property changes while queues are
    /// open.
    void describeFramesAfterChangeOf(const std::string& propertyName);

    // Destroyed from the last to the first.
    std::atomic<CameraState> m_State{CameraState::Disconnected}; // read by the watching thread
    std::map<std::string, std::unique_ptr<Property>> m_Properties;
    std::map<std::string, std::unique_ptr<Function>> m_Functions;
    std::unique_ptr<Stream> m_Stream; // empty on a camera without one
    std::function<void(Property&)> m_PropertyChangeCallback;

private:
    friend class CameraList;

    static std::vector<std::unique_ptr<Camera>> getListOfCameras();
    static void addNewCamerasToList(std::vector<std::unique_ptr<Camera>> cameras);
    static void removeCameraFromList(const std::string& serialNumber);
    static void removeAllCamerasFromList();
    static int removeInactiveCamerasFromList();
    static bool hasVanished(Camera& camera, const std::string& serialNumber, const PresentCameras& present);
    static void removeWatchdogs();
    static bool callbackWatchdogNewConnect();
    static bool callbackWatchdogDisconnect();

    Stream& requireStream();
    /// Stops the stream of a retired camera.
    void stopForGood() noexcept;
    /// Exchanges the dispatcher; destroys the former one, without a lock, before it returns.
    void setFrameDispatcher(std::unique_ptr<FrameDispatcher> dispatcher);
    /// Makes a suspended camera that could not be resumed disconnected.
    void endFailedResumption();

    const CameraKind m_Kind;
    std::atomic<unsigned int> m_ClosingSteps{0}; // odd while the camera is being closed
    std::atomic<bool> m_Retired{false};          // set once, when the camera leaves the list
    std::atomic<bool> m_ResumptionFailed{false}; // the last connect() of a suspended camera

    Utilities::Mutex m_FrameDispatcherMutex; // guards the pointer, which the watching thread clears
    std::unique_ptr<FrameDispatcher> m_FrameDispatcher QUILL_GUARDED_BY(m_FrameDispatcherMutex);
};

} // namespace CameraInterface
