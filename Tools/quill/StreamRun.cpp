#include "StreamRun.h"

#include "PropertyAccess.h"

namespace QuillTool {

void StreamRun::describe(CLI::App& parser) {
    parser.add_option("--set", m_Assignments, "Property to write first, as NAME=VALUE; may be repeated")
        ->take_all()
        ->expected(1);
    parser.add_flag("--still", m_Still, "Single captures instead of video");
}

void StreamRun::prepare(Output& output, const SelectedCamera& camera) const {
    writeProperties(output, camera, m_Assignments);
    if (m_Still) {
        writeProperty(output, camera, CameraInterface::PropertyNames::kStreamingMode, "Still");
    }
}

void StreamRun::start(const SelectedCamera& camera) {
    camera.attempt("it cannot stream", [&] { camera->startStream(); });
}

void StreamRun::end(const SelectedCamera& camera) {
    if (camera->isStreaming()) {
        camera.attempt("its stream cannot be stopped", [&] { camera->stopStream(); });
    }
}

} // namespace QuillTool
