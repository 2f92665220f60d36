// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "Conformance/Subject.h"

namespace QuillTool::Conformance {

enum class Scope { Camera, Library };
/// Whether a call may leave the camera, or the list, in another state than it found it.
enum class Effect { Keeps, Changes };

/// A public operation with its arguments.
struct PublicCall {
    const char* name;
    Scope scope;
    Effect effect;
    /// Makes the call and gives its answer in a word.
    std::string (*make)(Subject& subject);
    /// Whether the camera has what the call needs; empty: any has.
    bool (*isPossible)(const Subject& subject) = nullptr;

    /// The answer, or the word of the exception that the library threw, or the text of another one.
    std::string answer(Subject& subject) const;
};

/// Every public operation of a camera and of the camera list.
const std::vector<PublicCall>& allPublicCalls();

} // namespace QuillTool::Conformance
