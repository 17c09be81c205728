#pragma once

#include "Platform/Value.h"

#include <cstddef>
#include <cstdint>
#include <string>

// The two interfaces of a pipeline: its input, and its readable state. Objects are owned as their concrete type,
// never through these.

namespace VeltoTouch {

// Input on its way to a pipeline. `timestamp` is the host clock in ticks, as the caller read it when it took the
// input in.
class PipelineInput {
public:
    // Writes one keyed setting. `value` may be nil.
    virtual void setState(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) = 0;
    // Processes one raw input report, report ID first. `report` may be null only with length 0.
    virtual void handleInputReport(std::uint64_t timestamp, const std::uint8_t* report, std::size_t length) = 0;
    // Passes one piece of side information alongside the reports. `value` may be nil.
    virtual void handleMetadata(std::uint64_t timestamp, const std::string& key, const Ref<Value>& value) = 0;

protected:
    ~PipelineInput() = default;
};

class PipelineOutput {
public:
    // Returns the state under `key`; nil for an unknown key.
    [[nodiscard]] virtual Ref<Value> getState(const std::string& key) = 0;

protected:
    ~PipelineOutput() = default;
};

} // namespace VeltoTouch
