// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

namespace QuillTool {

// What a file of images needs of the system. Paths are UTF-8. Failures set errno, and are negative, null or false.

using FileHandle = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

/// @param error a value of errno
[[noreturn]] inline void raiseSystemError(int error) {
    throw std::system_error(error, std::generic_category());
}

/// The path of a text.
std::filesystem::path pathOf(const std::string& text);

/// Opens a file of bytes, which children do not inherit.
FileHandle openHandle(const std::string& path, const char* mode);

/// What is at the path of a file that is to be replaced.
struct FilePlace {
    enum class Kind { Nothing, RegularFile, Folder, Other };

    Kind kind = Kind::Nothing;
    unsigned permissions = 0;
};

/// @throws std::system_error  reason of the operating system, such as that the file may not be written
FilePlace examinePlace(const std::string& path);
void setPermissions(std::FILE* file, unsigned permissions);

/// Another handle of standard output.
FileHandle duplicateOutput();
/// Takes an open file, which it closes if it fails.
FileHandle takeDescriptor(int descriptor);
/// An unnamed file, which goes when it is closed.
FileHandle openUnnamed();

/// Reads or writes at a position, without regard to the file's own.
/// @return the number of bytes
std::ptrdiff_t readAt(std::FILE* file, std::uint64_t position, void* bytes, std::size_t size);
std::ptrdiff_t writeAt(std::FILE* file, std::uint64_t position, const void* bytes, std::size_t size);

/// Gives a file the name of another one, which it replaces in one step.
bool renameOver(const std::string& from, const std::string& to);
void removeFile(const std::string& path);
int processNumber();

/// A moment in local time. Thread-safe.
std::tm localTime(std::time_t moment);

} // namespace QuillTool
