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
#include "../Streams/Stream.h"
#include "CameraState.h"

namespace CameraInterface {

class CameraList;
class PresentCameras;

/// A camera, whatever reaches it, and the process-wide list of cameras.
///
/// The static operations are thread-safe. initialiseWorkspace() fills the list and starts two threads that keep it: one
/// drops cameras that went away, every 500 ms, one adds cameras that arrived, every 5000 ms; each reports to the
/// application through its callback. Inside such a callback the list is up to date and may be used;
/// initialiseWorkspace(), unitialisedWorkpace() and the two registrations are refused there with a KestrelException
/// "WouldWaitForItself", because they wait for the callback's own thread. A callback must not wait for another thread
/// that makes one of these calls.
///
/// A reference from getCamera() stays usable until unitialisedWorkpace(). A camera that leaves the list earlier is
/// retired: its stream is stopped, connecting it is refused with "CameraConnection", and its other operations answer
/// harmlessly or with an exception. The last 64 retired cameras are kept; the oldest is destroyed when one more
/// retires.
///
/// A camera is a kind and a serial number: one that restarts as another kind (USB3 Vision or not) leaves the list, with
/// its callback, and is added as a new camera.
///
/// A forked child begins with an empty list and no watching threads. Cameras of its parent stay the parent's: the child
/// must not use a reference to one. Images may be used and converted in both.
///
/// The operations of one camera are reentrant: one thread at a time uses a camera.
class QUILL_API Camera {
public:
    Camera(const Camera&) = delete;
    Camera& operator=(const Camera&) = delete;
    virtual ~Camera();

    // --- The camera list ---

    /// Adds every camera that is attached and starts watching for changes. Called again, it only adds new cameras.
    /// @throws std::system_error  no thread can be had; called again, it starts what does not run yet
    static void initialiseWorkspace();
    /// Clears both callbacks, stops watching and destroys all cameras. When it returns, none of the library's threads
    /// runs, except one that a device keeps in a capture although it was asked to cancel, to stop and to close.
    static void unitialisedWorkpace();
    /// The model name of every listed camera, by serial number. A camera whose name cannot be read is left out.
    static std::map<std::string, std::string> getCamerasList();
    /// The listed camera of a serial number.
    /// @throws KestrelException_Camera "CameraNotFound"
    static Camera& getCamera(const std::string& serialNumber);
    /// Looks for cameras now and adds the new ones.
    /// @return how many were added
    static unsigned int searchForNewCameras();
    /// Replaces the function that is called when the watching thread has added cameras; an empty one clears it. When
    /// the call returns, the former callback does not run any more.
    static void registerNewConnectCallback(std::function<void()> callback);
    /// Replaces the function that is called, with model name and serial number, for every camera that went away;
    /// otherwise like registerNewConnectCallback().
    static void registerDisconnectCallback(std::function<void(const std::string&, const std::string&)> callback);
    /// Why adapters could not be asked for their cameras the last time: adapter name to reason. Empty when all is well.
    /// An adapter that fails contributes no cameras and stops neither the others nor the application.
    static std::map<std::string, std::string> getEnumerationFailures();

    // --- Image stream ---

    /// Whether images are being delivered; false on a camera that has no stream.
    virtual bool isStreaming();
    /// Starts delivery, with the settings that the camera's properties have now.
    /// @throws KestrelException "StreamUnsupported"  the camera has no stream
    /// @throws KestrelException "InvalidStreamSettings"  properties that a stream needs cannot be read
    /// @throws KestrelException "InvalidStreamFormat", "RegisterStreamCallback"
    /// @throws KestrelException_Stream "StartStream"  the camera refuses, or memory or a thread is not to be had
    virtual void startStream();
    /// Stops delivery; a barrier: no frame is captured any more when it returns. May be called beside a getImage() that
    /// waits, which then ends with "StreamStopped".
    /// @throws KestrelException "StreamUnsupported"  the camera has no stream
    /// @throws KestrelException_Stream "StopStream", KestrelException "RemoveStreamCallback"  the camera refuses; the
    ///     stream counts as running
    virtual void stopStream();
    /// The statistics of the stream.
    /// @throws KestrelException "StreamUnsupported"  the camera has no stream
    virtual StreamStatistics& getStreamStatistics();

    /// The next image; where the stream does not run, it is started for this one image and stopped again. Always ends:
    /// with the image, or after the property "Timeout" (milliseconds; when it is negative after 5 s and the frame's own
    /// time: in video exposure and frame period, in still mode exposure and exposure delay). A frame of which not all
    /// bytes arrive never becomes an image; it is counted, and the wait goes on.
    /// @throws KestrelException_Stream "StreamTimeout", "StreamStopped"; what startStream() and stopStream() throw
    /// @throws KestrelException_Property  a property that describes the image cannot be read
    /// @throws std::runtime_error "Method not implemented."  a camera in USB3 Vision mode
    virtual std::unique_ptr<Imaging::Image> getImage() = 0;
    /// A new image in another format; see Imaging::convertImage(). A camera that demosaics its own images is asked for
    /// its properties first.
    /// @throws KestrelException_Property  it does not answer, or was never connected
    virtual std::unique_ptr<Imaging::Image> convertImage(const std::unique_ptr<Imaging::Image>& image,
                                                         Imaging::IMAGE_FORMAT format);

