// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Conformance/Subject.h"

namespace QuillTool::Conformance {

enum class Scope { Camera, Library };
/// Whether a call may change the state of the camera or of the list.
enum class Effect { Keeps, Changes };

/// A public operation with its arguments.
struct PublicCall {
    const char* name;
    Scope scope;
    Effect effect;
    /// Makes the call and returns its answer in a word.
    std::string (*make)(Subject& subject);
    /// Returns whether the camera supports the call; if empty, every camera does.
    bool (*isPossible)(const Subject& subject) = nullptr;

    /// Returns the answer, the kind of the library's exception, or the text of another exception.
    std::string answer(Subject& subject) const;
};

/// Every public operation of a camera and of the camera list.
const std::vector<PublicCall>& allPublicCalls();

} // namespace QuillTool::Conformance
