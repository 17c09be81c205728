#pragma once

#include "Velto/Analysis/Label.h"
#include "Velto/Analysis/Touch.h"

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// How well touches agree with what was meant.

namespace VeltoTouch::Analysis {

// What became of a label.
//
//   Found         a meant gesture, in its regions
//   WrongKind     another gesture
//   WrongRegion   the meant kind on another path
//   Missed        no touch, or one that became no gesture
//   Quiet         a palm or brush that gave nothing
//   False         a palm or brush that gave a gesture
enum class Result : std::uint8_t { Found, WrongKind, WrongRegion, Missed, Quiet, False };

inline constexpr std::array<std::string_view, 6> kResultNames{"found",  "wrongKind", "wrongRegion",
                                                              "missed", "quiet",     "false"};
[[nodiscard]] constexpr std::string_view nameOf(Result result) noexcept {
    return kResultNames[static_cast<std::size_t>(result)];
}

[[nodiscard]] constexpr bool isRight(Result result) noexcept {
    return result == Result::Found || result == Result::Quiet;
}

// `touch` is the one that was paired with the label, null if there is none.
[[nodiscard]] Result resultOf(const Label& label, const Touch* touch);

struct LabelScore {
    // A touch in the time of a label that has none, and the label that it was paired with.
    struct Taken {
        std::size_t touch = 0;
        std::size_t label = 0;
    };

    std::size_t label = 0; // its index
    std::string gesture;
    std::string region;
    std::string endRegion; // of a slide; else empty
    std::uint64_t startNs = 0;
    std::uint64_t endNs = 0;
    Result result = Result::Missed;
    std::optional<std::size_t> touch = {}; // number of the touch that was paired with it
    std::optional<Rule> reason = {};       // why the touch became no gesture
    std::optional<MovedBy> movedBy = {};   // what moved the region, if it is wrong
    std::optional<Outcome> became = {};    // the other kind, if it is wrong
    std::optional<Check> decidedBy = {};   // the check that made it so; none if a setting changed within the touch
    std::optional<double> delayMs = {};    // if found: from the label's start to the hold, from its end to the tap
    std::optional<Taken> taken = {};       // if missed without a touch because of another label
};

// A tap or hold that nobody meant.
struct Stray {
    std::size_t touch = 0;
    Outcome gesture = Outcome::Tap;
    PixelRegion region = PixelRegion::None;
    std::uint64_t startNs = 0;
    std::uint64_t endNs = 0;
};

struct RecordingScore {
    std::string file;
    std::uint64_t durationNs = 0;
    std::vector<LabelScore> labels = {};
    std::vector<Stray> strays = {};
    std::string error = {}; // why it could not be scored; empty if it was
};

// Returns the scores of a recording's labels, in their order, and its strays. Spoiled labels and their touches are left
// out. Both lists are in time order.
[[nodiscard]] RecordingScore scoreOf(const std::vector<Label>& labels, const std::vector<Touch>& touches);

// Counts over many recordings. The memory of a total grows with the delays alone, 8 bytes a gesture that was found.
class ScoreTotal {
public:
    struct Counts {
        std::uint64_t labels = 0;
        std::array<std::uint64_t, kResultNames.size()> results{}; // in the order of Result

        void add(Result result) noexcept {
            ++labels;
            ++results[static_cast<std::size_t>(result)];
        }
        [[nodiscard]] std::uint64_t of(Result result) const noexcept {
            return results[static_cast<std::size_t>(result)];
        }
    };
    struct Delays {
        double medianMs = 0;
        double p95Ms = 0;
    };

    void add(const RecordingScore& recording);

    [[nodiscard]] std::uint64_t recordings() const noexcept { return _recordings; } // failed ones included
    [[nodiscard]] std::uint64_t failed() const noexcept { return _failed; }
    [[nodiscard]] double hours() const noexcept { return static_cast<double>(_durationNs) / 3.6e12; }
    [[nodiscard]] const Counts& counts() const noexcept { return _counts; }
    [[nodiscard]] std::uint64_t strays() const noexcept { return _strays; }
    // Gestures that should not be, false ones and strays: how many, and how many an hour; nothing if no time was
    // recorded.
    [[nodiscard]] std::uint64_t falseGestures() const noexcept { return _counts.of(Result::False) + _strays; }
    [[nodiscard]] std::optional<double> falsePerHour() const noexcept;
    // Returns the number of labels of a tap, hold or slide.
    [[nodiscard]] std::uint64_t meant() const noexcept { return _meant; }
    // Returns the share of the meant gestures that were found; 1 without any.
    [[nodiscard]] double recall() const noexcept;
    // Nearest rank; nothing without any.
    [[nodiscard]] std::optional<Delays> holdDelays() const { return delaysOf(_holdDelaysMs); }
    [[nodiscard]] std::optional<Delays> tapDelays() const { return delaysOf(_tapDelaysMs); }

    using ByRegion = std::map<std::string, Counts>;
    [[nodiscard]] const std::map<std::string, ByRegion>& byGesture() const noexcept { return _byGesture; }

private:
    void add(const LabelScore& label);
    [[nodiscard]] static std::optional<Delays> delaysOf(std::vector<double> delaysMs);

    std::uint64_t _recordings = 0;
    std::uint64_t _failed = 0;
    std::uint64_t _durationNs = 0;
    std::uint64_t _strays = 0;
    std::uint64_t _meant = 0;
    Counts _counts;
    std::map<std::string, ByRegion> _byGesture;
    std::vector<double> _holdDelaysMs;
    std::vector<double> _tapDelaysMs;
};

} // namespace VeltoTouch::Analysis
