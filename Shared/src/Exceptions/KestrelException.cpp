// SPDX-License-Identifier: Apache-2.0

#include "Exceptions/KestrelException.h"

namespace KestrelExceptions {

KestrelException KestrelException::create(const std::string& errorName, const std::string& file, int line,
                                          const std::string& description) {
    KestrelException exception(errorName, file, line, description);
    exception.init();
    return exception;
}

KestrelException::KestrelException(const std::string& errorName, const std::string& file, int line,
                                   const std::string& description)
    : m_ErrorName(errorName), m_File(file), m_Line(line), m_Description(description) {}

KestrelException::~KestrelException() = default;

const char* KestrelException::what() const noexcept {
    return m_CompleteErrorMessage.c_str();
}

const char* KestrelException::who() const noexcept {
    return m_ErrorName.c_str();
}

const char* KestrelException::where() const noexcept {
    return m_Location.c_str();
}

const char* KestrelException::why() const noexcept {
    return m_ErrorDescription.c_str();
}

void KestrelException::init() {
    buildLocation();
    buildErrorDescription();
    buildCompleteErrorMessage();
}

void KestrelException::buildLocation() {
    if (!m_File.empty()) {
        m_Location = "Thrown in file [" + m_File + "] at line #" + std::to_string(m_Line) + ".";
    }
}

void KestrelException::buildErrorDescription() {
    m_ErrorDescription = m_Description;
}

void KestrelException::buildCompleteErrorMessage() {
    m_CompleteErrorMessage = "Exception: " + m_ErrorName + ".";
    for (const std::string& line : {m_Location, m_ErrorDescription}) {
        if (!line.empty()) {
            m_CompleteErrorMessage += "\n" + line;
        }
    }
}

} // namespace KestrelExceptions
