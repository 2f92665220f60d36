// SPDX-License-Identifier: Apache-2.0

// Feeds every file of a folder to a fuzzer's entry point, which ends the program at a failure.

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv) {
    int files = 0;
    for (int argument = 1; argument < argc; ++argument) {
        for (const auto& entry : std::filesystem::directory_iterator(argv[argument])) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string content{std::istreambuf_iterator<char>(file), {}};
            // Printed first, so that the last line names the file that ends the program.
            std::cout << entry.path().filename().string() << std::endl;
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(content.data()), content.size());
            ++files;
        }
    }
    std::cout << files << " files replayed\n";
    return files > 0 ? 0 : 1;
}
