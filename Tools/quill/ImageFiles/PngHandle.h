// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <csetjmp>
#include <stdexcept>

#include <png.h>

namespace QuillTool {

/// Owns libpng's structures and turns its errors into exceptions. libpng leaves a failed call with longjmp(), which
/// must not skip a destructor: every call of libpng that can fail goes through run().
class PngHandle {
public:
    enum class Use { Reading, Writing };

    /// Suppresses warnings. Limits both sides to a million pixels.
    /// @throws std::bad_alloc
    explicit PngHandle(Use use);
    PngHandle(const PngHandle&) = delete;
    PngHandle& operator=(const PngHandle&) = delete;
    ~PngHandle();

    /// Calls @p action with the two structures. Neither the action nor a callback that libpng makes meanwhile may throw
    /// or, where libpng can fail, have local objects with destructors.
    /// @throws std::runtime_error  message of libpng
    template <typename Action>
    void run(const Action& action) {
        if (!attempt(action)) {
            throw std::runtime_error(m_Message.data());
        }
    }

private:
    using Message = std::array<char, 128>;

    /// The frame to which longjmp() returns. Has no locals that it could damage.
    template <typename Action>
    bool attempt(const Action& action) {
        if (setjmp(png_jmpbuf(m_Png)) != 0) { // NOLINT(cert-err52-cpp): libpng's only way to report an error
            return false;
        }
        action(m_Png, m_Info);
        return true;
    }

    void destroy();
    static void onError(png_structp png, png_const_charp text);
    static void onWarning(png_structp png, png_const_charp text);

    Use m_Use;
    Message m_Message{};
    png_structp m_Png = nullptr;
    png_infop m_Info = nullptr;
};

} // namespace QuillTool
