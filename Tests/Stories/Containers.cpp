#include "Tests/Stories/Containers.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace VeltoTouch::Tests {
namespace {

constexpr std::array<std::string_view, 12> kNames{"Version", "Frames", "Reports",    "Type",   "Timestamp", "Key",
                                                  "Value",   "Data",   "ReportData", "Report", "type",      ""};
constexpr std::array<std::string_view, 32> kValues{"null",
                                                   "true",
                                                   "false",
                                                   "0",
                                                   "1",
                                                   "2",
                                                   "3",
                                                   "-1",
                                                   "1.9",
                                                   "2.0",
                                                   "-0.0",
                                                   "1e19",
                                                   "-1e19",
                                                   "1e400",
                                                   "18446744073709551615",
                                                   "1844674407370955161600",
                                                   "01",
                                                   "nan",
                                                   R"("")",
                                                   R"("2")",
                                                   R"("State")",
                                                   R"("InputReport")",
                                                   R"("Metadata")",
                                                   R"("Reset")",
                                                   R"("\u0000")",
                                                   R"("\ud83d\ude00")",
                                                   R"("\ud83d")",
                                                   R"("01 ff ")",
                                                   "[]",
                                                   R"([1,{"a":null}])",
                                                   "{}",
                                                   R"({"X":0.5,"Y":-1})"};
constexpr std::array<std::string_view, 18> kNumberTexts{"+0a ",  "-ff01 ", "-1 ",      "0x1 ", "0x ",   "100 ",
                                                        "ffff ", "10000 ", "zz ",      "  ",   "\\t7 ", "0a0x0b ",
                                                        "1",     "FF ",    "\\u0031 ", "7,",   "0g ",   "G0 "};

class ContainerTeller {
public:
    explicit ContainerTeller(Choices& choices) : _choices(choices) {}

    std::string tell() {
        _version = _choices.below(3);
        _damage = _choices.below(4);
        std::vector<std::string> frames(_choices.below(6));
        std::ranges::generate(frames, [this] { return frame(); });
        std::string text = object({member("Version", isDamaged(4) ? any() : std::to_string(_version)),
                                   member(_version == 0 ? "Reports" : "Frames", '[' + joined(frames) + ']')});
        for (std::uint64_t wounds = isDamaged(3) ? 1 + _choices.below(3) : 0; wounds != 0; --wounds)
            wound(text);
        return text;
    }

private:
    // Few in a container: the first fault hides those behind it.
    bool isDamaged(std::uint64_t oneIn) {
        if (_damage == 0 || !_choices.oneIn(oneIn))
            return false;
        --_damage;
        return true;
    }
    std::string any() { return std::string(_choices.oneOf(kValues)); }

    std::string frame() {
        if (isDamaged(12))
            return any();
        const std::string time = member("Timestamp", std::to_string(_choices.oneIn(4) ? _choices.bits() : _time += 10));
        if (_version == 0)
            return object({time, member("ReportData", reportText())});
        if (_choices.oneIn(2)) {
            std::vector<std::string> members{member("Type", R"("InputReport")"), time,
                                             member(_version == 1 ? "Report" : "Data", reportText())};
            if (isDamaged(8))
                members.push_back(member(_version == 1 ? "Data" : "Report", reportText()));
            return object(std::move(members));
        }
        std::vector<std::string> members{
            member("Type", _choices.oneIn(2) ? R"("State")" : R"("Metadata")"), time,
            member("Key", _choices.oneIn(2) ? R"("Algs.HoldTimeoutMilliseconds")" : R"("k")")};
        if (!_choices.oneIn(4))
            members.push_back(member("Value", any()));
        return object(std::move(members));
    }

    std::string member(std::string_view name, const std::string& value) {
        return fmt::format(R"("{}":{})", isDamaged(16) ? _choices.oneOf(kNames) : name, isDamaged(10) ? any() : value);
    }

    std::string object(std::vector<std::string> members) {
        const auto first = static_cast<std::ptrdiff_t>(_choices.below(members.size()));
        std::rotate(members.begin(), members.begin() + first, members.end());
        if (isDamaged(12))
            members.erase(members.begin());
        if (isDamaged(12) && !members.empty())
            members.insert(members.end(), {member("Value", any()), members.front()});
        return '{' + joined(members) + '}';
    }

    std::string joined(const std::vector<std::string>& parts) {
        return fmt::format("{}", fmt::join(parts, _choices.oneIn(8) ? " ,\n" : ","));
    }

    std::string reportText() {
        std::string text;
        for (std::uint64_t count = _choices.below(12); count != 0; --count)
            text +=
                isDamaged(24) ? std::string(_choices.oneOf(kNumberTexts)) : fmt::format("{:02x} ", _choices.below(256));
        return '"' + text + '"';
    }

    void wound(std::string& text) {
        const std::size_t at = _choices.below(text.size() + 1);
        const std::size_t length = _choices.below(_choices.oneIn(2) ? 4 : 64);
        switch (_choices.below(6)) {
        case 0:
            return text.resize(at);
        case 1:
            text.erase(at, length);
            return;
        case 2:
            text.insert(at, text.substr(at, length));
            return;
        case 3:
            text.insert(at, any());
            return;
        case 4:
            text.insert(at, 1, static_cast<char>(_choices.below(256)));
            return;
        default:
            if (at < text.size())
                text[at] = static_cast<char>(_choices.below(256));
        }
    }

    Choices& _choices;
    std::uint64_t _version = 2;
    std::uint64_t _time = 0;
    std::uint64_t _damage = 0; // how much more of it at most
};

} // namespace

std::string tellContainer(Choices& choices) { return ContainerTeller(choices).tell(); }

} // namespace VeltoTouch::Tests
