// SPDX-License-Identifier: Apache-2.0

// Flash, boot images and JTAG.

#include <vector>

#include <Quill.h>

#include "Blocks.h"
#include "Callbacks.h"
#include "Calls.h"
#include "Workspace.h"

using namespace CInterface;
using Utilities::Programmer;
using Utilities::XsvfError;
using Utilities::XsvfReport;

namespace {

static_assert(QUILL_XSVF_TDO_MISMATCH == static_cast<int>(XsvfError::TdoMismatch) &&
              QUILL_XSVF_DATA_OVERFLOW == static_cast<int>(XsvfError::DataOverflow));

void giveReport(const XsvfReport& source, quill_xsvf_report** result) {
    Block block;
    auto* const report = block.make(quill_xsvf_report{});
    const auto bits = [&](const std::vector<unsigned char>& data) { return block.bytes(data.data(), data.size()); };
    report->size = sizeof(*report);
    report->succeeded = source.succeeded();
    report->opened = source.opened;
    report->data_ended = source.dataEnded;
    report->camera_gone = source.cameraGone;
    report->error = static_cast<quill_xsvf_error>(source.error);
    report->command_count = source.commandCount;
    report->failed_command = source.failedCommand;
    report->command_offset = source.commandOffset;
    report->failed_offset = source.failedOffset;
    report->failed_transfers = source.failedTransfers;
    report->expected_tdo = bits(source.expectedTdo);
    report->captured_tdo = bits(source.capturedTdo);
    report->tdo_mask = bits(source.tdoMask);
    block.give(report, result);
}

} // namespace

quill_status quill_programmer_compare_flash(quill_camera camera, const void* data, size_t length, uint32_t address,
                                            uint32_t chunk_size, quill_progress_function progress, void* context,
                                            bool* equal, quill_error* error) {
    return call(error, [&] {
        requireAll(equal);
        const std::vector<unsigned char> bytes = dataOf(data, length);
        const CameraUse use(camera);
        *equal = Programmer::compareFlash(*use, bytes, address, chunk_size, progressFunction(progress, context));
    });
}

quill_status quill_programmer_write_buffer_to_flash(quill_camera camera, const void* data, size_t length,
                                                    uint32_t address, uint32_t maximum_size, uint32_t chunk_size,
                                                    quill_progress_function progress, void* context,
                                                    quill_error* error) {
    return call(error, [&] {
        std::vector<unsigned char> bytes = dataOf(data, length);
        const CameraUse use(camera);
        Programmer::writeBufferToFlash(*use, std::move(bytes), address, maximum_size, chunk_size,
                                       progressFunction(progress, context));
    });
}

quill_status quill_programmer_write_firmware_to_flash(quill_camera camera, const void* data, size_t length,
                                                      uint32_t address, uint32_t maximum_size, uint32_t chunk_size,
                                                      quill_progress_function progress, void* context,
                                                      quill_error* error) {
    return call(error, [&] {
        std::vector<unsigned char> bytes = dataOf(data, length);
        const CameraUse use(camera);
        Programmer::writeFirmwareToFlash(*use, std::move(bytes), address, maximum_size, chunk_size,
                                         progressFunction(progress, context));
    });
}

quill_status quill_programmer_write_firmware_to_ram(quill_camera camera, const void* data, size_t length,
                                                    quill_progress_function progress, void* context,
                                                    quill_error* error) {
    return call(error, [&] {
        std::vector<unsigned char> bytes = dataOf(data, length);
        const CameraUse use(camera);
        Programmer::writeFirmwareToRam(*use, std::move(bytes), progressFunction(progress, context));
    });
}

quill_status quill_programmer_read_flash_status(quill_camera camera, uint32_t address, uint8_t* status,
                                                quill_error* error) {
    return call(error, [&] {
        requireAll(status);
        const CameraUse use(camera);
        *status = Programmer::readFlashStatus(*use, address);
    });
}

quill_status quill_programmer_write_flash_status(quill_camera camera, uint32_t address, uint8_t status,
                                                 quill_error* error) {
    return call(error, [&] {
        const CameraUse use(camera);
        Programmer::writeFlashStatus(*use, address, status);
    });
}

quill_status quill_programmer_flip_bit_order(const void* data, size_t length, unsigned char** flipped,
                                             quill_error* error) {
    return call(error, [&] {
        requireAll(flipped);
        const std::vector<unsigned char> bytes = Programmer::flipBitOrder(dataOf(data, length));
        Block block;
        block.give(
            reinterpret_cast<unsigned char*>(block.text({reinterpret_cast<const char*>(bytes.data()), bytes.size()})),
            flipped);
    });
}

quill_status quill_programmer_jtag_xsvf(quill_camera camera, const void* data, size_t length, quill_error* error) {
    return call(error, [&] {
        std::vector<unsigned char> bytes = dataOf(data, length);
        const CameraUse use(camera);
        Programmer::jtagXsvf(*use, std::move(bytes));
    });
}

quill_status quill_read_boot_image(const void* data, size_t length, quill_boot_image** image, quill_error* error) {
    return call(error, [&] {
        requireAll(image);
        const Utilities::BootImage source = Utilities::readBootImage(dataOf(data, length));
        Block block;
        auto* const result = block.make(quill_boot_image{});
        result->size = sizeof(*result);
        result->sections = block.pointers(source.sections, [](const Utilities::BootImageSection& section) {
            return quill_boot_image_section{sizeof(quill_boot_image_section), section.address, section.offset,
                                            section.length};
        });
        result->section_count = source.sections.size();
        result->entry_address = source.entryAddress;
        result->image_size = source.size;
        block.give(result, image);
    });
}

quill_status quill_play_xsvf(quill_camera camera, const void* data, size_t length, quill_progress_function progress,
                             void* context, quill_xsvf_report** report, quill_error* error) {
    return call(error, [&] {
        requireAll(report);
        std::vector<unsigned char> bytes = dataOf(data, length);
        const CameraUse use(camera);
        XsvfReport result;
        Utilities::playXsvf(*use, std::move(bytes), result, progressFunction(progress, context));
        giveReport(result, report);
    });
}

quill_status quill_can_play_xsvf(quill_camera camera, bool* can, quill_error* error) {
    return call(error, [&] {
        requireAll(can);
        const CameraUse use(camera);
        *can = Utilities::canPlayXsvf(*use);
    });
}

quill_status quill_check_xsvf(const void* data, size_t length, quill_xsvf_report** report, quill_error* error) {
    return call(error, [&] {
        requireAll(report);
        giveReport(Utilities::checkXsvf(dataOf(data, length)), report);
    });
}
