#include "Velto/Output/GestureText.h"

#include "Velto/Output/GestureTable.h"
#include "Velto/Output/Terminal.h"

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

class EventLines final : public GestureText {
public:
    explicit EventLines(std::string_view file) : _file(fileMember(file)) {}

    void add(std::string& text, const Gesture& gesture) override { Analysis::appendEventLine(text, _file, gesture); }

private:
    const std::string _file; // the member of each line
};

class GestureLines final : public GestureText {
public:
    void add(std::string& text, const Gesture& gesture) override { Analysis::appendGestureLine(text, gesture); }
};

class Table final : public GestureText {
public:
    Table(std::string_view title, bool showsHolds)
        : _title(title.empty() ? "" : printable(title) + "\n"), _showsHolds(showsHolds) {}

    [[nodiscard]] std::string heading() const override {
        return _title +
               coloured(Colour::Bold, fmt::format("  {:>10}  {:>8}  {:>10}  {:<16} {}", "time", "lasts", "frame",
                                                  "gesture", "region")) +
               "\n";
    }
    void add(std::string& text, const Gesture& gesture) override {
        if (const auto ended = _gestures.add(gesture))
            text += row(*ended);
        if (const auto hold = _gestures.holdInProgress(); hold && _showsHolds) {
            text += row(*hold);
            text.back() = '\r';
        }
    }
    void finish(std::string& text, HostTime end) override {
        if (const auto cutOff = _gestures.finish(end))
            text += row(*cutOff);
    }
    [[nodiscard]] std::string summary() const override {
        std::string text;
        for (const auto& [name, regions] : _gestures.counts()) {
            for (const auto& [region, count] : regions)
                text += fmt::format("  {:>6} x {} {}\n", count, name, region);
        }
        return text;
    }

private:
    static Colour colourOf(const std::string& name) {
        if (name == "tap" || name == "hold")
            return Colour::Green;
        return name == "rejected" ? Colour::Yellow : Colour::Red;
    }
    static std::string row(const GestureTable::Row& touch) {
        return fmt::format("  {:>8.2f} s  {:>5.0f} ms  {:>10}  {} {}\n", Seconds(touch.start).count(),
                           Milliseconds(touch.end - touch.start).count(), touch.frame,
                           coloured(colourOf(touch.name), fmt::format("{:<16}", touch.name)), touch.region);
    }

    const std::string _title;
    const bool _showsHolds;
    GestureTable _gestures;
};

} // namespace

std::unique_ptr<GestureText> GestureText::eventLines(std::string_view file) {
    return std::make_unique<EventLines>(file);
}

std::unique_ptr<GestureText> GestureText::gestureLines() { return std::make_unique<GestureLines>(); }

std::unique_ptr<GestureText> GestureText::table(std::string_view title, bool showsHolds) {
    return std::make_unique<Table>(title, showsHolds);
}

} // namespace VeltoTouch::Velto
