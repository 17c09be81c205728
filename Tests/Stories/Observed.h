#pragma once

#include "Pipeline/Pipeline.h"
#include "Platform/Log.h"
#include "Recording/Frame.h"
#include "Tests/Reference/Container.h"
#include "Tests/Stories/Clock.h"
#include "Tests/Stories/Values.h"
#include "Tests/Support/Reports.h"

#include <list>
#include <optional>
#include <string>
#include <vector>

namespace VeltoTouch::Tests {

// A pipeline and the reference's, and what can be seen of both.
class Observed {
public:
    Observed(Pipeline& ours, Reference::Pipeline& theirs, bool isLogged);

    // Installs the callbacks whose bits are set, in the order of `Pipeline`, and clears the others.
    void install(std::uint32_t callbacks);

    // Each gives the name of the first thing that differs, or nothing.
    [[nodiscard]] std::string differenceAfterFrame() const; // state of recognizer and pipeline
    [[nodiscard]] std::string differenceAfterStep();        // and what the callbacks were handed since the last step
    [[nodiscard]] std::string differenceOfLog() const;

private:
    // A call of a callback of ours in the reference's form, values beside it.
    struct Call {
        Reference::Call call;
        Ref<Value> value;
        std::uint32_t resetCount = 0; // the pipeline's at that moment
        std::uint32_t lastFrameNumber = 0;
    };
    void add(Reference::Call call, const Ref<Value>& value = nullptr);

    Pipeline& _ours;
    Reference::Pipeline& _theirs;
    std::optional<LogCapture> _log;
    std::vector<Call> _calls;
};

[[nodiscard]] std::string differenceOfFrames(const std::list<Frame>& ours, const std::list<Reference::Frame>& theirs);

} // namespace VeltoTouch::Tests
