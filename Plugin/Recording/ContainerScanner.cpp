#include "Plugin/Recording/ContainerScanner.h"

#include "Platform/JSON.h"
#include "Plugin/Recording/ContainerFormat.h"
#include "Plugin/Recording/FrameReader.h"
#include "Plugin/Recording/ValueNode.h"
#include "Plugin/Shared/HexText.h"

#include <charconv>
#include <exception>

namespace VeltoTouch {
namespace {

using namespace Container;

// Deeper values are left to the parser, which has its own bound.
constexpr int kDeepestValue = 256;

// A place in the text. Each `take...` moves behind what it takes, or fails; then the place is undefined, and the caller
// fails too.
class Cursor {
public:
    explicit Cursor(std::string_view text) noexcept : _at(text.data()), _end(text.data() + text.size()) {}

    [[nodiscard]] bool isAtEnd() noexcept {
        skipBlanks();
        return _at == _end;
    }

    [[nodiscard]] bool take(char wanted) noexcept {
        skipBlanks();
        if (_at == _end || *_at != wanted)
            return false;
        ++_at;
        return true;
    }

    // A string without escapes; what stands between the quotes is not checked.
    [[nodiscard]] std::optional<std::string_view> takeString() noexcept {
        if (!take('"'))
            return std::nullopt;
        const std::string_view rest = remaining();
        const std::size_t length = rest.find('"');
        if (length == std::string_view::npos)
            return std::nullopt;
        _at += length + 1;
        return rest.substr(0, length);
    }

    [[nodiscard]] std::optional<std::uint64_t> takeUnsigned() noexcept {
        skipBlanks();
        const bool hasLeadingZero = _end - _at > 1 && _at[0] == '0' && _at[1] >= '0' && _at[1] <= '9';
        std::uint64_t number = 0;
        const auto [behind, error] = std::from_chars(_at, _end, number);
        if (error != std::errc() || hasLeadingZero)
            return std::nullopt;
        _at = behind;
        return number;
    }

    // An object, whatever is in it, by its brackets alone; the parser must still read it.
    [[nodiscard]] std::optional<std::string_view> takeObjectText() noexcept {
        skipBlanks();
        const char* const start = _at;
        int depth = 0;
        bool isInString = false;
        for (; _at != _end; ++_at) {
            if (isInString && *_at == '\\' && _end - _at > 1)
                ++_at;
            else if (*_at == '"')
                isInString = !isInString;
            else if (!isInString && (*_at == '{' || *_at == '['))
                ++depth;
            else if (!isInString && (*_at == '}' || *_at == ']'))
                --depth;
            if (depth > kDeepestValue)
                return std::nullopt;
            if (depth <= 0) {
                ++_at;
                return std::string_view(start, static_cast<std::size_t>(_at - start));
            }
        }
        return std::nullopt;
    }

private:
    [[nodiscard]] std::string_view remaining() const noexcept { return {_at, static_cast<std::size_t>(_end - _at)}; }

    void skipBlanks() noexcept {
        while (_at != _end && (*_at == ' ' || *_at == '\n' || *_at == '\r' || *_at == '\t'))
            ++_at;
    }

    const char* _at;
    const char* _end;
};

// An object; `takeValue` is called behind each member's name and takes its value.
template <class TakeValue>
bool takeObject(Cursor& cursor, TakeValue takeValue) {
    if (!cursor.take('{'))
        return false;
    do {
        const auto name = cursor.takeString();
        if (!name || !cursor.take(':') || !takeValue(*name))
            return false;
    } while (cursor.take(','));
    return cursor.take('}');
}

// A report with its three members, each once.
bool takeReport(Cursor& cursor, Frame& frame) {
    bool hasType = false;
    std::optional<std::uint64_t> timestamp;
    std::optional<std::vector<std::uint8_t>> bytes;
    const auto takeValue = [&](std::string_view name) {
        if (name == kTimestamp && !timestamp)
            return (timestamp = cursor.takeUnsigned()).has_value();
        if (name == kData && !bytes) {
            const auto text = cursor.takeString();
            return text && (bytes = Util::bytesFromHexPairs(*text)).has_value();
        }
        if (name == kType && !hasType)
            return hasType = cursor.takeString() == kInputReportType;
        return false;
    };
    if (!takeObject(cursor, takeValue) || !hasType || !timestamp || !bytes)
        return false;
    frame.type = Frame::Type::InputReport;
    frame.timestampNs = *timestamp;
    frame.report = *std::move(bytes);
    return true;
}

// Any other frame, which the parser reads.
bool takeOtherFrame(Cursor& cursor, Frame& frame) {
    const auto text = cursor.takeObjectText();
    const Ref<Value> object = text ? JSON::parse(*text) : nullptr;
    if (as<Dictionary>(object) == nullptr)
        return false;
    frame = readFrame(ValueNode(object.get()));
    return true;
}

bool takeFrames(Cursor& cursor, std::list<Frame>& frames) {
    if (!cursor.take('['))
        return false;
    if (cursor.take(']'))
        return true;
    do {
        const Cursor start = cursor;
        Frame& frame = frames.emplace_back();
        if (takeReport(cursor, frame))
            continue;
        cursor = start;
        if (!takeOtherFrame(cursor, frame))
            return false;
    } while (cursor.take(','));
    return cursor.take(']');
}

bool takeContainer(Cursor& cursor, std::list<Frame>& frames) {
    bool hasVersion = false;
    bool hasFrames = false;
    const auto takeValue = [&](std::string_view name) {
        if (name == kVersion && !hasVersion)
            return hasVersion = cursor.takeUnsigned() == kCurrentVersion;
        if (name == kFrames && !hasFrames)
            return hasFrames = takeFrames(cursor, frames);
        return false;
    };
    return takeObject(cursor, takeValue) && hasVersion && hasFrames && cursor.isAtEnd();
}

} // namespace

std::optional<std::list<Frame>> scanContainer(std::string_view text) {
    std::list<Frame> frames;
    Cursor cursor(text);
    try {
        if (takeContainer(cursor, frames))
            return frames;
    } catch (const std::exception&) {
        // A wrong frame: which fault is reported may depend on what follows.
    }
    return std::nullopt;
}

} // namespace VeltoTouch
