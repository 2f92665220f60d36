// SPDX-License-Identifier: Apache-2.0

#include "Terminal/ToolError.h"

#include <algorithm>
#include <array>
#include <new>
#include <string_view>

#include <Quill.h>

namespace QuillTool {

namespace {

using KestrelExceptions::KestrelException;

/// Maps a kind of failure, as returned by who(), to its exit code. Other kinds have the code Failed.
struct FailureCode {
    std::string_view kind;
    ExitCode code;
};

constexpr std::array kFailureCodes{
    FailureCode{"CameraNotFound", ExitCode::NotFound},      FailureCode{"PropertyUnsupported", ExitCode::NotFound},
    FailureCode{"FunctionUnsupported", ExitCode::NotFound}, FailureCode{"StreamTimeout", ExitCode::TimedOut},
    FailureCode{"NetworkTimeout", ExitCode::TimedOut},
};

/// Precedes the reason in a sentence such as "Error with function {Read Flash}: ...".
constexpr std::string_view kSubjectEnd = "}: ";

ExitCode codeOf(const std::exception& failure) {
    const auto* known = dynamic_cast<const KestrelException*>(&failure);
    if (known == nullptr) {
        return ExitCode::Failed;
    }
    const auto* row = std::find_if(kFailureCodes.begin(), kFailureCodes.end(),
                                   [&](const FailureCode& candidate) { return candidate.kind == known->who(); });
    return row == kFailureCodes.end() ? ExitCode::Failed : row->code;
}

/// Maps a part of a technical message to a sentence for people.
struct Translation {
    std::string_view part;
    std::string_view sentence;
};

constexpr std::array kTranslations{
    Translation{"argument out of range", "a number is too large or too small"},
    Translation{"invalid sto", "a text is not a number"}, // stoi, stoul, stof, stod
    Translation{"Method not implemented.", "The camera cannot do this."},
};

} // namespace

std::string readable(std::string_view reason) {
    constexpr std::string_view kParser = "[json.exception.";
    if (reason.substr(0, kParser.size()) == kParser) {
        const std::size_t end = reason.find("] ");
        reason.remove_prefix(end == std::string_view::npos ? 0 : end + 2);
    }
    const auto* row = std::find_if(kTranslations.begin(), kTranslations.end(), [&](const Translation& candidate) {
        return reason.find(candidate.part) != std::string_view::npos;
    });
    return std::string(row == kTranslations.end() ? reason : row->sentence);
}

std::string reasonOf(const std::exception& failure) {
    if (dynamic_cast<const std::bad_alloc*>(&failure) != nullptr ||
        dynamic_cast<const std::length_error*>(&failure) != nullptr) {
        return "out of memory";
    }
    const auto* known = dynamic_cast<const KestrelException*>(&failure);
    if (known == nullptr) {
        return readable(failure.what());
    }
    const std::string reason = known->why();
    const std::size_t subjectEnd = reason.find(kSubjectEnd);
    const bool namesSubject = reason.rfind("Error with ", 0) == 0 && subjectEnd != std::string::npos;
    return namesSubject ? reason.substr(subjectEnd + kSubjectEnd.size()) : reason;
}

std::string subjectOf(const std::exception& failure) {
    const auto* known = dynamic_cast<const KestrelException*>(&failure);
    const std::string reason = known == nullptr ? "" : known->why();
    const std::size_t begin = reason.find('{');
    const std::size_t end = reason.find(kSubjectEnd);
    if (end == std::string::npos || begin > end) {
        return "";
    }
    std::string subject = reason.substr(begin + 1, end - begin - 1);
    subject.erase(subject.find_last_not_of(' ') + 1);
    return subject;
}

ToolError describeFailure(const std::string& tried, const std::exception& failure) {
    return {codeOf(failure), tried + ": " + reasonOf(failure)};
}

} // namespace QuillTool
