// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include <Quill.h>
#include <pybind11/pybind11.h>

namespace PythonBinding {

/// An image as Python holds it.
struct ImageObject {
    std::shared_ptr<const Imaging::Image> image;
    bool isShared = true; ///< with others, so that nobody may change it
};

/// An image that belongs to Python alone.
ImageObject ownImage(std::unique_ptr<Imaging::Image> image);

/// Width, height and format.
std::string describeImage(const Imaging::Image& image);

/// The format that has the name.
/// @throws pybind11::value_error
Imaging::IMAGE_FORMAT formatNamed(const std::string& name);

void bindImages(pybind11::module_& module);

} // namespace PythonBinding
