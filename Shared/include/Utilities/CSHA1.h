// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "../Export.h"

/// Computes SHA-1 digests (FIPS 180) of data that is passed piece by piece, or of whole files.
///
/// Start with a new object or Reset(); call Update() and HashFile() any number of times, then Final(); then read the
/// digest any number of times. After Final() the object must be reset before it hashes again. Reentrant: separate
/// objects are independent.
class QUILL_API CSHA1 {
public:
    /// The text form of a digest: its bytes in upper-case hexadecimal or in decimal, separated by one blank or not at
    /// all.
    enum REPORT_TYPE { REPORT_HEX_SPACED = 0, REPORT_DECIMAL = 1, REPORT_HEX_COMPACT = 2 };

    CSHA1();
    /// A copy continues from the state of its source.
    CSHA1(const CSHA1& other) = default;
    CSHA1& operator=(const CSHA1& other) = default;
    ~CSHA1();

    void Reset();
    void Update(const unsigned char* data, unsigned int length);
    void Final();

    /// Appends the bytes of a file, whose path is UTF-8 on disk, independent of the locale. Does not call Final().
    /// @return whether the whole file was read; after a read error, the bytes before it have been appended
    bool HashFile(const wchar_t* path);

    /// Copies the 20 bytes of the digest. Returns false and copies nothing if @p out is null.
    bool GetHash(unsigned char* out) const;
    /// Writes the digest as a zero-terminated text of at most 80 characters, including the zero. Returns false and
    /// writes nothing if @p out is null or the type is unknown.
    bool ReportHash(wchar_t* out, REPORT_TYPE type) const;
    /// The same into a string, which does not change on failure.
    bool ReportHashStl(std::wstring& out, REPORT_TYPE type) const;

private:
    static void Transform(unsigned int* state, const unsigned char* block);

    unsigned int m_State[5];      // the chaining value
    unsigned int m_Count[2];      // bits so far, low word first
    unsigned char m_Buffer[64]{}; // the block that is not full yet
    unsigned char m_Digest[20]{}; // valid after Final()
};
