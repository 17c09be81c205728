#include "Velto/Analysis/WholeObjects.h"

#include "Platform/JSON.h"

#include <algorithm>

namespace VeltoTouch::Analysis {

WholeObjects::WholeObjects(std::string_view text, const Judge& judge) : _text(text) {
    for (std::size_t at = text.rfind('{'); at != std::string_view::npos;
         at = at == 0 ? std::string_view::npos : text.rfind('{', at - 1)) {
        std::optional<Object> object = objectAt(at);
        const Ref<Value> shallow = object ? JSON::parse(_shallow) : nullptr;
        if (shallow == nullptr)
            continue;
        object->mark = judge(shallow);
        _objects.push_back(*object);
    }
    std::ranges::reverse(_objects);
}

// An object by its brackets and strings; the parser must still read `_shallow`.
std::optional<WholeObjects::Object> WholeObjects::objectAt(std::size_t begin) {
    _shallow.assign(1, '{');
    std::size_t arrays = 0; // open ones
    std::size_t depth = 2;  // of what is seen so far; a member's value is a level of its own
    std::size_t at = begin + 1;
    while (at < _text.size() && depth <= Value::kDeepest) {
        std::size_t behind = at + 1;
        switch (_text[at]) {
        case '"':
            behind = behindString(at);
            if (behind == std::string_view::npos)
                return std::nullopt;
            break;
        case '{': {
            const Object* const nested = knownAt(at);
            if (nested == nullptr)
                return std::nullopt;
            depth = std::max(depth, 1 + arrays + nested->depth);
            _shallow += "{}";
            at = nested->end;
            continue;
        }
        case '[':
            depth = std::max(depth, 2 + ++arrays);
            break;
        case ']':
            if (arrays-- == 0)
                return std::nullopt;
            break;
        case '}':
            if (arrays > 0)
                return std::nullopt;
            _shallow += '}';
            return Object{.begin = static_cast<std::uint32_t>(begin),
                          .end = static_cast<std::uint32_t>(behind),
                          .depth = static_cast<std::uint16_t>(depth),
                          .mark = 0};
        case '\\':
            return std::nullopt;
        default:
            break;
        }
        _shallow.append(_text, at, behind - at);
        at = behind;
    }
    return std::nullopt;
}

// A string holds no control characters: behind a quote that is missing, the line's end ends the try.
std::size_t WholeObjects::behindString(std::size_t quote) const noexcept {
    for (std::size_t at = quote + 1; at < _text.size(); ++at) {
        const auto byte = static_cast<unsigned char>(_text[at]);
        if (byte == '"')
            return at + 1;
        if (byte < 0x20)
            break;
        at += byte == '\\' ? 1 : 0;
    }
    return std::string_view::npos;
}

const WholeObjects::Object* WholeObjects::knownAt(std::size_t begin) const noexcept {
    const auto found = std::ranges::lower_bound(_objects, begin, std::ranges::greater(), &Object::begin);
    return found != _objects.end() && found->begin == begin ? &*found : nullptr;
}

} // namespace VeltoTouch::Analysis
