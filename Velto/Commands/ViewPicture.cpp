#include "Velto/Commands/ViewPicture.h"

#include "Plugin/Algs/Pixel.h"
#include "Plugin/Reports/Regions.h"
#include "Plugin/Shared/ImageText.h"
#include "Velto/Output/Terminal.h"
#include "Velto/Output/TouchText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using Bench::Moment;
using Ink = Screen::Ink;
using Style = Screen::Style;

constexpr int kLeastRows = 24;
constexpr int kLeastColumns = 80;

constexpr Style kBold{.ink = Ink::Plain, .isBold = true};
constexpr Style kDone{.ink = Ink::Green, .isBold = true};
constexpr Style kRefused{.ink = Ink::Red, .isBold = true};

// The picture of the surface, and what stands beside it.
constexpr int kSurfaceRow = 3;
constexpr int kSurfaceColumn = 1;
constexpr int kPanelColumn = 49;
constexpr int kTouchesRow = kSurfaceRow + static_cast<int>(Util::kPadLayout.size()) + 1;
constexpr std::size_t kTouchesShown = 5;

// In the middle of the picture, where there is room: a row of its layout.
struct RegionPlace {
    PixelRegion region;
    int row;
};
constexpr std::array<RegionPlace, 3> kRegionPlaces{
    {{PixelRegion::VolumeUp, 2}, {PixelRegion::PlayPause, 7}, {PixelRegion::VolumeDown, 10}}};
constexpr int kMiddleColumn = kSurfaceColumn + 24;

// A column of the layout on the screen, where a pad takes more room than there.
constexpr int columnOf(std::size_t layoutColumn) noexcept {
    return kSurfaceColumn + static_cast<int>(layoutColumn * 5 / 4);
}

Style padStyle(const Moment::Pad& pad, float threshold) noexcept {
    const auto value = static_cast<float>(pad.value);
    if (pad.isOn)
        return {.ink = Ink::Green, .isBold = true, .isReverse = true};
    if (value > threshold)
        return {.ink = Ink::Yellow, .isBold = true};
    if (value > threshold * Pixel::kHysteresis)
        return {.ink = Ink::Yellow};
    return {.ink = pad.value > kNoiseFloor ? Ink::Cyan : Ink::Plain};
}

class Picture {
public:
    Picture(Screen& screen, const Bench::Observation& observation, std::size_t moment, const ViewState& state)
        : _screen(screen), _observation(observation), _number(moment), _moment(observation.moment(moment)),
          _state(state) {}

    void draw() {
        drawStatus();
        drawSurface();
        drawTouch();
        drawScore();
        drawGroup();
        drawRegions();
        drawTouches();
    }

private:
    void panel(int row, std::string_view text, Style style = {}) {
        _screen.put(kSurfaceRow + row, kPanelColumn, text, style);
    }

    void drawStatus() {
        const auto rate = _observation.rateHz(_number);
        std::string text =
            fmt::format("{:8.2f} s  frame {:<8} {:>6}/s  gaps {}", Seconds(_moment.time).count(),
                        _moment.image.frameNumber, rate ? fmt::format("{:.1f}", *rate) : "-", _moment.gaps);
        if (_moment.resets > 0)
            text += fmt::format("  resets {}", _moment.resets);
        if (_moment.invalidReports > 0)
            text += fmt::format("  invalid {}", _moment.invalidReports);
        _screen.put(1, 0, text);
    }

    void drawSurface() {
        for (std::size_t row = 0; row < Util::kPadLayout.size(); ++row) {
            const std::string_view layout = Util::kPadLayout[row];
            for (std::size_t i = layout.find_first_not_of(' '); i != std::string_view::npos;
                 i = layout.find_first_not_of(' ', layout.find(' ', i)))
                drawPad(kSurfaceRow + static_cast<int>(row), columnOf(i), padOf(layout[i]));
        }
        for (const auto& [region, row] : kRegionPlaces) {
            const std::string_view name = nameOf(region);
            _screen.put(kSurfaceRow + row, kMiddleColumn - static_cast<int>(name.size()) / 2, name, styleOf(region));
        }
    }
    void drawPad(int row, int column, std::size_t pad) {
        const Moment::Pad& state = _moment.pads[pad];
        const int value = _state.showsRaw ? int{_moment.image.padRaw[pad]} : state.value;
        _screen.put(row, column, fmt::format("{}{:>5}{}", letterOf(pad), value, state.isOn ? '*' : ' '),
                    padStyle(state, _moment.activationThreshold));
    }

    [[nodiscard]] bool isActive(PixelRegion region) const noexcept {
        return _moment.contact && _moment.contact->region == region;
    }
    [[nodiscard]] Style styleOf(PixelRegion region) const noexcept {
        return isActive(region) ? Style{.ink = Ink::Green, .isBold = true} : Style{.ink = Ink::Blue};
    }

    void drawTouch() {
        if (!_moment.contact) {
            panel(0, _moment.isReset                              ? "the firmware was reset"
                     : _moment.state == Moment::State::AboveNoise ? "no touch, but above noise"
                                                                  : "no touch");
            return;
        }
        const Moment::Contact& contact = *_moment.contact;
        panel(0, fmt::format("touch {}: {}", contact.number, stateText()), stateStyle());
        panel(1, fmt::format("{}, peak {:.0f} on {}", nameOf(contact.region), static_cast<double>(contact.peak.value),
                             contact.peak.pixel));
        panel(2, fmt::format("{} ms, a hold beyond {} ms", contact.elapsedMs, _moment.holdTimeoutMs));
    }
    [[nodiscard]] std::string_view stateText() const noexcept {
        switch (_moment.state) {
        case Moment::State::Holding:
            return "holding";
        case Moment::State::Suppressed:
            return "hold suppressed";
        default:
            return "touching";
        }
    }
    [[nodiscard]] Style stateStyle() const noexcept {
        switch (_moment.state) {
        case Moment::State::Holding:
            return kDone;
        case Moment::State::Suppressed:
            return kRefused;
        default:
            return kBold;
        }
    }

