// SPDX-License-Identifier: Apache-2.0

#include "Base/FilePath.h"
#include "Base/SharedLibrary.h"
#include "Cameras/SimulatedCamera/DescriptionFile.h"

namespace CameraInterface::SimulatedAdapter {

// Fixed relative to the library: programs are installed wherever their user likes.
std::string getDescriptionFilePath() {
    return Base::filePath(Base::getLibraryFolder() + "/" QUILL_CAMERA_LIST_FILE).u8string();
}

} // namespace CameraInterface::SimulatedAdapter
