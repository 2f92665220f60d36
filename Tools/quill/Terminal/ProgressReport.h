// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "Terminal/Output.h"
#include "Terminal/ParserFwd.h"

namespace QuillTool {

/// Options for the report of progress.
struct ProgressOptions {
    bool quiet = false;
    bool json = false;

    void describe(CLI::App& parser);
};

/// Reports the progress of long work, stage by stage: on standard error, as a bar on a terminal or else as a line every
/// ten percent; or on standard output, as one JSON object a line.
class ProgressReport {
public:
    /// @param subject  begins every line, such as "camera 90001"
    ProgressReport(Output& output, const std::string& subject, const ProgressOptions& options);
    ProgressReport(const ProgressReport&) = delete;
    ProgressReport& operator=(const ProgressReport&) = delete;
    /// Ends the line without a result.
    ~ProgressReport();

    /// @param done  0 to 1; a smaller value than before in the same stage is ignored
    void update(std::string_view stage, double done);
    /// Ends the report with the result in one word (JSON) or in a sentence.
    void finish(std::string_view result, const std::string& sentence, const Json& details = Json::object());
    /// Does the same for failed work. Prints only JSON: the error that follows has the sentence.
    void fail(std::string_view result, const Json& details = Json::object());

private:
    enum class Form { None, Bar, Lines, Json };

    static Form formOf(const ProgressOptions& options);
    void draw(bool atOnce);
    void endLine();
    /// Stops reporting if the output is closed or cannot be written; the work continues.
    void printJson(const Json& line);

    Output& m_Output;
    std::string m_Subject;
    Form m_Form;
    std::string m_Stage;
    int m_Percent = 0;
    int m_ReportedPercent = 0;
    std::size_t m_Drawn = 0; ///< columns of the redrawn line; 0 for none
    std::chrono::steady_clock::time_point m_LastDrawing{};
};

} // namespace QuillTool
