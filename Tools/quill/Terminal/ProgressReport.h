// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include <CLI/CLI.hpp>

#include "Terminal/Output.h"

namespace QuillTool {

/// How somebody wants to be told of progress.
struct ProgressOptions {
    bool quiet = false;
    bool json = false;

    void describe(CLI::App& parser);
};

/// Tells how far a long piece of work has come, stage by stage: on a terminal in one line that is redrawn, elsewhere in
/// a line every ten percent, both on standard error; or in JSON objects, one a line, on standard output.
class ProgressReport {
public:
    /// @param subject  the beginning of every line, such as "camera 90001"
    ProgressReport(Output& output, const std::string& subject, const ProgressOptions& options);
    ProgressReport(const ProgressReport&) = delete;
    ProgressReport& operator=(const ProgressReport&) = delete;
    /// Leaves the line where it stands.
    ~ProgressReport();

    /// @param done  0 to 1; what is less than before in the same stage is not told
    void update(std::string_view stage, double done);
    /// Ends with the one word for how it went and, without JSON, with the sentence that says so.
    void finish(std::string_view result, const std::string& sentence, const Json& details = Json::object());
    /// The same for work that failed. Without JSON nothing is said: the error that follows tells it.
    void fail(std::string_view result, const Json& details = Json::object());

private:
    enum class Form { None, Bar, Lines, Json };

    static Form formOf(const ProgressOptions& options);
    void draw(bool atOnce);
    void endLine();
    /// What nobody reads, or what cannot be written, does not end the work: the rest is not told.
    void printJson(const Json& line);

    Output& m_Output;
    std::string m_Subject;
    Form m_Form;
    std::string m_Stage;
    int m_Percent = 0;
    int m_ToldPercent = 0;
    std::size_t m_Drawn = 0; ///< columns of the line that is being redrawn; 0 for none
    std::chrono::steady_clock::time_point m_LastDrawing{};
};

} // namespace QuillTool
