// SPDX-License-Identifier: Apache-2.0

#include "Support/TemporaryFolder.h"

#include <fstream>
#include <iterator>
#include <random>

namespace TestSupport {

TemporaryFolder::TemporaryFolder() {
    std::random_device random;
    do {
        m_Path = std::filesystem::temp_directory_path() / ("quill-test-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(m_Path)); // throws if that is impossible
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_Path, ignored);
}

std::string TemporaryFolder::write(const std::string& name, const std::string& content) const {
    std::ofstream(m_Path / std::filesystem::u8path(name), std::ios::binary) << content;
    return file(name);
}

std::string readFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

} // namespace TestSupport
