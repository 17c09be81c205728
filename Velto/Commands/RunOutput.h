#pragma once

#include "Platform/Value.h"
#include "Velto/Options/Devices.h"
#include "Velto/Output/GestureText.h"

#include <cstdint>
#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace VeltoTouch::Velto {

// The standard output of `velto run`, as JSON Lines or as a table for people. Begun and ended on one thread; gestures
// arrive in between on another.
class RunOutput {
public:
    using Property = std::pair<std::string, Ref<Value>>; // never nil

    // The figures at the end of a run.
    struct Ending {
        HostTime duration{}; // since the start of scheduling
        std::uint64_t reports = 0;
        std::vector<Property> properties; // that were asked for
        Ref<Value> debugInfo;
        Ref<Value> eventStats;
    };

    // `failureHandler` is called if a gesture cannot be written, on the thread that tried.
    RunOutput(bool asLines, const DeviceChoice& device, std::function<void()> failureHandler);

    // Throws what writeStandardOutput does.
    void begin();
    // Writes a gesture immediately. The first failure is kept; later gestures are only counted.
    void add(const Gesture& gesture) noexcept;
    // Throws the first failure, of now or before.
    void end(const Ending& ending);

private:
    void appendLines(std::string& text, const Ending& ending) const;
    void appendTable(std::string& text, const Ending& ending) const;

    const bool _asLines;
    const std::string _file; // the member of each line
    const std::unique_ptr<GestureText> _gestures;
    const std::function<void()> _failureHandler;
    std::uint64_t _events = 0;
    std::exception_ptr _failure;
};

} // namespace VeltoTouch::Velto
