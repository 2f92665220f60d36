// SPDX-License-Identifier: Apache-2.0

#include "ImageFiles/MemoryFile.h"

#include <cerrno>
#include <cstddef>
#include <system_error>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace QuillTool {

namespace {

/// Returns the result of a call of the operating system, which is negative if the call failed.
template <typename Result>
Result requireDone(Result result) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category());
    }
    return result;
}

} // namespace

MemoryFile::MemoryFile() : m_Descriptor(requireDone(::memfd_create("quill-image", MFD_CLOEXEC))) {}

MemoryFile::~MemoryFile() {
    ::close(m_Descriptor);
}

int MemoryFile::duplicate() const {
    return requireDone(::fcntl(m_Descriptor, F_DUPFD_CLOEXEC, 0));
}

std::string MemoryFile::content() const {
    std::string bytes(static_cast<std::size_t>(requireDone(::lseek(m_Descriptor, 0, SEEK_END))), '\0');
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t added =
            requireDone(::pread(m_Descriptor, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done)));
        if (added == 0) {
            bytes.resize(done);
        }
        done += static_cast<std::size_t>(added);
    }
    return bytes;
}

} // namespace QuillTool