    // A bar from the bound of a hold to the score, between the score's limits.
    void drawScore() {
        constexpr int kCells = 19;
        const auto cellOf = [this](float score) {
            const float share = (score + _moment.touchScoreLimit) / (2 * _moment.touchScoreLimit);
            return std::isfinite(share) ? std::clamp(static_cast<int>(std::lround(share * (kCells - 1))), 0, kCells - 1)
                                        : 0;
        };
        const int bound = cellOf(_moment.holdScoreThreshold);
        const int score = cellOf(_moment.touchScore);
        std::string bar(kCells, '.');
        for (int i = std::min(bound, score); i <= std::max(bound, score); ++i)
            bar[static_cast<std::size_t>(i)] = '=';
        bar[static_cast<std::size_t>(bound)] = '|';
        const bool isHold = _moment.touchScore >= _moment.holdScoreThreshold;
        panel(4, fmt::format("touch score {:+.1f}, hold from {:.0f}", static_cast<double>(_moment.touchScore),
                             static_cast<double>(_moment.holdScoreThreshold)));
        const auto limit = static_cast<double>(_moment.touchScoreLimit);
        panel(5, fmt::format("{:+5.0f}[{:{}}]{:+.0f}", -limit, "", kCells, limit));
        _screen.put(kSurfaceRow + 5, kPanelColumn + 6, bar, {.ink = isHold ? Ink::Green : Ink::Red, .isBold = true});
    }

    void drawGroup() {
        panel(7,
              fmt::format("strongest group {:<6} {:>5}{}", _moment.strongestGroup, _moment.groupValue,
                          _moment.isGroupOn ? '*' : ' '),
              _moment.isGroupOn ? kBold : Style{});
    }

    // Each with its strongest pad.
    void drawRegions() {
        int row = 9;
        for (const RegionRow& region : kRegionsWithPads) {
            const auto strongest = std::ranges::max_element(
                region.pads, {}, [this](char letter) { return _moment.pads[padOf(letter)].value; });
            panel(row++,
                  fmt::format("{} {:<10} {} {:>5}", isActive(region.region) ? '>' : ' ', region.name, *strongest,
                              _moment.pads[padOf(*strongest)].value),
                  styleOf(region.region));
        }
        panel(row, fmt::format("threshold {:.0f}, time-out {} ms", static_cast<double>(_moment.activationThreshold),
                               _moment.holdTimeoutMs));
    }

    // The newest first.
    void drawTouches() {
        const auto& decisions = _observation.decisions();
        auto decision = std::ranges::upper_bound(decisions, _number, {}, &Bench::Observation::Decision::moment);
        int row = kTouchesRow;
        for (std::size_t shown = 0; shown < kTouchesShown && decision != decisions.begin(); ++shown)
            drawTouchLine(row++, (--decision)->touch);
    }
    void drawTouchLine(int row, const Analysis::Touch& touch) {
        const std::string start =
            fmt::format("{:>4} {:>8.2f} s {:>5.0f} ms  {:<10} ", touch.number, static_cast<double>(touch.startNs) / 1e9,
                        touch.durationMs(), nameOf(touch.region));
        _screen.put(row, 0, start);
        _screen.put(row, static_cast<int>(start.size()), verdictText(touch),
                    {.ink = isGesture(touch) ? Ink::Green : Ink::Red});
    }

    Screen& _screen;
    const Bench::Observation& _observation;
    const std::size_t _number;
    const Moment& _moment;
    const ViewState& _state;
};

void drawFrame(Screen& screen, const ViewState& state) {
    const std::string name = printable(state.name);
    screen.put(0, 0, std::string(static_cast<std::size_t>(screen.columns()), ' '),
               {.ink = Ink::Plain, .isReverse = true});
    screen.put(0, 1, fmt::format("{}   settings: {}", name, state.settings),
               {.ink = Ink::Plain, .isBold = true, .isReverse = true});
    const int right = screen.columns() - static_cast<int>(state.progress.size()) - 1;
    screen.put(1, right, state.progress, {.ink = state.isPaused ? Ink::Yellow : Ink::Green, .isBold = true});
    screen.put(screen.rows() - 2, 1, printable(state.message), {.ink = Ink::Yellow});
    screen.put(screen.rows() - 1, 1, state.keys);
}

} // namespace

void drawView(Screen& screen, const Bench::Observation& observation, std::size_t moment, const ViewState& state) {
    screen.clear();
    if (screen.rows() < kLeastRows || screen.columns() < kLeastColumns) {
        screen.put(0, 0, fmt::format("{} x {} is wanted,", kLeastColumns, kLeastRows));
        screen.put(1, 0, fmt::format("here is {} x {}.", screen.columns(), screen.rows()));
        screen.put(2, 0, "q quits");
        return;
    }
    drawFrame(screen, state);
    if (moment >= observation.firstKept() && moment < observation.end())
        Picture(screen, observation, moment, state).draw();
    else
        screen.put(kSurfaceRow, kSurfaceColumn, "no image yet");
}

} // namespace VeltoTouch::Velto
