#pragma once

#include "Tests/Support/Frames.h"
#include "Tests/Support/TouchFixture.h"
#include "Velto/Analysis/Track.h"

#include <list>

namespace VeltoTouch::Tests {

// A touch surface whose recording can be analysed.
class RecordedSurfaceTest : public TouchTest {
protected:
    RecordedSurfaceTest() {
        surface.pipeline.inputReportObserver = [this](std::uint64_t time, const std::uint8_t* report,
                                                      std::size_t length) {
            frames.push_back(reportFrame({report, report + length}, time));
        };
        surface.pipeline.setStateObserver = [this](std::uint64_t time, const std::string& key,
                                                   const Ref<Value>& value) {
            frames.push_back(setting(key, value, time));
        };
    }

    [[nodiscard]] Analysis::Track track() const { return Analysis::Track(frames); }

    std::list<Frame> frames;
};

} // namespace VeltoTouch::Tests
