// SPDX-License-Identifier: Apache-2.0

#include "Properties/Usb3VisionUsb3VisionMode.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "Cameras/Usb3VisionCamera/Usb3VisionCamera.h"
#include "Exceptions/Raise.h"
#include "TarnuLibrary/TarnuLibrary.h"

namespace Usb3VisionAdapter {

using namespace KestrelExceptions;
using namespace QuillInternal;

Usb3VisionUsb3VisionMode::Usb3VisionUsb3VisionMode(const std::string& name, const CameraInterface::PROPERTY_TYPE& type,
                                                   Usb3VisionCamera& camera)
    : BooleanProperty(name, type), m_Camera(&camera) {}

std::string Usb3VisionUsb3VisionMode::getValue() {
    return m_States.toString(readInfo().mode == 0);
}

bool Usb3VisionUsb3VisionMode::isAvailableForWriting() {
    return getValue() != m_States.toString(false) || hasValidFile();
}

void Usb3VisionUsb3VisionMode::setValue(const std::string& value) {
    if (isReadOnly() || !isAvailableForWriting()) {
        return;
    }
    readInfo(); // a camera that cannot be read must not be written
    const std::uint32_t usb3Vision = m_States.toValue(value) ? 1 : 0;
    if (tarnuLibrary().TarnuWriteBootSequence(m_Camera->getHandle(), usb3Vision) == 0) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyWriteFailure, getName());
    }
}

Usb3VisionInfo Usb3VisionUsb3VisionMode::readInfo() {
    Usb3VisionInfo info{};
    if (tarnuLibrary().TarnuFlashRead(m_Camera->getHandle(), reinterpret_cast<std::uint8_t*>(&info),
                                      kUsb3VisionInfoAddress, sizeof(info)) == 0) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyReadFailure, getName());
    }
    return info;
}

bool Usb3VisionUsb3VisionMode::hasValidFile() {
    const Usb3VisionInfo info = readInfo();
    if (info.fileSize > kUsb3VisionFileMaximumSize) {
        return false;
    }
    // An empty file is valid, too, if the block has the digest of empty data.
    std::vector<unsigned char> file(info.fileSize);
    if (!file.empty() &&
        tarnuLibrary().TarnuFlashRead(m_Camera->getHandle(), file.data(), kUsb3VisionFileAddress, info.fileSize) == 0) {
        raise<KestrelException_Property>(QUILL_HERE, Errors::kPropertyReadFailure, getName());
    }
    m_Hasher.Reset();
    m_Hasher.Update(file.data(), info.fileSize);
    m_Hasher.Final();
    std::array<unsigned char, sizeof(info.fileHash)> hash{};
    m_Hasher.GetHash(hash.data());
    return std::equal(hash.begin(), hash.end(), info.fileHash);
}

} // namespace Usb3VisionAdapter
