// SPDX-License-Identifier: Apache-2.0

#include "ImageFiles/FileAccess.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace QuillTool {

namespace {

/// The permission bits that a new file takes from the file it replaces; other mode bits depend on the content.
constexpr mode_t kPermissions = S_IRWXU | S_IRWXG | S_IRWXO;

} // namespace

std::filesystem::path pathOf(const std::string& text) {
    return text;
}

FileHandle openHandle(const std::string& path, const char* mode) {
    return {std::fopen(path.c_str(), (std::string(mode) + 'e').c_str()), &std::fclose};
}

FilePlace examinePlace(const std::string& path) {
    struct stat status = {};
    const bool exists = ::stat(path.c_str(), &status) == 0;
    if (!exists && errno != ENOENT) {
        raiseSystemError(errno);
    }
    if (!exists) {
        return {};
    }
    if (S_ISDIR(status.st_mode)) {
        return {FilePlace::Kind::Folder, 0};
    }
    // Renaming does not check the permissions of the replaced file.
    if (::access(path.c_str(), W_OK) != 0) {
        raiseSystemError(errno);
    }
    return {S_ISREG(status.st_mode) ? FilePlace::Kind::RegularFile : FilePlace::Kind::Other,
            status.st_mode & kPermissions};
}

void setPermissions(std::FILE* file, unsigned permissions) {
    ::fchmod(::fileno(file), permissions);
}

FileHandle duplicateOutput() {
    const int descriptor = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0);
    return {descriptor < 0 ? nullptr : ::fdopen(descriptor, "wb"), &std::fclose};
}

FileHandle takeDescriptor(int descriptor) {
    FileHandle file(::fdopen(descriptor, "w+b"), &std::fclose);
    if (!file) {
        const int error = errno;
        ::close(descriptor);
        errno = error;
    }
    return file;
}

FileHandle openUnnamed() {
    return {std::tmpfile(), &std::fclose};
}

std::ptrdiff_t readAt(std::FILE* file, std::uint64_t position, void* bytes, std::size_t size) {
    return ::pread(::fileno(file), bytes, size, static_cast<off_t>(position));
}

std::ptrdiff_t writeAt(std::FILE* file, std::uint64_t position, const void* bytes, std::size_t size) {
    return ::pwrite(::fileno(file), bytes, size, static_cast<off_t>(position));
}

bool renameOver(const std::string& from, const std::string& to) {
    return ::rename(from.c_str(), to.c_str()) == 0;
}

void removeFile(const std::string& path) {
    ::unlink(path.c_str());
}

int processNumber() {
    return ::getpid();
}

std::tm localTime(std::time_t moment) {
    std::tm parts = {};
    ::localtime_r(&moment, &parts);
    return parts;
}

} // namespace QuillTool
