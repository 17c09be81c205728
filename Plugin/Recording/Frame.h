#pragma once

#include "Platform/Value.h"

#include <cstdint>
#include <string>
#include <vector>

namespace VeltoTouch {

// One recorded call of a pipeline's input. A copy shares the value.
struct Frame {
    enum class Type : std::uint32_t { State = 0, InputReport = 1, Metadata = 2 };

    Type type = Type::State;
    std::uint64_t timestampNs = 0;    // of the call, host clock
    std::string key;                  // empty for a report
    Ref<Value> value;                 // may be nil; nil for a report
    std::vector<std::uint8_t> report; // report ID first; empty for the others
};

} // namespace VeltoTouch
