#include "Velto/Commands/CollectDisplay.h"

#include "Plugin/Reports/Regions.h"
#include "Plugin/Shared/ImageText.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Screen.h"
#include "Velto/Output/Terminal.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <string_view>
#include <tuple>
#include <utility>

#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

namespace VeltoTouch::Velto {
namespace {

using Bench::Collector;
using Phase = Collector::Phase;

constexpr std::chrono::milliseconds kBeat{50};
constexpr char kNoMoreKeys = static_cast<char>(Collector::Key::Spoiled);
constexpr const char* kChoice = "r repeat, n next: it was done as asked, x leave it spoiled, q quit";

class LineDisplay final : public CollectDisplay {
public:
    LineDisplay(EventLoop& loop, const Collector& collector, std::function<void(char key)> press, bool hasKeys)
        : _loop(loop), _collector(collector), _press(std::move(press)), _hasKeys(hasKeys) {
        loop.addTimer(kBeat, [this] { takeKey(); });
        announce();
    }

    void phaseChanged(const Collector& collector) override {
        switch (collector.phase()) {
        case Phase::Ask:
            return writeStandardOutput("  now\n");
        case Phase::Decide:
            writeStandardOutput(fmt::format("  spoiled: {} ({})\n", collector.fault(), kChoice));
            return _loop.post([this] { takeKey(); }); // not within a call of the collector
        case Phase::Pause:
            return announce();
        case Phase::End:
            return;
        }
    }

private:
    void announce() const {
        const auto& asked = _collector.asked();
        if (const std::size_t current = _collector.current(); current < asked.size())
            writeStandardOutput(fmt::format("{} of {}: {}\n", current + 1, asked.size(), nameOf(asked[current])));
    }
    void takeKey() {
        pollfd input{.fd = STDIN_FILENO, .events = POLLIN, .revents = 0};
        while (_collector.phase() == Phase::Decide && (!_hasKeys || ::poll(&input, 1, 0) > 0)) {
            char key = kNoMoreKeys;
            if (_hasKeys && ::read(STDIN_FILENO, &key, 1) <= 0)
                key = kNoMoreKeys;
            _press(key);
        }
    }

    EventLoop& _loop;
    const Collector& _collector;
    const std::function<void(char key)> _press;
    const bool _hasKeys;
};

class ScreenDisplay final : public CollectDisplay {
public:
    ScreenDisplay(EventLoop& loop, const Collector& collector, std::function<void(char key)> press)
        : _loop(loop), _collector(collector), _press(std::move(press)) {
        loop.addDescriptor(_screen.keys(), [this] { takeKeys(); });
        loop.addDescriptor(_screen.signals(), [this] {
            if (_screen.handleSignals())
                _loop.stop();
            draw();
        });
        loop.addExactTimer(kBeat, [this] { draw(); });
    }

    void phaseChanged(const Collector& /*collector*/) override { draw(); }
    void imageCame(const InputReport::Image& image) override { _image = image; }

private:
    void takeKeys() {
        while (const auto press = _screen.nextPress()) {
            if (press->key == Screen::Key::Letter)
                _press(press->letter);
        }
        if (_screen.isGone())
            _loop.stop();
    }

    void draw() {
        using Ink = Screen::Ink;
        const auto& asked = _collector.asked();
        _screen.clear();
        _screen.put(0, 0,
                    fmt::format("velto collect    {} of {}    labelled {}    spoiled {}",
                                std::min(_collector.current() + 1, asked.size()), asked.size(), _collector.labelled(),
                                _collector.spoiled()));
        if (_collector.current() < asked.size())
            _screen.put(2, 2, nameOf(asked[_collector.current()]), {.ink = Ink::Cyan, .isBold = true});
        drawPhase();
        if (_image)
            drawPads();
        _screen.put(kPadsRow + static_cast<int>(Util::kPadLayout.size()) + 1, 0, keys());
        std::ignore = _screen.show();
    }
    [[nodiscard]] std::string keys() const {
        if (_collector.phase() == Phase::Decide)
            return kChoice;
        const auto last = _collector.last();
        return last ? nameOf(_collector.asked()[*last]) + " is done: r repeat, x spoiled, n right, q quit" : "q quit";
    }
    void drawPhase() {
        using Ink = Screen::Ink;
        const double left = _collector.secondsLeft();
        if (_collector.phase() == Phase::Ask)
            _screen.put(3, 2, left > 0 ? fmt::format("NOW  {:.1f}", left) : "NOW  until the contact ends",
                        {.ink = Ink::Green, .isBold = true});
        else if (_collector.phase() == Phase::Decide)
            _screen.put(3, 2, "spoiled: " + _collector.fault(), {.ink = Ink::Red, .isBold = true});
        else if (_collector.current() < _collector.asked().size())
            _screen.put(3, 2, fmt::format("in {:.1f} s", left), {.ink = Ink::Yellow});
    }
    // Below a heading of two lines.
    void drawPads() {
        const std::string picture = Util::stringFromImage(*_image, false);
        std::string_view rest = picture;
        for (int row = kPadsRow - 2; !rest.empty(); ++row) {
            const std::size_t end = std::min(rest.find('\n'), rest.size());
            if (row >= kPadsRow)
                _screen.put(row, 0, rest.substr(0, end));
            rest.remove_prefix(std::min(end + 1, rest.size()));
        }
    }

    static constexpr int kPadsRow = 5;

    EventLoop& _loop;
    const Collector& _collector;
    const std::function<void(char key)> _press;
    Screen _screen;
    std::optional<InputReport::Image> _image;
};

} // namespace

std::string nameOf(const Surface::Step& gesture) {
    const auto place = [](std::size_t pad) { return rowOf(regionOf(pad)).place; };
    const std::string_view name = Surface::nameOf(gesture.action);
    if (gesture.action == Surface::Action::Palm)
        return std::string(name);
    if (gesture.action == Surface::Action::Slide)
        return fmt::format("{} {} to {}", name, place(gesture.pad), place(gesture.endPad));
    return fmt::format("{} {}", name, place(gesture.pad));
}

std::unique_ptr<CollectDisplay> makeCollectDisplay(EventLoop& loop, const Collector& collector,
                                                   std::function<void(char key)> press, bool hasInput) {
    if (standardOutputIsTerminal() && (!hasInput || ::isatty(STDIN_FILENO) != 0))
        return std::make_unique<ScreenDisplay>(loop, collector, std::move(press));
    return std::make_unique<LineDisplay>(loop, collector, std::move(press), hasInput);
}

} // namespace VeltoTouch::Velto
