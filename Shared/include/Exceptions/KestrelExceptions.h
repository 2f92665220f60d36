// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "../Export.h"
#include "KestrelException.h"

namespace KestrelExceptions {

/// A failure of one camera.
class QUILL_API KestrelException_Camera : public KestrelException {
public:
    KestrelException_Camera(const std::string& errorName, const std::string& file, int line,
                            const std::string& description, const std::string& serialNumber);
    KestrelException_Camera(const KestrelException_Camera&) = default;
    KestrelException_Camera& operator=(const KestrelException_Camera&) = default;
    ~KestrelException_Camera() override;

protected:
    void buildErrorDescription() override;

    std::string m_SerialNumber;
};

/// A change of a camera's state that the current state does not allow.
class QUILL_API KestrelException_CameraState : public KestrelException {
public:
    KestrelException_CameraState(const std::string& errorName, const std::string& file, int line,
                                 const std::string& description, const std::string& fromState,
                                 const std::string& toState);
    KestrelException_CameraState(const KestrelException_CameraState&) = default;
    KestrelException_CameraState& operator=(const KestrelException_CameraState&) = default;
    ~KestrelException_CameraState() override;

protected:
    void buildErrorDescription() override;

    std::string m_FromState;
    std::string m_ToState;
};

/// A failure of one camera function.
class QUILL_API KestrelException_Function : public KestrelException {
public:
    KestrelException_Function(const std::string& errorName, const std::string& file, int line,
                              const std::string& description, const std::string& functionName);
    KestrelException_Function(const KestrelException_Function&) = default;
    KestrelException_Function& operator=(const KestrelException_Function&) = default;
    ~KestrelException_Function() override;

protected:
    void buildErrorDescription() override;

    std::string m_FunctionName;
};

/// An argument that an operation does not accept.
class QUILL_API KestrelException_InvalidArgument : public KestrelException {
public:
    KestrelException_InvalidArgument(const std::string& errorName, const std::string& file, int line,
                                     const std::string& description, const std::string& argumentName);
    KestrelException_InvalidArgument(const KestrelException_InvalidArgument&) = default;
    KestrelException_InvalidArgument& operator=(const KestrelException_InvalidArgument&) = default;
    ~KestrelException_InvalidArgument() override;

protected:
    void buildErrorDescription() override;

    std::string m_ArgumentName;
};

/// A failure of one camera property.
class QUILL_API KestrelException_Property : public KestrelException {
public:
    KestrelException_Property(const std::string& errorName, const std::string& file, int line,
                              const std::string& description, const std::string& propertyName);
    KestrelException_Property(const KestrelException_Property&) = default;
    KestrelException_Property& operator=(const KestrelException_Property&) = default;
    ~KestrelException_Property() override;

protected:
    void buildErrorDescription() override;

    std::string m_PropertyName;
};

/// A conflict between two properties.
class QUILL_API KestrelException_PropertyComparison : public KestrelException {
public:
    KestrelException_PropertyComparison(const std::string& errorName, const std::string& file, int line,
                                        const std::string& description, const std::string& firstProperty,
                                        const std::string& secondProperty);
    KestrelException_PropertyComparison(const KestrelException_PropertyComparison&) = default;
    KestrelException_PropertyComparison& operator=(const KestrelException_PropertyComparison&) = default;
    ~KestrelException_PropertyComparison() override;

protected:
    void buildErrorDescription() override;

    std::string m_FirstProperty;
    std::string m_SecondProperty;
};

/// A failure of a camera's stream; the stream type is "video" or "still".
class QUILL_API KestrelException_Stream : public KestrelException {
public:
    KestrelException_Stream(const std::string& errorName, const std::string& file, int line,
                            const std::string& description, const std::string& streamType);
    KestrelException_Stream(const KestrelException_Stream&) = default;
    KestrelException_Stream& operator=(const KestrelException_Stream&) = default;
    ~KestrelException_Stream() override;

protected:
    void buildErrorDescription() override;

    std::string m_StreamType;
};

} // namespace KestrelExceptions
