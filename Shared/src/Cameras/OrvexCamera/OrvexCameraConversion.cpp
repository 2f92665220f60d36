// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <stdexcept>

#include "Base/TextConversion.h"
#include "Cameras/OrvexCamera/ColorFormatLayout.h"
#include "Cameras/OrvexCamera/OrvexCamera.h"
#include "Exceptions/Raise.h"
#include "OrvexApi/OrvexApi.h"
#include "Properties/OrvexEnumerations.h"
#include "PropertyNames.h"

namespace OrvexAdapter {

using namespace CameraInterface;
using Imaging::IMAGE_FORMAT;

namespace {

using PlainConversion = decltype(OrvexApi::sdkConvertToMono8);
using ExtendedConversion = decltype(OrvexApi::sdkConvertToMono8Ex);

/// The SDK's conversions of a mosaic, by target and bytes per channel.
struct SdkConversion {
    IMAGE_FORMAT target;
    unsigned bytesPerChannel;
    PlainConversion OrvexApi::*plain;
    ExtendedConversion OrvexApi::*extended;
};

constexpr SdkConversion kConversions[] = {
    {IMAGE_FORMAT::MONO, 1, &OrvexApi::sdkConvertToMono8, &OrvexApi::sdkConvertToMono8Ex},
    {IMAGE_FORMAT::MONO, 2, &OrvexApi::sdkConvertToMono16, &OrvexApi::sdkConvertToMono16Ex},
    {IMAGE_FORMAT::BGR, 1, &OrvexApi::sdkConvertToBgr24, &OrvexApi::sdkConvertToBgr24Ex},
    {IMAGE_FORMAT::BGR, 2, &OrvexApi::sdkConvertToBgr48, &OrvexApi::sdkConvertToBgr48Ex},
    {IMAGE_FORMAT::BGRA, 1, &OrvexApi::sdkConvertToBgra32, &OrvexApi::sdkConvertToBgra32Ex},
};

bool isBayer(IMAGE_FORMAT format) {
    return format >= IMAGE_FORMAT::BAYER_RGGB && format <= IMAGE_FORMAT::BAYER_BGGR;
}

const SdkConversion* findConversion(const Imaging::Image& image, IMAGE_FORMAT target) {
    const auto* row =
        std::find_if(std::begin(kConversions), std::end(kConversions), [&](const SdkConversion& conversion) {
            return conversion.target == target && conversion.bytesPerChannel == image.getBytesPerChannel();
        });
    return isBayer(image.getFormat()) && row != std::end(kConversions) ? row : nullptr;
}

ORVEX_CONVERSION_PARAMS getConversionParametersFromCameraProperties(Camera& camera) {
    const auto text = [&](const char* name) { return camera.getProperty(name).getValue(); };
    const auto number = [&](const char* name) { return Base::parseFloat(text(name)); };
    ORVEX_CONVERSION_PARAMS parameters{};
    parameters.size = sizeof parameters;
    parameters.correctionMatrix = CorrectionMatrices().toValue(text(PropertyNames::kCorrectionMatrix));
    parameters.demosaicMethod = DemosaicMethods().toValue(text(PropertyNames::kDemosaicMethod));
    const int flip = FlippingOptions().toValue(text(PropertyNames::kFlipping)); // bit 0: X, bit 1: Y
    parameters.flipX = (flip & 1) != 0 ? 1 : 0;
    parameters.flipY = (flip & 2) != 0 ? 1 : 0;
    parameters.hue = number(PropertyNames::kHue);
    parameters.saturation = number(PropertyNames::kSaturation);
    parameters.digitalGain = number(PropertyNames::kDigitalGain);
    parameters.digitalWhiteBalanceU = number(PropertyNames::kDigitalWhiteBalanceU);
    parameters.digitalWhiteBalanceV = number(PropertyNames::kDigitalWhiteBalanceV);
    return parameters;
}

ORVEX_IMAGE_FORMAT getOrvexImageFormatFromImage(const Imaging::Image& image) {
    ORVEX_IMAGE_FORMAT format{};
    format.size = sizeof format;
    format.width = image.getWidth();
    format.height = image.getHeight();
    format.imageSize = static_cast<std::uint32_t>(image.getImageSize());
    format.pixelFormat = image.getBytesPerChannel() == 2 ? 1 : 0;
    return format;
}

bool imageFormatHasReservedData(const ORVEX_IMAGE_FORMAT& format) {
    return std::any_of(std::begin(format.reserved), std::end(format.reserved),
                       [](std::uint32_t word) { return word != 0; });
}

} // namespace

std::unique_ptr<Imaging::Image> OrvexCamera::convertImage(const std::unique_ptr<Imaging::Image>& image,
                                                          IMAGE_FORMAT format) {
    return image && cameraCanHandleConversion(image, format) ? convertImageUsingCamera(image, format)
                                                             : Imaging::convertImage(image, format);
}

bool OrvexCamera::cameraCanHandleConversion(const std::unique_ptr<Imaging::Image>& image, IMAGE_FORMAT format) {
    const IMAGE_FORMAT layout =
        getImageFormatFromColorFormat(getProperty(PropertyNames::kColorFormat).getValue(), QUILL_HERE);
    if (!isBayer(layout) || image->getFormat() != layout) {
        return false;
    }
    return format == IMAGE_FORMAT::MONO || format == IMAGE_FORMAT::BGR ||
           (format == IMAGE_FORMAT::BGRA && image->getBytesPerChannel() == 1);
}

std::unique_ptr<Imaging::Image> OrvexCamera::convertImageUsingCamera(const std::unique_ptr<Imaging::Image>& image,
                                                                     IMAGE_FORMAT format) {
    auto result = Imaging::createImage(image->getWidth(), image->getHeight(), {}, image->getBitDepth(),
                                       image->isLittleEndian(), format);
    const ORVEX_IMAGE_FORMAT imageFormat = getOrvexImageFormatFromImage(*image);
    const ORVEX_CONVERSION_PARAMS parameters = getConversionParametersFromCameraProperties(*this);
    const ORVEX_CONVERSION plainParameters{parameters.demosaicMethod, parameters.correctionMatrix};
    const OrvexApi& api = orvexApi();
    bool converted = false;
    if (const SdkConversion* conversion = findConversion(*image, format)) {
        converted = imageFormatHasReservedData(imageFormat)
                        ? (api.*conversion->extended)(m_Handle, result->getDataAddress(), image->getDataAddress(),
                                                      &imageFormat, &parameters) != 0
                        : (api.*conversion->plain)(m_Handle, result->getDataAddress(), image->getDataAddress(),
                                                   imageFormat.width, imageFormat.height, imageFormat.pixelFormat,
                                                   &plainParameters) != 0;
    }
    if (!converted) {
        throw std::runtime_error("Failed to convert image.");
    }
    return result;
}

} // namespace OrvexAdapter
