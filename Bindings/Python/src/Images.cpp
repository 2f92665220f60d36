// SPDX-License-Identifier: Apache-2.0

#include "Images.h"

#include <cstring>
#include <vector>

#include "Interpreter.h"
#include "Text.h"

namespace PythonBinding {

namespace py = pybind11;
using Imaging::Image;
using Imaging::IMAGE_FORMAT;

namespace {

/// Where the samples of an image lie, as NumPy describes it.
struct Samples {
    py::ssize_t bytes; ///< of a sample
    bool littleEndian;
    std::vector<py::ssize_t> shape;

    std::string format() const { return bytes == 1 ? "B" : littleEndian ? "<H" : ">H"; }
};

/// Images whose colour the camera computed have another number of samples than their format says.
struct ComputedColor {
    unsigned bitDepth;
    py::ssize_t bytes;
    py::ssize_t channels;
};
constexpr ComputedColor kComputedColors[] = {{24, 1, 3}, {32, 1, 4}, {48, 2, 3}};

Samples samplesOf(const Image& image) {
    const auto height = static_cast<py::ssize_t>(image.getHeight());
    const auto width = static_cast<py::ssize_t>(image.getWidth());
    for (const ComputedColor& color : kComputedColors) {
        if (color.bitDepth == image.getBitDepth()) {
            return {color.bytes, image.isLittleEndian(), {height, width, color.channels}};
        }
    }
    const auto bytes = static_cast<py::ssize_t>(image.getBytesPerChannel());
    Samples samples{bytes, image.isLittleEndian(), {height, width}};
    const auto perPixel = static_cast<py::ssize_t>(image.getBytesPerPixel()) / bytes;
    if (image.getNumberOfPlanes() > 1) {
        samples.shape.insert(samples.shape.begin(), image.getNumberOfPlanes());
    } else if (perPixel > 1) {
        samples.shape.push_back(perPixel);
    }
    return samples;
}

/// The address of the first sample. Python writes there only if the image is not shared.
void* address(const Image& image) {
    return const_cast<unsigned char*>(image.getDataAddress()); // NOLINT(cppcoreguidelines-pro-type-const-cast)
}

py::buffer_info describeBuffer(ImageObject& object) {
    const Samples samples = samplesOf(*object.image);
    return {address(*object.image), samples.bytes,
            samples.format(),       static_cast<py::ssize_t>(samples.shape.size()),
            samples.shape,          py::detail::c_strides(samples.shape, samples.bytes),
            object.isShared};
}

// NumPy is a module like any other here: the interface to it of pybind11 loads it while it keeps other threads waiting,
// which may have the interpreter.

py::object numpy(const char* function, const py::object& argument) {
    return py::module_::import("numpy").attr(function)(argument);
}

py::object arrayOf(const py::object& self) {
    return numpy("asarray", self); // by the buffer protocol
}

std::string expectedShape(const std::vector<py::ssize_t>& onePixel, std::size_t rows) {
    return onePixel.size() == 2 ? "height x width"
           : rows == 0          ? "height x width x " + std::to_string(onePixel[2])
                                : std::to_string(onePixel[0]) + " x height x width";
}

ImageObject fromArray(const py::object& values, const std::string& formatName, unsigned bitDepth) {
    const IMAGE_FORMAT format = formatNamed(formatName);
    const py::buffer_info array = py::buffer(numpy("ascontiguousarray", values)).request();
    const bool isByte = array.format == "B";
    if (!isByte && (array.format.empty() || array.format.back() != 'H')) {
        throw py::type_error("An image takes an array of uint8 or uint16.");
    }
    const unsigned bytes = isByte ? 1 : 2;
    const unsigned depth = bitDepth != 0 ? bitDepth : bytes * 8;
    if ((depth + 7) / 8 != bytes) {
        throw py::value_error("The depth does not fit the type of the array.");
    }
    const bool isLittleEndian =
        array.format[0] == '<' || (array.format[0] != '>' && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__);
    // An image of one pixel says which dimensions the format has.
    std::vector<py::ssize_t> shape = samplesOf(*Imaging::createImage(1, 1, {}, depth, true, format)).shape;
    const std::size_t rows = shape.size() == 3 && shape[0] > 1 ? 1 : 0;
    const std::string expected = expectedShape(shape, rows);
    if (array.shape.size() == shape.size()) {
        shape[rows] = array.shape[rows];
        shape[rows + 1] = array.shape[rows + 1];
    }
    if (shape != array.shape || array.size == 0) {
        throw py::value_error("An image of the format " + formatName + " takes an array of " + expected + ".");
    }
    const auto* first = static_cast<const unsigned char*>(array.ptr);
    return ownImage(Imaging::createImage(static_cast<unsigned>(shape[rows + 1]), static_cast<unsigned>(shape[rows]),
                                         {first, first + array.size * array.itemsize}, depth, isLittleEndian, format));
}

template <typename Sample>
py::object toArray(const std::vector<Sample>& samples, const char* type) {
    const py::bytes bytes(reinterpret_cast<const char*>(samples.data()), // NOLINT(*-reinterpret-cast): bytes
                          samples.size() * sizeof(Sample));
    return py::module_::import("numpy").attr("frombuffer")(bytes, type);
}

py::tuple getPixel(const ImageObject& object, unsigned row, unsigned column) {
    const auto& channel = object.image->getPixel(row, column).channel;
    return py::make_tuple(channel[0], channel[1], channel[2], channel[3]);
}

py::object toPng(const py::object& image) {
    return py::module_::import("quillcamera._png").attr("to_png")(image);
}

template <auto get>
auto samples(const ImageObject& object) {
    const Released released;
    return ((*object.image).*get)();
}

ImageObject copy(const ImageObject& object) {
    const Released released;
    return ownImage(Imaging::cloneImage(*object.image));
}

ImageObject convert(const ImageObject& object, const std::string& format) {
    const IMAGE_FORMAT target = formatNamed(format);
    const Released released;
    return ownImage(Imaging::convertImage(*object.image, target));
}

} // namespace

ImageObject ownImage(std::unique_ptr<Image> image) {
    return {std::move(image), false};
}

std::string describeImage(const Image& image) {
    return std::to_string(image.getWidth()) + " x " + std::to_string(image.getHeight()) + ' ' +
           Imaging::getFormatName(image.getFormat());
}

IMAGE_FORMAT formatNamed(const std::string& name) {
    if (const auto format = Imaging::findFormat(name)) {
        return *format;
    }
    throw py::value_error("There is no pixel format '" + name + "'; quillcamera.FORMATS has their names.");
}

void bindImages(py::module_& module) {
    py::class_<ImageObject>(module, "Image", py::buffer_protocol(), R"(An image: samples, and how they lie in memory.

Made by Camera.capture(), convert() and from_array(), or part of a Frame. An image of a frame is shared by all who got
the frame, and read-only; every other one belongs to whoever made it. Has the buffer protocol. Reading is thread-safe.)")
        .def_static("from_array", &fromArray, py::arg("array"), py::arg("format"), py::arg("bit_depth") = 0,
                    R"(Makes an image of a copy of an array of uint8 or uint16, in either byte order.

format     name of a pixel format, such as "BAYER_RGGB"; decides the shape: height x width for MONO and the mosaics,
           height x width x channels, or planes x height x width
bit_depth  significant bits of a sample, 8 to 16; 0 for all of the array's type
ValueError: no such format, or another shape or depth; TypeError: another type of array)")
        .def_property_readonly("array", &arrayOf, R"(The samples as a NumPy array, without a copy.

height x width for MONO and mosaics, height x width x channels for interleaved colour, planes x height x width for
planar colour; uint8 up to a depth of 8 bits, otherwise uint16 in the image's byte order: `dtype.byteorder` says if it is
not the machine's. Colour that the camera computed ("Pixel Format" 24, 32, 48) is BGR, BGRA or 16-bit BGR. Read-only for
the image of a frame. The array keeps the memory alive.)")
        .def_property_readonly("width", [](const ImageObject& object) { return object.image->getWidth(); })
        .def_property_readonly("height", [](const ImageObject& object) { return object.image->getHeight(); })
        .def_property_readonly(
            "format", [](const ImageObject& object) { return Imaging::getFormatName(object.image->getFormat()); },
            "The name of the pixel format, such as \"BAYER_RGGB\".")
        .def_property_readonly(
            "bit_depth", [](const ImageObject& object) { return object.image->getBitDepth(); },
            "Significant bits of a sample: 8, 10, 12 or 16; of a pixel (24, 32, 48) if the camera computed its colour.")
        .def_property_readonly("is_little_endian",
                               [](const ImageObject& object) { return object.image->isLittleEndian(); })
        .def_property_readonly(
            "is_shared", [](const ImageObject& object) { return object.isShared; },
            "Whether others have the image, too: then it is read-only.")
        .def_property_readonly("nbytes", [](const ImageObject& object) { return object.image->getImageSize(); })
        .def("convert", &convert, py::arg("format"), R"(Returns a new image in another pixel format.

Samples are reordered but never scaled; a mosaic is demosaiced bilinearly. Width, height, depth and byte order stay.
Other threads of Python run meanwhile. ValueError: no such format; RuntimeError: no conversion between the two.)")
        .def("copy", &copy, "Returns an independent, writable copy.")
        .def("get_pixel", &getPixel, py::arg("row"), py::arg("column"), R"(Returns the four channels of a pixel.

MONO: the grey is channel 0. Mosaic: red, first green, second green, blue; all but one are 0. Colour: red, green, blue,
alpha, in whichever order they lie in memory. ValueError: outside the image.)")
        .def(
            "get_8bit_data",
            [](const ImageObject& object) { return toArray(samples<&Image::get8bitImageData>(object), "uint8"); },
            "Returns a flat array of bytes, scaled so that the brightest is 255: grey, or blue, green, red. An image "
            "of "
            "depth 8 returns its own bytes.")
        .def(
            "get_16bit_data",
            [](const ImageObject& object) { return toArray(samples<&Image::get16bitImageData>(object), "uint16"); },
            "Returns a flat array of unscaled samples in machine order, as get_8bit_data(); empty for depth 8.")
        .def("to_png", &toPng, "Returns the image as a PNG of 8 bits per sample: grey for MONO, otherwise RGB or RGBA.")
        .def("_repr_png_", &toPng)
        .def("__repr__",
             [](const ImageObject& object) {
                 return "<Image " + describeImage(*object.image) + ", " + std::to_string(object.image->getBitDepth()) +
                        " bits>";
             })
        .def_buffer(&describeBuffer);

    py::list formats;
    for (int number = 0; number <= static_cast<int>(IMAGE_FORMAT::BGRA_PLANAR); ++number) {
        formats.append(Imaging::getFormatName(static_cast<IMAGE_FORMAT>(number)));
    }
    module.attr("FORMATS") = py::tuple(formats);
}

} // namespace PythonBinding
