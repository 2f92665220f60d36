// SPDX-License-Identifier: Apache-2.0

#include "ImageFiles/AtomicFile.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace QuillTool {

namespace {

/// The permission bits that a new file takes from the file it replaces; other mode bits depend on the content.
constexpr mode_t kPermissions = S_IRWXU | S_IRWXG | S_IRWXO;

[[noreturn]] void raiseSystemError(int error) {
    throw std::system_error(error, std::generic_category());
}

/// Calls a transfer until all bytes are through, or it fails or ends.
/// @param transfer  takes the number of bytes that are done; returns those added, or -1 with errno
template <typename Transfer>
std::size_t transferred(std::size_t size, int& error, Transfer transfer) {
    std::size_t done = 0;
    while (error == 0 && done < size) {
        const ssize_t added = transfer(done);
        if (added == 0) {
            break;
        }
        if (added > 0) {
            done += static_cast<std::size_t>(added);
        } else if (errno != EINTR) {
            error = errno;
        }
    }
    return done;
}

} // namespace

AtomicFile::AtomicFile(const std::string& path, Access access)
    : m_Path(path), m_File(nullptr, &std::fclose), m_Receiver(nullptr, &std::fclose) {
    struct stat status = {};
    const bool exists = ::stat(path.c_str(), &status) == 0;
    if (!exists && errno != ENOENT) {
        raiseSystemError(errno);
    }
    if (exists && S_ISDIR(status.st_mode)) {
        raiseSystemError(EISDIR);
    }
    // Renaming does not check the permissions of the replaced file.
    if (exists && ::access(path.c_str(), W_OK) != 0) {
        raiseSystemError(errno);
    }
    if (exists && !S_ISREG(status.st_mode)) {
        openDirectly({std::fopen(path.c_str(), "wbe"), &std::fclose}, access);
    } else {
        if (exists) {
            // Keeps a link and replaces its target.
            m_Path = std::filesystem::canonical(path).string();
        }
        createTemporary();
    }
    if (!m_File) {
        raiseSystemError(errno);
    }
    if (exists && !m_Temporary.empty()) {
        ::fchmod(::fileno(m_File.get()), status.st_mode & kPermissions);
    }
}

AtomicFile::AtomicFile(Access access) : m_File(nullptr, &std::fclose), m_Receiver(nullptr, &std::fclose) {
    static_cast<void>(std::fflush(stdout)); // what was printed before comes first
    const int descriptor = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
    openDirectly({descriptor < 0 ? nullptr : ::fdopen(descriptor, "wb"), &std::fclose}, access);
    if (!m_File) {
        raiseSystemError(errno);
    }
}

AtomicFile::AtomicFile(int descriptor)
    : m_File(::fdopen(descriptor, "w+b"), &std::fclose), m_Receiver(nullptr, &std::fclose) {
    if (!m_File) {
        const int error = errno;
        ::close(descriptor);
        raiseSystemError(error);
    }
}

AtomicFile::~AtomicFile() {
    if (!m_Temporary.empty()) {
        ::unlink(m_Temporary.c_str());
    }
}

void AtomicFile::createTemporary() {
    static std::atomic<unsigned> s_Number{0};
    const std::filesystem::path folder = std::filesystem::path(m_Path).parent_path();
    std::string name;
    do {
        name = folder / (".quill-" + std::to_string(::getpid()) + "-" + std::to_string(s_Number++) + ".part");
        m_File.reset(std::fopen(name.c_str(), "w+bxe"));
    } while (!m_File && errno == EEXIST);
    if (m_File) {
        m_Temporary = name;
    }
}

void AtomicFile::openDirectly(File file, Access access) {
    if (file && access == Access::Random) {
        m_Receiver = std::exchange(file, File(std::tmpfile(), &std::fclose));
    }
    m_File = std::move(file);
}

void AtomicFile::write(const void* bytes, std::size_t size) noexcept {
    if (m_Error == 0 && std::fwrite(bytes, 1, size, m_File.get()) != size) {
        m_Error = errno;
    }
}

std::size_t AtomicFile::writeAt(std::uint64_t position, const void* bytes, std::size_t size) noexcept {
    const std::size_t done = transferred(size, m_Error, [&](std::size_t offset) {
        return ::pwrite(::fileno(m_File.get()), static_cast<const char*>(bytes) + offset, size - offset,
                        static_cast<off_t>(position + offset));
    });
    m_Size = std::max(m_Size, position + done);
    return done;
}

std::size_t AtomicFile::readAt(std::uint64_t position, void* bytes, std::size_t size) noexcept {
    return transferred(size, m_Error, [&](std::size_t offset) {
        return ::pread(::fileno(m_File.get()), static_cast<char*>(bytes) + offset, size - offset,
                       static_cast<off_t>(position + offset));
    });
}

void AtomicFile::sendBuffered() {
    std::array<char, 65536> bytes{};
    std::size_t length = 0;
    for (std::uint64_t sent = 0; (length = readAt(sent, bytes.data(), bytes.size())) != 0; sent += length) {
        if (std::fwrite(bytes.data(), 1, length, m_Receiver.get()) != length) {
            m_Error = errno;
        }
    }
    m_File = std::move(m_Receiver);
}

void AtomicFile::requireNoFailure() const {
    if (m_Error != 0) {
        raiseSystemError(m_Error);
    }
}

void AtomicFile::commit() {
    if (m_Receiver) {
        sendBuffered();
    }
    if (std::fclose(m_File.release()) != 0 && m_Error == 0) {
        m_Error = errno;
    }
    if (m_Error == 0 && !m_Temporary.empty() && ::rename(m_Temporary.c_str(), m_Path.c_str()) != 0) {
        m_Error = errno;
    }
    requireNoFailure();
    m_Temporary.clear();
}

} // namespace QuillTool
