#pragma once

#include "Velto/Daemon/Bus/Client.h"
#include "Velto/Host/Gesture.h"
#include "Velto/Options/BusOptions.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace VeltoTouch::Velto {

struct Finding {
    enum class Verdict : std::uint8_t { Yes, No, Unasked };
    Verdict verdict = Verdict::Yes;
    std::string text;        // what was found
    std::string advice = {}; // what to do about a no
};

// The way from the device to the key, for `velto doctor`: a check a step, each made once and after those before it,
// as far as the first no. What is wrong with the machine is a finding; a check throws Bus::NoAnswer if the service does
// not answer, and std::runtime_error if it ends meanwhile.
//
// ExaminationDevice.cpp has surface and node, ExaminationService.cpp service and reports, ExaminationTouch.cpp touch
// and gesture, ExaminationKeys.cpp the rest.
class Examination {
public:
    struct Options {
        ServedChoice served;               // a device that is not served may be meant too
        std::chrono::microseconds wait{0}; // for a touch; 0: nobody is asked for one
        std::function<void()> askForTouch;
    };
    explicit Examination(Options options) : _options(std::move(options)) {}

    [[nodiscard]] Finding surface();
    [[nodiscard]] Finding node() const;
    [[nodiscard]] Finding service();
    [[nodiscard]] Finding reports();
    [[nodiscard]] Finding touch();
    [[nodiscard]] Finding gesture();
    [[nodiscard]] Finding keyboard() const;
    [[nodiscard]] Finding key();
    [[nodiscard]] Finding readers() const;

    // What there is to say where a check has thrown Bus::NoAnswer.
    [[nodiscard]] Finding noAnswer() const;

private:
    [[nodiscard]] bool hasNode() const noexcept { return _device.starts_with('/'); }
    [[nodiscard]] bool isServed() const;
    [[nodiscard]] bool isOnSystemBus() const noexcept { return _options.served.bus == Bus::Which::System; }
    [[nodiscard]] std::string unit() const;
    // A subcommand with the options by which it reaches the same service: "velto record --user".
    [[nodiscard]] std::string commandLine(std::string_view subcommand) const;
    [[nodiscard]] Finding notServed() const;
    [[nodiscard]] std::string howToRestart() const;
    [[nodiscard]] std::uint64_t counter(const char* name);
    void watch();
    [[nodiscard]] Finding noTouch();
    [[nodiscard]] Finding noGesture();
    [[nodiscard]] std::string howToGiveKey() const;

    const Options _options;
    std::string _device; // its node, or the name of a made-up one
    std::string _busFailure;
    std::vector<std::string> _served; // on the bus
    std::optional<Bus::Client> _client;
    std::string _keyboard;           // its event node
    std::uint64_t _keysBefore = 0;   // the touch
    bool _wasTouched = false;        // when a touch was asked for
    std::optional<Gesture> _gesture; // that came of it
};

// The checks in their order. Those of one line stand together on the page.
struct ExaminationStep {
    const char* check;
    const char* line;
    std::function<Finding(Examination&)> make;
};
[[nodiscard]] std::vector<ExaminationStep> examinationSteps();

} // namespace VeltoTouch::Velto
