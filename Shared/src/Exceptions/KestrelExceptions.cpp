// SPDX-License-Identifier: Apache-2.0

#include "Exceptions/KestrelExceptions.h"

namespace KestrelExceptions {

KestrelException_Camera::KestrelException_Camera(const std::string& errorName, const std::string& file, int line,
                                                 const std::string& description, const std::string& serialNumber)
    : KestrelException(errorName, file, line, description), m_SerialNumber(serialNumber) {
    init();
}

KestrelException_Camera::~KestrelException_Camera() = default;

void KestrelException_Camera::buildErrorDescription() {
    m_ErrorDescription = "Error with camera {serial number: " + m_SerialNumber + "}: " + m_Description;
}

KestrelException_CameraState::KestrelException_CameraState(const std::string& errorName, const std::string& file,
                                                           int line, const std::string& description,
                                                           const std::string& fromState, const std::string& toState)
    : KestrelException(errorName, file, line, description), m_FromState(fromState), m_ToState(toState) {
    init();
}

KestrelException_CameraState::~KestrelException_CameraState() = default;

void KestrelException_CameraState::buildErrorDescription() {
    m_ErrorDescription = "Failed to transition from " + m_FromState + " to " + m_ToState + ". " + m_Description;
}

KestrelException_Function::KestrelException_Function(const std::string& errorName, const std::string& file, int line,
                                                     const std::string& description, const std::string& functionName)
    : KestrelException(errorName, file, line, description), m_FunctionName(functionName) {
    init();
}

KestrelException_Function::~KestrelException_Function() = default;

void KestrelException_Function::buildErrorDescription() {
    m_ErrorDescription = "Error with function {" + m_FunctionName + " }: " + m_Description;
}

KestrelException_InvalidArgument::KestrelException_InvalidArgument(const std::string& errorName,
                                                                   const std::string& file, int line,
                                                                   const std::string& description,
                                                                   const std::string& argumentName)
    : KestrelException(errorName, file, line, description), m_ArgumentName(argumentName) {
    init();
}

KestrelException_InvalidArgument::~KestrelException_InvalidArgument() = default;

void KestrelException_InvalidArgument::buildErrorDescription() {
    m_ErrorDescription = "The argument \"" + m_ArgumentName + "\" is invalid. " + m_Description;
}

KestrelException_Property::KestrelException_Property(const std::string& errorName, const std::string& file, int line,
                                                     const std::string& description, const std::string& propertyName)
    : KestrelException(errorName, file, line, description), m_PropertyName(propertyName) {
    init();
}

KestrelException_Property::~KestrelException_Property() = default;

void KestrelException_Property::buildErrorDescription() {
    m_ErrorDescription = "Error with property {" + m_PropertyName + "}: " + m_Description;
}

KestrelException_PropertyComparison::KestrelException_PropertyComparison(const std::string& errorName,
                                                                         const std::string& file, int line,
                                                                         const std::string& description,
                                                                         const std::string& firstProperty,
                                                                         const std::string& secondProperty)
    : KestrelException(errorName, file, line, description), m_FirstProperty(firstProperty),
      m_SecondProperty(secondProperty) {
    init();
}

KestrelException_PropertyComparison::~KestrelException_PropertyComparison() = default;

void KestrelException_PropertyComparison::buildErrorDescription() {
    m_ErrorDescription =
        "Error when comparing properties {" + m_FirstProperty + " & " + m_SecondProperty + " }: " + m_Description;
}

KestrelException_Stream::KestrelException_Stream(const std::string& errorName, const std::string& file, int line,
                                                 const std::string& description, const std::string& streamType)
    : KestrelException(errorName, file, line, description), m_StreamType(streamType) {
    init();
}

KestrelException_Stream::~KestrelException_Stream() = default;

void KestrelException_Stream::buildErrorDescription() {
    m_ErrorDescription = "An error with the " + m_StreamType + " stream occured. " + m_Description;
}

} // namespace KestrelExceptions
