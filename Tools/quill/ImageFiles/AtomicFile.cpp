// SPDX-License-Identifier: Apache-2.0

#include "ImageFiles/AtomicFile.h"

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include <sys/stat.h>
#include <unistd.h>

namespace QuillTool {

namespace {

/// The permission bits that a new file takes from the file it replaces; other mode bits depend on the content.
constexpr mode_t kPermissions = S_IRWXU | S_IRWXG | S_IRWXO;

[[noreturn]] void raiseSystemError(int error) {
    throw std::system_error(error, std::generic_category());
}

} // namespace

AtomicFile::AtomicFile(const std::string& path) : m_Path(path), m_File(nullptr, &std::fclose) {
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
        m_File.reset(std::fopen(path.c_str(), "wbe"));
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
        m_File.reset(std::fopen(name.c_str(), "wbxe"));
    } while (!m_File && errno == EEXIST);
    if (m_File) {
        m_Temporary = name;
    }
}

void AtomicFile::write(const void* bytes, std::size_t size) noexcept {
    if (m_Error == 0 && std::fwrite(bytes, 1, size, m_File.get()) != size) {
        m_Error = errno;
    }
}

void AtomicFile::commit() {
    if (std::fclose(m_File.release()) != 0 && m_Error == 0) {
        m_Error = errno;
    }
    if (m_Error == 0 && !m_Temporary.empty() && ::rename(m_Temporary.c_str(), m_Path.c_str()) != 0) {
        m_Error = errno;
    }
    if (m_Error != 0) {
        raiseSystemError(m_Error);
    }
    m_Temporary.clear();
}

} // namespace QuillTool