    /// Descriptive key/value pairs, read from the camera's properties; empty before the first connection.
    virtual std::map<std::string, std::string> getCameraInfo() = 0;
    /// The identity of the camera in the list.
    virtual std::string getSerialNumber() = 0;
    virtual std::string getModelName() = 0;
    /// Whether a connected camera still answers. What it says of one that is not connected depends on its kind.
    virtual bool isCameraAlive() = 0;

    // --- Connection ---

    /// Opens the camera and builds its properties and functions; nothing happens on a connected one.
    /// @throws KestrelException_Camera "CameraConnection"  the camera cannot be opened, or was dropped from the list. A
    ///     suspended camera that cannot be resumed, because it is gone, leaves the list too
    virtual void connect() = 0;
    /// Closes the camera, its stream first; nothing happens on a disconnected one.
    /// @throws KestrelException_CameraState "CameraState"  the camera is suspended; what stopStream() throws
    virtual void disconnect() = 0;
    /// Puts a connected camera aside, its stream stopped.
    /// @throws KestrelException_CameraState "CameraState"  the camera is not connected; what stopStream() throws
    virtual void suspend() = 0;

    /// A camera that was dropped from the list keeps the state that it had.
    CameraState getState();
    bool isConnected() const;

    // --- Properties and functions, by name ---

    /// @throws KestrelException_Property "PropertyUnsupported"
    Property& getProperty(const std::string& name);
    bool isPropertySupported(const std::string& name);
    /// The names of all properties, in ascending byte-wise order.
    std::vector<std::string> getSupportedProperties();
    /// @throws KestrelException_Function "FunctionUnsupported"
    Function& getFunction(std::string name);
    /// The names of all functions, in ascending byte-wise order.
    std::vector<std::string> getSupportedFunctions();
    /// Performs a function and returns its results.
    /// @throws KestrelException_Function "FunctionUnsupported", and what Function::perform() throws
    std::vector<std::string> perform(const std::string& name, std::vector<std::string>& parameters);

    /// Replaces the function that is called, on the writing thread, after a property changed; also for properties of
    /// later connections. An empty one clears it.
    void registerPropertyChangeCallback(std::function<void(Property&)> callback);

protected:
    virtual void buildProperties() = 0;
    virtual void buildFunctions() = 0;

    Camera();

    static bool isCameraInList(const std::string& serialNumber, const std::vector<std::unique_ptr<Camera>>& cameras);
    static void runNewConnectCallback();
    static void runDisconnectCallback(const std::string& modelName, const std::string& serialNumber);

    /// The word for a state: "connected", "disconnected" or "suspended"; empty for any other number.
    std::string getStateString(CameraState state);
    /// Whether the present state may change to @p target.
    bool validateState(CameraState target) const;
    /// The guard that every connect(), disconnect() and suspend() starts with.
    /// @throws KestrelException_CameraState "CameraState"  the transition is not allowed
    /// @throws KestrelException_Camera "CameraConnection"  a retired camera is to be connected
    void requireTransition(CameraState target, const KestrelExceptions::SourceLocation& here);
    /// Ends a connect() that finds nothing to open. A suspended camera stays suspended, but is not held any more: the
    /// watching thread makes it disconnected, and drops it, when no camera of its kind has its serial number.
    /// @throws KestrelException_Camera "CameraConnection"  always
    [[noreturn]] void refuseConnection(const KestrelExceptions::SourceLocation& here);
    /// Whether the camera has left the list: it will not come back under this object.
    bool isRetired() const;
    /// Kept while a connected camera is closed: the watching thread does not take its silence for a loss.
    class Closing {
    public:
        explicit Closing(Camera& camera) : m_Camera(camera) { ++camera.m_ClosingSteps; }
        Closing(const Closing&) = delete;
        Closing& operator=(const Closing&) = delete;
        ~Closing() { ++m_Camera.m_ClosingSteps; }

    private:
        Camera& m_Camera;
    };
    /// Hands the property-change callback to every property. Called after building them.
    void updatePropertyChangeCallback();

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
    /// Tells the stream of a retired camera to stop.
    void stopForGood() noexcept;
    /// Makes a suspended camera that could not be resumed disconnected.
    void endFailedResumption();

    std::atomic<unsigned int> m_ClosingSteps{0}; // odd while the camera is being closed
    std::atomic<bool> m_Retired{false};          // set once, when the camera leaves the list
    std::atomic<bool> m_ResumptionFailed{false}; // the last connect() of a suspended camera
};

} // namespace CameraInterface
