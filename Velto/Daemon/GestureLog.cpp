#include "Velto/Daemon/GestureLog.h"

#include "Velto/Daemon/KeyNames.h"
#include "Velto/Daemon/KeyTable.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace VeltoTouch {
namespace {

std::string keyText(const std::vector<std::uint16_t>& keys) {
    std::vector<std::string> names;
    std::ranges::transform(keys, std::back_inserter(names), nameOfKey);
    return keys.empty() ? nameOfKey(kNoKey) : fmt::format("{}", fmt::join(names, ", "));
}

std::string_view endOf(GestureKind kind) {
    switch (kind) {
    case GestureKind::Tap:
        return "tap";
    case GestureKind::HoldEnd:
        return "hold";
    case GestureKind::Cancel:
        return "rejected";
    default:
        return "firmware reset";
    }
}

} // namespace

std::optional<std::string> GestureLog::add(const Gesture& gesture, std::uint16_t key) {
    const bool isHoldAnew = gesture.kind == GestureKind::HoldStart && !_start;
    if (gesture.kind == GestureKind::MayBegin || isHoldAnew) {
        *this = {};
        _start = gesture.time;
    }
    if (key != kNoKey && std::ranges::count(_keys, key) == 0)
        _keys.push_back(key);
    switch (gesture.kind) {
    case GestureKind::MayBegin:
    case GestureKind::HoldStart:
        _region = regionNameOf(gesture);
        return std::nullopt;
    case GestureKind::HoldChange:
        _lastRegion = regionNameOf(gesture);
        return std::nullopt;
    case GestureKind::Tap:
        _region = regionNameOf(gesture);
        break;
    case GestureKind::HoldEnd:
    case GestureKind::Cancel:
    case GestureKind::FirmwareReset:
        break;
    }
    std::string line = lineOf(gesture);
    *this = {};
    return line;
}

std::string GestureLog::lineOf(const Gesture& last) const {
    std::string text(endOf(last.kind));
    if (_start) {
        const std::chrono::duration<double> duration = last.time - *_start;
        text += fmt::format(" {}{}, {:.2f} s", _region,
                            _lastRegion.empty() || _lastRegion == _region ? "" : " > " + _lastRegion, duration.count());
    }
    return text + ": " + keyText(_keys);
}

} // namespace VeltoTouch
