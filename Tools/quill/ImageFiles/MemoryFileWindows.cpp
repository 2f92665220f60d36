// SPDX-License-Identifier: Apache-2.0

#include "ImageFiles/MemoryFile.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include <io.h>

#include "ImageFiles/FileAccess.h"

namespace QuillTool {

namespace {

int requireDone(int result) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category());
    }
    return result;
}

/// Files without a name are in the folder for temporary files; their pages stay in memory while there is enough.
int openUnnamedDescriptor() {
    const FileHandle file = openUnnamed();
    return requireDone(file ? _dup(_fileno(file.get())) : -1);
}

} // namespace

MemoryFile::MemoryFile() : m_Descriptor(openUnnamedDescriptor()) {}

MemoryFile::~MemoryFile() {
    _close(m_Descriptor);
}

int MemoryFile::duplicate() const {
    return requireDone(_dup(m_Descriptor));
}

std::string MemoryFile::content() const {
    std::string bytes(static_cast<std::size_t>(requireDone(_lseek(m_Descriptor, 0, SEEK_END))), '\0');
    requireDone(_lseek(m_Descriptor, 0, SEEK_SET));
    for (std::size_t done = 0; done < bytes.size();) {
        const int added =
            requireDone(_read(m_Descriptor, bytes.data() + done, static_cast<unsigned>(bytes.size() - done)));
        if (added == 0) {
            bytes.resize(done);
        }
        done += static_cast<std::size_t>(added);
    }
    return bytes;
}

} // namespace QuillTool
