// SPDX-License-Identifier: Apache-2.0

#include "ImageFiles/FileAccess.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

namespace QuillTool {

namespace {

/// A transfer at a position, which leaves the file's own where it ends: nobody else uses that of such a file.
template <typename Transfer>
std::ptrdiff_t transferAt(std::FILE* file, std::uint64_t position, std::size_t size, Transfer transfer) {
    constexpr std::size_t kLargest = 1U << 30;
    const int descriptor = _fileno(file);
    return _lseeki64(descriptor, static_cast<long long>(position), SEEK_SET) < 0
               ? -1
               : transfer(descriptor, static_cast<unsigned>(std::min(size, kLargest)));
}

} // namespace

// Longer paths than the system's usual limit need its prefix, see "Maximum Path Length Limitation" of the system's
// documentation.
std::filesystem::path pathOf(const std::string& text) {
    std::filesystem::path path = std::filesystem::u8path(text).make_preferred();
    if (path.native().size() < MAX_PATH / 2 || path.native().substr(0, 2) == L"\\\\") {
        return path;
    }
    return L"\\\\?\\" + std::filesystem::absolute(path).lexically_normal().native();
}

FileHandle openHandle(const std::string& path, const char* mode) {
    // "x", which fails if the file exists, is not known to every version of the system's C library.
    const std::string text = mode;
    const bool isNew = text.find('x') != std::string::npos;
    const int creation = isNew            ? _O_CREAT | _O_EXCL | _O_RDWR
                         : text[0] == 'w' ? _O_CREAT | _O_TRUNC | _O_WRONLY
                                          : _O_RDONLY;
    const int descriptor = _wopen(pathOf(path).c_str(), creation | _O_BINARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
    return {descriptor < 0 ? nullptr : _fdopen(descriptor, isNew ? "w+b" : text[0] == 'w' ? "wb" : "rb"), &std::fclose};
}

FilePlace examinePlace(const std::string& path) {
    const DWORD attributes = GetFileAttributesW(pathOf(path).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
        const DWORD failure = GetLastError();
        if (failure == ERROR_FILE_NOT_FOUND || failure == ERROR_PATH_NOT_FOUND) {
            return {};
        }
        throw std::system_error(static_cast<int>(failure), std::system_category());
    }
    if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        return {FilePlace::Kind::Folder, 0};
    }
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0) {
        raiseSystemError(EACCES);
    }
    return {(attributes & FILE_ATTRIBUTE_DEVICE) != 0 ? FilePlace::Kind::Other : FilePlace::Kind::RegularFile, 0};
}

void setPermissions(std::FILE* /*file*/, unsigned /*permissions*/) {} // a folder's files inherit them

FileHandle duplicateOutput() {
    const int descriptor = _dup(_fileno(stdout));
    return {descriptor < 0 ? nullptr : _fdopen(descriptor, "wb"), &std::fclose};
}

FileHandle takeDescriptor(int descriptor) {
    FileHandle file(_fdopen(descriptor, "w+b"), &std::fclose);
    if (!file) {
        const int error = errno;
        _close(descriptor);
        errno = error;
    }
    return file;
}

FileHandle openUnnamed() {
    std::error_code failure;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(failure);
    wchar_t name[MAX_PATH] = {};
    if (failure || GetTempFileNameW(folder.c_str(), L"qui", 0, name) == 0) {
        errno = EACCES;
        return {nullptr, &std::fclose};
    }
    const int descriptor = _wopen(name, _O_RDWR | _O_BINARY | _O_TEMPORARY | _O_NOINHERIT, _S_IREAD | _S_IWRITE);
    return {descriptor < 0 ? nullptr : _fdopen(descriptor, "w+b"), &std::fclose};
}

std::ptrdiff_t readAt(std::FILE* file, std::uint64_t position, void* bytes, std::size_t size) {
    return transferAt(file, position, size,
                      [bytes](int descriptor, unsigned piece) { return _read(descriptor, bytes, piece); });
}

std::ptrdiff_t writeAt(std::FILE* file, std::uint64_t position, const void* bytes, std::size_t size) {
    return transferAt(file, position, size,
                      [bytes](int descriptor, unsigned piece) { return _write(descriptor, bytes, piece); });
}

bool renameOver(const std::string& from, const std::string& to) {
    if (MoveFileExW(pathOf(from).c_str(), pathOf(to).c_str(), MOVEFILE_REPLACE_EXISTING) != 0) {
        return true;
    }
    errno = EACCES; // such as a file that another program has open
    return false;
}

void removeFile(const std::string& path) {
    DeleteFileW(pathOf(path).c_str());
}

int processNumber() {
    return static_cast<int>(GetCurrentProcessId());
}

std::tm localTime(std::time_t moment) {
    std::tm parts = {};
    localtime_s(&parts, &moment);
    return parts;
}

} // namespace QuillTool
