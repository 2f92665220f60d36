// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "../Export.h"

/// SHA-1 digests (FIPS 180) of data that is given piece by piece, or of whole files.
///
/// Reset() or a new object, then any number of Update() and HashFile(), then Final(), then the digest as often as
/// wanted. After Final() the object must be reset before it hashes again. Reentrant: separate objects are independent.
class QUILL_API CSHA1 {
public:
    /// How a digest is written: its bytes in upper-case hexadecimal or in decimal, with one blank between or without.
    enum REPORT_TYPE { REPORT_HEX_SPACED = 0, REPORT_DECIMAL = 1, REPORT_HEX_COMPACT = 2 };

    CSHA1();
    /// A copy goes on where its source stands.
    CSHA1(const CSHA1& other) = default;
    CSHA1& operator=(const CSHA1& other) = default;
    ~CSHA1();

    void Reset();
    void Update(const unsigned char* data, unsigned int length);
    void Final();

    /// Appends the bytes of a file, whose path is UTF-8 on disk, whatever the locale; does not call Final().
    /// @return whether the whole file was read; after a read error the bytes up to it have been appended
    bool HashFile(const wchar_t* path);

    /// Copies the 20 bytes of the digest; false, and nothing copied, for null.
    bool GetHash(unsigned char* out) const;
    /// Writes the digest as a zero-terminated text of at most 80 characters, the zero included; false, and nothing
    /// written, for null or an unknown type.
    bool ReportHash(wchar_t* out, REPORT_TYPE type) const;
    /// The same into a string, which is unchanged on failure.
    bool ReportHashStl(std::wstring& out, REPORT_TYPE type) const;

private:
    static void Transform(unsigned int* state, const unsigned char* block);

    unsigned int m_State[5];      // the chaining value
    unsigned int m_Count[2];      // bits so far, the low word first
    unsigned char m_Buffer[64]{}; // the block that is not full yet
    unsigned char m_Digest[20]{}; // valid after Final()
};
