#include "Velto/Page/AccelSamples.h"

#include "Plugin/Recording/AccelMetadata.h"
#include "Velto/Analysis/Members.h"
#include "Velto/Page/Column.h"
#include "Velto/Page/JSONText.h"

#include <algorithm>
#include <cstddef>
#include <span>

#include <fmt/format.h>

namespace VeltoTouch::Page {

using namespace Analysis;

AccelSamples::AccelSamples(const std::list<Frame>& frames) {
    for (const Frame& frame : frames) {
        const auto* sample = as<Dictionary>(frame.value);
        if (frame.type != Frame::Type::Metadata || frame.key != AccelMetadata::kKey || sample == nullptr)
            continue;
        const auto x = doubleUnder(*sample, "X");
        const auto y = doubleUnder(*sample, "Y");
        const auto z = doubleUnder(*sample, "Z");
        if (!x || !y || !z)
            continue;
        _ns.push_back(frame.timestampNs - frames.front().timestampNs);
        _axes[0].push_back(static_cast<float>(*x));
        _axes[1].push_back(static_cast<float>(*y));
        _axes[2].push_back(static_cast<float>(*z));
    }
}

std::string AccelSamples::object(std::uint64_t fromNs, std::uint64_t toNs) const {
    const auto begin = std::ranges::lower_bound(_ns, fromNs);
    const auto count = static_cast<std::size_t>(std::ranges::upper_bound(begin, _ns.end(), toNs) - begin);
    const auto first = static_cast<std::size_t>(begin - _ns.begin());
    return fmt::format(R"({{"rows":{},"ns":"{}","axes":{}}})", count, timesColumn(std::span(_ns).subspan(first, count)),
                       arrayOf(_axes, [&](const auto& axis) {
                           return '"' + floatsColumn(std::span(axis).subspan(first, count)) + '"';
                       }));
}

} // namespace VeltoTouch::Page
