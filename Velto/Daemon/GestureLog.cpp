#include "Velto/Daemon/GestureLog.h"

#include "Velto/Daemon/KeyNames.h"
#include "Velto/Daemon/KeyTable.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace VeltoTouch {
namespace {

std::string keyText(const std::vector<std::uint16_t>& keys) {
    std::vector<std::string> names;
    std::ranges::transform(keys, std::back_inserter(names), nameOfKey);
    return keys.empty() ? nameOfKey(kNoKey) : fmt::format("{}", fmt::join(names, ", "));
}

// Of a touch without a region, a firmware reset, the name alone.
std::string textOf(const TouchGrouping::Touch& touch) {
    std::string text(nameOfEnd(touch.last));
    if (touch.regions.empty())
        return text;
    const std::string_view first = touch.regions.front();
    const std::string_view last = touch.regions.back();
    return text + fmt::format(" {}{}, {:.2f} s", first, last == first ? "" : fmt::format(" > {}", last),
                              Seconds(touch.end - touch.start).count());
}

} // namespace

std::optional<std::string> GestureLog::add(const Gesture& gesture, std::uint16_t key) {
    if (gesture.kind == GestureKind::MayBegin)
        _keys.clear();
    if (key != kNoKey && std::ranges::count(_keys, key) == 0)
        _keys.push_back(key);
    const auto ended = _touches.add(gesture);
    return ended ? std::optional(textOf(*ended) + ": " + keyText(std::exchange(_keys, {}))) : std::nullopt;
}

} // namespace VeltoTouch
