#pragma once

#include "Plugin/Recording/PipelineRecording.h"
#include "Velto/Options/App.h"

#include <functional>
#include <string>

// A recording that is read, changed and written.

namespace VeltoTouch::Velto {

struct RewritingOptions {
    std::string file;
    std::string output; // empty: standard output
};

void addRewriting(App& app, RewritingOptions& options);

// The output is of the current version, sorted by time. A failure is reported under the file it belongs to. Returns the
// exit status.
[[nodiscard]] int rewrite(const RewritingOptions& options, const std::function<void(PipelineRecording&)>& change);

} // namespace VeltoTouch::Velto
