#pragma once

#include "Plugin/Reports/InputReport.h"
#include "Tests/Reference/Value.h"

#include <array>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

// What happens to a recording with a pipeline behind it, step by step. A story is told by `tellStory`, or written in a
// test by hand in the form in which a failing one is printed.

namespace VeltoTouch::Tests {

using StoryValue = Reference::Value; // empty is nil

constexpr std::uint64_t kStoryStepNs = 10'000'000; // of the host, from a step to the next

namespace Steps {

using Signals = std::array<std::int16_t, kPadCount>;

// `count` images with the same signals; frame number and device time go on by these after each.
struct Images {
    std::uint32_t frame = 0;
    std::uint32_t timeMs = 0;
    Signals signals{};
    std::uint32_t count = 1;
    std::uint32_t frameStep = 1;
    std::uint32_t timeStepMs = 10;
};
struct Report {
    std::vector<std::uint8_t> bytes;
};
struct Setting {
    std::string key;
    StoryValue value;
};
struct Metadata {
    std::string key;
    StoryValue value;
};
struct Read { // a key of the pipeline
    std::string key;
};
struct Clock { // the host's, in ticks; every report, setting and metadata takes 10 ms of it
    std::uint64_t ticks = 0;
};
struct Callbacks { // which of the nine are installed, a bit each, in the pipeline's order
    std::uint32_t installed = 0;
};
struct Bound {
    std::uint64_t count = 0;
};
struct Sort {};
struct Copy {};  // the recording goes on as a copy of itself
struct MoveOut { // all that was recorded is moved to another recording; this one goes on empty
    bool isAssigned = false;
};
struct CopySome { // a copy in pieces goes on by so many frames; when it is complete, the recording goes on as the copy
    std::size_t count = 1;
};
struct WriteAndRead {}; // and as what is read from its container
struct PlayReset {};
struct Play {
    float speed = 1;
    std::uint32_t count = 1;
};

struct Counters { // all counters of gestures and of resets are set to it
    std::uint64_t count = 0;
};
struct Batch { // so many events of another's are handed out by the pipeline
    std::size_t count = 1;
};

} // namespace Steps

using Step =
    std::variant<Steps::Images, Steps::Report, Steps::Setting, Steps::Metadata, Steps::Read, Steps::Clock,
                 Steps::Callbacks, Steps::Bound, Steps::Sort, Steps::Copy, Steps::WriteAndRead, Steps::PlayReset,
                 Steps::Play, Steps::MoveOut, Steps::CopySome, Steps::Counters, Steps::Batch>;

struct Story {
    bool isLogged = false; // whether the recognizer's debug lines are compared too
    std::vector<Step> steps;
};

// The story as the lines of a test.
[[nodiscard]] std::string textOf(const Story& story);

// A string as a literal.
[[nodiscard]] std::string quoted(const std::string& text);

} // namespace VeltoTouch::Tests
