#include "Velto/Analysis/Recovery.h"

#include "Platform/JSON.h"
#include "Plugin/Recording/ContainerFormat.h"
#include "Plugin/Recording/ContainerMigration.h"
#include "Plugin/Recording/ContainerReader.h"
#include "Plugin/Recording/FrameReader.h"
#include "Plugin/Recording/ValueNode.h"
#include "Velto/Analysis/WholeObjects.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <stdexcept>
#include <string>

#include <fmt/format.h>

namespace VeltoTouch::Analysis {
namespace {

using Object = WholeObjects::Object;

constexpr std::uint64_t kVersionCount = Container::kCurrentVersion + 1;

constexpr std::string_view listOf(std::uint64_t version) noexcept {
    return version == 0 ? Container::kReports : Container::kFrames;
}

// The frame that the reader makes of an object in a container of this version.
std::optional<Frame> frameIn(const Ref<Value>& object, std::uint64_t version) {
    try {
        std::vector<Dictionary::Entry> members;
        members.push_back({.key = std::string(Container::kVersion), .value = Number::withUnsignedLong(version)});
        members.push_back({.key = std::string(listOf(version)), .value = makeRef<Array>(std::vector{object})});
        const Ref<Value> container = migrateContainer(makeRef<Dictionary>(std::move(members)));
        const auto [list] = Container::ValueNode(container.get()).members(std::array{Container::kFrames});
        return Container::readFrame(list.elements().front());
    } catch (const std::logic_error&) { // not that version's, or nested too deep
        return std::nullopt;
    }
}

// The versions in which an object is a frame, a bit each. All have a time.
std::uint8_t versionsOf(const Ref<Value>& object) {
    std::uint8_t versions = 0;
    if (as<Dictionary>(object)->find(Container::kTimestamp) == nullptr)
        return versions;
    for (std::uint64_t version = 0; version < kVersionCount; ++version) {
        if (frameIn(object, version))
            versions = static_cast<std::uint8_t>(versions | 1U << version);
    }
    return versions;
}

// The outermost objects that are frames, in the text's order.
std::vector<Object> framesIn(const WholeObjects& objects) {
    std::vector<Object> frames;
    for (const Object& object : objects.inOrder()) {
        if (object.mark != 0 && (frames.empty() || object.begin >= frames.back().end))
            frames.push_back(object);
    }
    return frames;
}

// A part of the text. Each `take...` moves behind what it takes, blanks before it included, or stays.
class Part {
public:
    Part(std::string_view text, std::size_t begin, std::size_t end) : _text(text.substr(0, end)), _at(begin) {}

