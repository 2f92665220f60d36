// SPDX-License-Identifier: Apache-2.0

#include "Terminal/ProgressReport.h"

#include <algorithm>
#include <cstdio>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include "Terminal/StandardStreams.h"
#include "Terminal/ToolError.h"

namespace QuillTool {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kAll = 100;
constexpr int kLineStep = 10; ///< percent between lines
constexpr int kBarColumns = 20;
constexpr std::chrono::milliseconds kRedrawPeriod{100};

} // namespace

void ProgressOptions::describe(CLI::App& parser) {
    CLI::Option* quietly = parser.add_flag("--quiet", quiet, "Print no progress, only errors");
    parser.add_flag("--json", json, "Print progress and result as JSON objects, one a line, on standard output")
        ->excludes(quietly);
}

ProgressReport::ProgressReport(Output& output, const std::string& subject, const ProgressOptions& options)
    : m_Output(output), m_Subject(subject), m_Form(formOf(options)) {}

ProgressReport::~ProgressReport() {
    endLine();
}

ProgressReport::Form ProgressReport::formOf(const ProgressOptions& options) {
    if (options.json) {
        return Form::Json;
    }
    if (options.quiet) {
        return Form::None;
    }
    return isTerminal(StandardStream::Error) ? Form::Bar : Form::Lines;
}

void ProgressReport::update(std::string_view stage, double done) {
    constexpr double kRoundingError = 1e-9; // 0.29 is less than 29 %
    const int percent = std::clamp(static_cast<int>((done + kRoundingError) * kAll), 0, kAll);
    const bool begins = m_Stage != stage;
    if (begins) {
        m_Stage = stage;
        m_Percent = percent;
        m_ReportedPercent = 0;
    } else if (percent <= m_Percent) {
        return;
    }
    m_Percent = percent;
    const bool reachedStep = begins || percent / kLineStep > m_ReportedPercent / kLineStep;
    switch (m_Form) {
    case Form::None:
        return;
    case Form::Bar:
        return draw(begins || percent == kAll);
    case Form::Lines:
        if (reachedStep) {
            m_Output.notify(fmt::format("{}: {} {} %", m_Subject, m_Stage, percent - percent % kLineStep));
        }
        break;
    case Form::Json:
        printJson(Json{{"stage", m_Stage}, {"done", static_cast<double>(percent) / kAll}});
        break;
    }
    m_ReportedPercent = percent;
}

void ProgressReport::draw(bool atOnce) {
    const Clock::time_point now = Clock::now();
    if (!atOnce && now - m_LastDrawing < kRedrawPeriod) {
        return;
    }
    m_LastDrawing = now;
    const auto full = static_cast<std::size_t>(m_Percent * kBarColumns / kAll);
    const std::string bar = std::string(full, '#') + std::string(kBarColumns - full, '-');
    const std::string line = fmt::format("quill: {}: {:<7} [{}] {:>3} %", m_Subject, m_Stage, bar, m_Percent);
    fmt::print(stderr, "\r{:<{}}", line, m_Drawn);
    static_cast<void>(std::fflush(stderr));
    m_Drawn = line.size();
}

void ProgressReport::endLine() {
    if (m_Drawn != 0) {
        static_cast<void>(std::fputc('\n', stderr));
        m_Drawn = 0;
    }
}

void ProgressReport::finish(std::string_view result, const std::string& sentence, const Json& details) {
    fail(result, details);
    if (m_Form == Form::Bar || m_Form == Form::Lines) {
        m_Output.notify(fmt::format("{}: {}", m_Subject, sentence));
    }
}

void ProgressReport::fail(std::string_view result, const Json& details) {
    endLine();
    if (m_Form == Form::Json) {
        Json line{{"result", result}};
        line.update(details);
        printJson(line);
    }
}

void ProgressReport::printJson(const Json& line) {
    try {
        m_Output.printJsonLine(line);
        m_Output.flush();
    } catch (const OutputClosed&) {
        m_Form = Form::None;
    } catch (const ToolError& failure) {
        m_Form = Form::None;
        m_Output.warn(failure.what());
    }
}

} // namespace QuillTool
