// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>
#include <string>

#include "../Export.h"

/// The exceptions of the library.
namespace KestrelExceptions {

/// Base of every failure that the library reports about cameras, properties, functions and streams.
///
/// An exception is complete when its constructor returns: it composes its texts once, and copies carry them. Objects
/// are plain values; the pointers that the four accessors return are valid as long as the object lives.
class QUILL_API KestrelException : public std::exception {
public:
    /// Makes an exception about no subject in particular.
    /// @param errorName one word for the kind of failure, as who() returns it
    /// @param file path of the source file that throws; empty leaves where() empty
    /// @param line line of the throw in that file
    /// @param description one sentence
    static KestrelException create(const std::string& errorName, const std::string& file, int line,
                                   const std::string& description);

    KestrelException(const KestrelException&) = default;
    KestrelException& operator=(const KestrelException&) = default;
    ~KestrelException() override;

    /// The complete message, of up to three lines: who, where and why.
    const char* what() const noexcept override;
    /// The bare word for the kind of failure, such as "CameraNotFound", for comparisons.
    virtual const char* who() const noexcept;
    /// Source file and line of the throw, or an empty text.
    virtual const char* where() const noexcept;
    /// The subject of the failure and what happened to it.
    virtual const char* why() const noexcept;

protected:
    /// Stores its arguments and composes nothing: a base constructor cannot reach the overrides of its subclass.
    KestrelException(const std::string& errorName, const std::string& file, int line, const std::string& description);

    virtual void buildLocation();
    virtual void buildErrorDescription();
    virtual void buildCompleteErrorMessage();

    /// Composes the three texts. Every subclass constructor calls it last, after storing its own fields.
    void init();

    std::string m_ErrorName;
    std::string m_File;
    int m_Line;
    std::string m_Description;
    std::string m_Location;
    std::string m_ErrorDescription;
    std::string m_CompleteErrorMessage;
};

} // namespace KestrelExceptions
