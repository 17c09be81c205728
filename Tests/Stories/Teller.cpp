#include "Tests/Stories/Teller.h"

#include "Tests/Stories/Material.h"
#include "Tests/Support/Reports.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace VeltoTouch::Tests {
namespace {

using Json = nlohmann::json;
using Steps::Signals;

class Teller {
public:
    Teller(Choices& choices, std::uint32_t mostImages) : _choices(choices), _mostImages(mostImages) {}

    Story tell(std::size_t stepCount) {
        _isHostile = _choices.oneIn(4);
        _story.isLogged = _choices.oneIn(8);
        if (_story.isLogged)
            stepCount = 1 + stepCount / 2; // the lines of a frame take longer than ten frames
        _frame = _choices.oneIn(4) ? 0x80000000U + static_cast<std::uint32_t>(_choices.below(1000)) : 0;
        _timeMs = static_cast<std::uint32_t>(_choices.oneIn(3) ? _choices.bits() : 1000);
        add(Steps::Clock{_choices.oneIn(8) ? _choices.bits() : 1'000'000'000});
        if (!_choices.oneIn(4))
            add(Steps::Callbacks{0x1FF});
        add(Steps::Bound{_choices.oneIn(3) ? 0 : _choices.below(60)});
        while (_story.steps.size() < stepCount && _choices.canContinue())
            tellNext();
        return std::move(_story);
    }

private:
    void add(Step step) { _story.steps.push_back(std::move(step)); }

    void tellNext() {
        switch (_choices.below(25)) {
        case 0:
            return add(Steps::Setting{settingKey(), value()});
        case 1:
            return add(Steps::Setting{std::string(_choices.oneOf(kSettingKeys)), usualValue()});
        case 2:
            return add(Steps::Metadata{_choices.oneIn(2) ? "Accel" : anyKey(), value()});
        case 3:
            return add(Steps::Read{anyKey()});
        case 4:
            return add(Steps::Report{report()});
        case 5:
            return add(Steps::Report{firmwareEventReport(static_cast<std::uint8_t>(_choices.below(3)))});
        case 6:
            return tellOfRecording();
        case 7:
            return jump();
        case 8:
            return tellOfCounts();
        case 9:
        case 10:
            return idle(1 + static_cast<std::uint32_t>(_choices.below(120)));
        default:
            return touch();
        }
    }

    // A contact that changes a few times while it lasts, and may go over to another one.
    void touch() {
        const auto* contact = &_choices.oneOf(kContacts);
        double strength = 0.4 + 0.1 * static_cast<double>(_choices.below(16));
        for (std::uint64_t part = 1 + _choices.below(5); part != 0; --part) {
            images(signalsOf(*contact, strength),
                   1 + static_cast<std::uint32_t>(_choices.below(_choices.oneIn(3) ? 60 : 8)));
            strength *= 0.5 + 0.1 * static_cast<double>(_choices.below(10));
            if (_choices.oneIn(5))
                contact = &_choices.oneOf(kContacts);
            if (_choices.oneIn(16))
                add(Steps::Setting{settingKey(), usualValue()});
            if (_choices.oneIn(8)) {
                const std::size_t either = _choices.below(2);
                _isSuppressing.at(either) = !_isSuppressing.at(either);
                add(Steps::Setting{std::string(kSettingKeys.at(either)), Json(_isSuppressing.at(either))});
            }
        }
        if (!_choices.oneIn(8))
            idle(1 + static_cast<std::uint32_t>(_choices.below(_choices.oneIn(3) ? 100 : 4)));
    }

    Signals signalsOf(const Contact& contact, double strength) {
        Signals signals{};
        if (_isHostile && _choices.oneIn(4)) {
            for (std::int16_t& signal : signals)
                signal = static_cast<std::int16_t>(_choices.bits());
            return signals;
        }
        if (_choices.oneIn(16)) {
            for (std::uint64_t count = 2 + _choices.below(2); count != 0; --count) {
                const auto& [pad, signal] = _choices.oneOf(kLevelPads);
                signals.at(static_cast<std::size_t>(pad - 'A')) = static_cast<std::int16_t>(signal);
            }
            return signals;
        }
        for (const auto& [pad, signal] : contact) {
            if (pad == 0)
                break;
            signals.at(static_cast<std::size_t>(pad - 'A')) = static_cast<std::int16_t>(signal * strength);
        }
        if (_choices.oneIn(2))
            signals.at(_choices.below(kPadCount)) =
                static_cast<std::int16_t>(static_cast<int>(_choices.below(120)) - 40); // noise, or a second finger
        return signals;
    }

    void idle(std::uint32_t count) { images(_choices.oneIn(6) ? signalsOf(kContacts.back(), 1) : Signals{}, count); }

    [[nodiscard]] bool isBrief() const { return _mostImages < 16; }

    // A story of few images makes up for them by greater steps of time.
    void images(const Signals& signals, std::uint32_t count) {
        const std::uint32_t last = _isHostile ? 0U - 10 : 33;
        const std::array<std::uint32_t, 8> usual{10, 10, 10, 10, 10, 1, 0, last};
        const std::array<std::uint32_t, 8> great{10, 10, 60, 130, 280, 1, 0, last};
        count = 1 + (count - 1) % _mostImages;
        const Steps::Images step{
            _frame, _timeMs, signals, count, _choices.oneIn(64) ? 0U : 1U, _choices.oneOf(isBrief() ? great : usual)};
        _frame += count * step.frameStep;
        _timeMs += count * step.timeStepMs;
        add(step);
    }

    // The device's or the host's clock, or the frame numbers, go elsewhere.
    void jump() {
        const std::array<std::uint32_t, 8> byMs{1, 3, 280, 650, 1000, 100'000, 0U - 500, 0x80000000U};
        switch (_choices.below(4)) {
        case 0:
            _frame += static_cast<std::uint32_t>(_choices.below(5)) - 2;
            return;
        case 1:
            _timeMs += _choices.oneOf(byMs);
            return;
        case 2:
            _frame = static_cast<std::uint32_t>(_choices.bits());
            return;
        default:
            return add(Steps::Clock{_choices.oneIn(2) ? _choices.bits() : _choices.below(10'000'000'000)});
        }
    }

    void tellOfCounts() {
        const std::array<std::uint64_t, 4> counts{0, UINT32_MAX, UINT64_C(1) << 40, UINT64_MAX};
        if (_choices.oneIn(2))
            return add(Steps::Counters{_choices.oneOf(counts)});
        add(Steps::Batch{_choices.below(3)});
    }

    // Between the pieces the recording is changed.
    void copyInPieces() {
        if (_choices.oneIn(2)) { // out of order
            add(Steps::Clock{_choices.below(2'000'000'000)});
            add(Steps::Metadata{"Accel", value()});
        }
        for (std::uint64_t pieces = 1 + _choices.below(4); pieces != 0; --pieces) {
            add(Steps::CopySome{1 + _choices.below(_choices.oneIn(4) ? 2000 : 30)});
            change();
            if (_choices.oneIn(2))
                idle(1);
        }
    }

    void change() {
        switch (_choices.below(7)) {
        case 0:
            return add(Steps::Sort{});
        case 1:
            return add(Steps::Bound{1 + _choices.below(20)});
        case 2:
            return add(Steps::Copy{});
        case 3:
            return add(Steps::MoveOut{_choices.oneIn(2)});
        default:
            return;
        }
    }

    void tellOfRecording() {
        const std::array<float, 9> speeds{
            1,     2, 3, 0.5F, 0, -1, std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity(),
            1e-30F};
        switch (_choices.below(12)) {
        case 0:
            return add(Steps::Bound{_choices.below(40)});
        case 1:
            return add(Steps::Sort{});
        case 2:
            return add(Steps::Copy{});
        case 3:
            return add(Steps::WriteAndRead{});
        case 4:
            return add(Steps::Callbacks{static_cast<std::uint32_t>(_choices.bits()) & 0x1FF});
        case 5:
            return add(Steps::Play{_choices.oneOf(speeds), 1});
        case 6:
        case 7:
        case 8:
        case 9:
            return copyInPieces();
        default:
            add(Steps::PlayReset{});
            add(Steps::Play{_choices.oneOf(speeds), static_cast<std::uint32_t>(1 + _choices.below(100))});
            return change(); // while it plays
        }
    }

    std::string settingKey() {
        std::string key(_choices.oneOf(kSettingKeys));
        if (key.back() == '.')
            key += _choices.oneOf(kIndexTexts);
        return key;
    }
    std::string anyKey() { return _choices.oneIn(2) ? std::string(_choices.oneOf(kOtherKeys)) : settingKey(); }

    // What a host means to write.
    StoryValue usualValue() {
        const std::array<Json, 8> usual{true, false, 250, 500, 120.0, 200.0, 90, 0};
        return _choices.oneOf(usual);
    }

    // Any value, of every kind.
    StoryValue value() {
        switch (_choices.below(14)) {
        case 0:
            return std::nullopt;
        case 1:
            return Json(nullptr);
        case 2:
            return Json(_choices.oneIn(2));
        case 3:
            return Json(_choices.bits());
        case 4:
            return Json(static_cast<std::int64_t>(_choices.bits()));
        case 5:
            return Json("text }]\"{");
        case 6:
            return Json::array({1, 2.5, "x", nullptr});
        case 7:
            return Json{{"X", 0.5}, {"Y", Json::array()}, {"Z", -1}};
        case 8:
            return Json::binary({1, 2});
        case 9:
            return Json(_choices.oneIn(2) ? std::numeric_limits<double>::infinity()
                                          : std::numeric_limits<double>::quiet_NaN());
        case 10:
            return usualValue();
        default:
            return Json(_choices.oneOf(kNumbers));
        }
    }

    // Bytes that may be no report, or one that is longer than it has to be.
    std::vector<std::uint8_t> report() {
        const std::array<std::size_t, 9> lengths{0, 1, 9, 10, 11, 72, 73, 74, 100};
        std::vector<std::uint8_t> bytes(_choices.oneOf(lengths));
        for (std::uint8_t& byte : bytes)
            byte = static_cast<std::uint8_t>(_choices.oneIn(3) ? _choices.below(256) : 0);
        if (!bytes.empty())
            bytes.front() = static_cast<std::uint8_t>(_choices.below(4));
        return bytes;
    }

    Choices& _choices;
    const std::uint32_t _mostImages;
    Story _story;
    std::array<bool, 2> _isSuppressing{true, true}; // holds, taps
    bool _isHostile = false;
    std::uint32_t _frame = 0;
    std::uint32_t _timeMs = 0;
};

} // namespace

Story tellStory(Choices& choices, std::size_t stepCount, std::uint32_t mostImages) {
    return Teller(choices, mostImages).tell(stepCount);
}

} // namespace VeltoTouch::Tests
