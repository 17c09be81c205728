#pragma once

#include "Platform/Testing/LogCapture.h"
#include "Plugin/Pipeline/Pipeline.h"
#include "Tests/Reference/Pipeline.h"

#include <array>
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

    void setCounters(std::uint64_t count); // of gestures and of resets, of both

    // Each gives the name of the first thing that differs, or nothing.
    [[nodiscard]] std::string differenceAfterFrame() const; // state of recognizer and pipeline
    [[nodiscard]] std::string differenceAfterStep();        // and what the callbacks were handed since the last step
    [[nodiscard]] std::string differenceOfStamps(std::uint64_t time,
                                                 std::size_t count); // of a batch of that many events
    [[nodiscard]] std::string differenceOfLog() const;

private:
    // A call of a callback of ours in the reference's form, values beside it.
    struct Call {
        Reference::Call call;
        Ref<Value> value;
    };
    [[nodiscard]] std::string differenceOfCounters();
    void add(Reference::Call call, const Ref<Value>& value = nullptr);

    Pipeline& _ours;
    Reference::Pipeline& _theirs;
    std::optional<LogCapture> _log;
    std::vector<Call> _calls;
    std::array<std::uint64_t, 2> _sumsOfCounters{}; // ours and theirs, when they were last compared
};

} // namespace VeltoTouch::Tests
