// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <string>
#include <vector>

#include "Terminal/Waker.h"

namespace QuillTool {

enum class StandardStream { Input, Output, Error };

/// Prepares the streams before their first use: bytes pass as they are, a console shows UTF-8, no file opened later
/// takes the place of a stream that is closed, and writing what nobody reads fails.
void prepareStandardStreams();

/// The arguments of main() without the program's name, in UTF-8.
std::vector<std::string> programArguments(int argc, char** argv);

bool isTerminal(StandardStream stream);
/// Whether a stream is a terminal that understands the escape sequences of colours.
bool showsColors(StandardStream stream);

/// The value of errno after a C function failed to write; EPIPE if nobody reads what it writes.
int errorOfWriting();

/// Waits for bytes of standard input.
/// @return what is there, nothing of it at the end or after a failure; no value once the waker is awake
std::optional<std::string> readInput(const Waker& waker);

/// Waits until one of the wakers is awake.
/// @return its place
/// @throws OutputClosed  nobody reads standard output any more, where the system says so before the next output
std::size_t waitWhileOutputIsRead(std::initializer_list<const Waker*> wakers);

/// Waits until standard output takes bytes, and writes as many as it takes at once, where the system knows that;
/// otherwise writes some.
/// @return the number of bytes; nothing once one of the wakers is awake
/// @throws OutputClosed  the reader has closed the pipe
/// @throws std::system_error  reason of the operating system
std::optional<std::size_t> writeOutput(const unsigned char* bytes, std::size_t size,
                                       std::initializer_list<const Waker*> wakers);

} // namespace QuillTool