    bool take(std::string_view wanted) {
        const std::size_t start = std::min(_text.find_first_not_of(kBlanks, _at), _text.size());
        if (!_text.substr(start).starts_with(wanted))
            return false;
        _at = start + wanted.size();
        return true;
    }
    bool takeName(std::string_view name) {
        const std::size_t start = _at;
        if (take(fmt::format("\"{}\"", name)) && take(":"))
            return true;
        _at = start;
        return false;
    }
    std::optional<std::uint64_t> takeNumber() {
        take("");
        std::uint64_t number = 0;
        const auto [end, error] = std::from_chars(_text.data() + _at, _text.data() + _text.size(), number);
        if (error != std::errc())
            return std::nullopt;
        _at = static_cast<std::size_t>(end - _text.data());
        return number;
    }
    bool takeVersion() {
        const std::size_t start = _at;
        if (takeName(Container::kVersion) && takeNumber())
            return true;
        _at = start;
        return false;
    }
    [[nodiscard]] std::size_t place() const noexcept { return _at; }
    [[nodiscard]] bool isAtEnd() { return take("") && _at == _text.size(); }

private:
    static constexpr std::string_view kBlanks = " \t\r\n";
    std::string_view _text;
    std::size_t _at;
};

// The stretches between the frames, before the first and behind the last.
std::vector<Recovery::Lost> gapsBetween(const std::vector<Object>& frames, std::size_t size) {
    std::vector<Recovery::Lost> gaps;
    std::uint64_t begin = 0;
    for (const Object& frame : frames) {
        gaps.push_back({.fromByte = begin, .toByte = frame.begin});
        begin = frame.end;
    }
    gaps.push_back({.fromByte = begin, .toByte = size});
    return gaps;
}

// Where the list of frames begins; 0 where the text does not begin as a container does.
std::size_t listBegin(std::string_view text) {
    Part part(text, 0, text.size());
    if (!part.take("{"))
        return 0;
    if (part.takeVersion())
        part.take(",");
    const bool isList = (part.takeName(Container::kFrames) || part.takeName(Container::kReports)) && part.take("[");
    return isList ? part.place() : 0;
}

// Where the list of frames ends, at `least` or behind it; none where the text does not end as a container does.
std::optional<std::size_t> listEnd(std::string_view text, std::size_t least) {
    const std::size_t bracket = text.rfind(']');
    if (bracket == std::string_view::npos || bracket < least)
        return std::nullopt;
    Part part(text, bracket + 1, text.size());
    if (part.take(","))
        part.takeVersion();
    return part.take("}") && part.isAtEnd() ? std::optional(bracket) : std::nullopt;
}

// A gap less the commas and blanks at its ends.
Recovery::Lost trimmed(std::string_view text, Recovery::Lost gap) {
    const auto separates = [text](std::uint64_t at) {
        return std::string_view(", \t\r\n").find(text[at]) != std::string_view::npos;
    };
    while (gap.fromByte < gap.toByte && separates(gap.fromByte))
        ++gap.fromByte;
    while (gap.fromByte < gap.toByte && separates(gap.toByte - 1))
        --gap.toByte;
    return gap;
}

std::vector<Recovery::Lost> lostIn(std::string_view text, std::vector<Recovery::Lost> gaps) {
    Recovery::Lost& first = gaps.front();
    first.fromByte = std::min<std::uint64_t>(listBegin(text), first.toByte);
    Recovery::Lost& last = gaps.back();
    const auto end = listEnd(text, last.fromByte);
    last.toByte = end.value_or(last.toByte);
    for (Recovery::Lost& gap : gaps)
        gap = trimmed(text, gap);
    const Recovery::Lost tail = gaps.back();
    std::erase_if(gaps, [](const Recovery::Lost& gap) { return gap.fromByte == gap.toByte; });
    if (!end) { // then the rest is lost, whatever it was
        if (tail.fromByte < tail.toByte)
            gaps.pop_back();
        gaps.push_back({.fromByte = tail.fromByte < tail.toByte ? tail.fromByte : text.size(), .toByte = text.size()});
    }
    return gaps;
}

// The version that the text says beside its frames, where it says it last.
std::optional<std::uint64_t> versionSaid(std::string_view text, const std::vector<Recovery::Lost>& gaps) {
    std::optional<std::uint64_t> said;
    for (const Recovery::Lost& gap : gaps) {
        for (auto at = text.find('"', gap.fromByte); at < gap.toByte; at = text.find('"', at + 1)) {
            Part part(text, at, gap.toByte);
            if (part.takeName(Container::kVersion))
                said = part.takeNumber();
        }
    }
    return said;
}

bool isIn(const Object& frame, std::uint64_t version) noexcept { return (frame.mark >> version & 1U) != 0; }

std::uint64_t versionOf(const std::vector<Object>& frames, std::optional<std::uint64_t> said) {
    const auto rank = [&](std::uint64_t version) {
        const auto count = std::ranges::count_if(frames, [=](const Object& frame) { return isIn(frame, version); });
        return std::pair(count, said == version);
    };
    std::uint64_t best = Container::kCurrentVersion;
    for (std::uint64_t version = best; version-- > 0;) {
        if (rank(version) > rank(best))
            best = version;
    }
    return best;
}

std::optional<Frame> frameOf(std::string_view text, const Object& frame, std::uint64_t version) {
    for (std::uint64_t other = kVersionCount; !isIn(frame, version) && other-- > 0;) {
        if (isIn(frame, other))
            version = other;
    }
    return frameIn(JSON::parse(text.substr(frame.begin, frame.end - frame.begin)), version);
}

std::optional<Recovery> search(std::string_view text) {
    const std::vector<Object> frames = framesIn(WholeObjects(text, versionsOf));
    if (frames.empty())
        return std::nullopt;
    const std::vector<Recovery::Lost> gaps = gapsBetween(frames, text.size());
    Recovery recovery{.version = versionOf(frames, versionSaid(text, gaps)), .frames = {}, .lost = lostIn(text, gaps)};
    for (const Object& object : frames) {
        if (auto frame = frameOf(text, object, recovery.version))
            recovery.frames.push_back(*std::move(frame));
    }
    return recovery;
}

// What the reader makes of it, if it accepts it.
std::optional<Recovery> accepted(const Data& container) {
    try {
        auto [version, frames] = readContainer(container);
        return Recovery{.version = version, .frames = std::move(frames), .lost = {}};
    } catch (const std::invalid_argument&) {
    } catch (const std::runtime_error&) { // in the migration
    }
    return std::nullopt;
}

} // namespace

std::optional<Recovery> recoverFrames(const Data& container) {
    std::optional<Recovery> read = accepted(container);
    if (read && !read->frames.empty())
        return read;
    std::optional<Recovery> found = search(container.bytes());
    return found ? found : read;
}

} // namespace VeltoTouch::Analysis
