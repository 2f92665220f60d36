// SPDX-License-Identifier: Apache-2.0

#include "ImageFiles/AtomicFile.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "Terminal/StandardStreams.h"

namespace QuillTool {

namespace {

/// Calls a transfer until all bytes are through, or it fails or ends.
/// @param transfer  takes the number of bytes that are done; returns those added, or -1 with errno
template <typename Transfer>
std::size_t transferred(std::size_t size, int& error, Transfer transfer) {
    std::size_t done = 0;
    while (error == 0 && done < size) {
        const std::ptrdiff_t added = transfer(done);
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
    const FilePlace place = examinePlace(path);
    if (place.kind == FilePlace::Kind::Folder) {
        raiseSystemError(EISDIR);
    }
    const bool isReplaced = place.kind == FilePlace::Kind::RegularFile;
    if (place.kind == FilePlace::Kind::Other) {
        openDirectly(openHandle(path, "wb"), access);
    } else {
        if (isReplaced) {
            // Keeps a link and replaces its target.
            m_Path = std::filesystem::canonical(pathOf(path)).u8string();
        }
        createTemporary();
    }
    if (!m_File) {
        raiseSystemError(errno);
    }
    if (isReplaced) {
        setPermissions(m_File.get(), place.permissions);
    }
}

AtomicFile::AtomicFile(Access access) : m_File(nullptr, &std::fclose), m_Receiver(nullptr, &std::fclose) {
    static_cast<void>(std::fflush(stdout)); // what was printed before comes first
    openDirectly(duplicateOutput(), access);
    if (!m_File) {
        raiseSystemError(errno);
    }
}

AtomicFile::AtomicFile(int descriptor) : m_File(takeDescriptor(descriptor)), m_Receiver(nullptr, &std::fclose) {
    if (!m_File) {
        raiseSystemError(errno);
    }
}

AtomicFile::~AtomicFile() {
    if (!m_Temporary.empty()) {
        removeFile(m_Temporary);
    }
}

void AtomicFile::createTemporary() {
    static std::atomic<unsigned> s_Number{0};
    const std::filesystem::path folder = pathOf(m_Path).parent_path();
    std::string name;
    do {
        const std::string number = std::to_string(processNumber()) + "-" + std::to_string(s_Number++);
        name = (folder / (".quill-" + number + ".part")).u8string();
        m_File = openHandle(name, "w+bx");
    } while (!m_File && errno == EEXIST);
    if (m_File) {
        m_Temporary = name;
    }
}

void AtomicFile::openDirectly(FileHandle file, Access access) {
    if (file && access == Access::Random) {
        m_Receiver = std::exchange(file, openUnnamed());
    }
    m_File = std::move(file);
}

void AtomicFile::write(const void* bytes, std::size_t size) noexcept {
    if (m_Error == 0 && std::fwrite(bytes, 1, size, m_File.get()) != size) {
        m_Error = errorOfWriting();
    }
}

std::size_t AtomicFile::writeAt(std::uint64_t position, const void* bytes, std::size_t size) noexcept {
    const std::size_t done = transferred(size, m_Error, [&](std::size_t offset) {
        return QuillTool::writeAt(m_File.get(), position + offset, static_cast<const char*>(bytes) + offset,
                                  size - offset);
    });
    m_Size = std::max(m_Size, position + done);
    return done;
}

std::size_t AtomicFile::readAt(std::uint64_t position, void* bytes, std::size_t size) noexcept {
    return transferred(size, m_Error, [&](std::size_t offset) {
        return QuillTool::readAt(m_File.get(), position + offset, static_cast<char*>(bytes) + offset, size - offset);
    });
}

void AtomicFile::sendBuffered() {
    std::array<char, 65536> bytes{};
    std::size_t length = 0;
    for (std::uint64_t sent = 0; (length = readAt(sent, bytes.data(), bytes.size())) != 0; sent += length) {
        if (std::fwrite(bytes.data(), 1, length, m_Receiver.get()) != length) {
            m_Error = errorOfWriting();
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
        m_Error = errorOfWriting();
    }
    if (m_Error == 0 && !m_Temporary.empty() && !renameOver(m_Temporary, m_Path)) {
        m_Error = errno;
    }
    requireNoFailure();
    m_Temporary.clear();
}

} // namespace QuillTool
