#pragma once

#include "Platform/Value.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace VeltoTouch::Analysis {

// The JSON objects that stand whole in a text that may be damaged anywhere: every stretch from a { to its } that the
// parser reads, whatever stands around it.
//
// The braces are tried from the last to the first. What stands inside an object is known when its own brace is tried,
// and is stepped over; therefore no damage hides what stands behind it, also not a quote that is missing: the { that it
// draws into a string has been tried before. Two tries that read the same byte disagree whether it stands in a string,
// so that no byte is read more than twice: the time grows as the text does (by a logarithm faster), and nothing
// recurses.
class WholeObjects {
public:
    struct Object {
        std::uint32_t begin; // the { and the byte behind the }
        std::uint32_t end;
        std::uint16_t depth; // levels of nesting
        std::uint8_t mark;   // what the judge says
    };
    // Judges an object by its members alone: objects nested in it are empty.
    using Judge = std::function<std::uint8_t(const Ref<Value>& shallow)>;

    // `text` is shorter than 4 GiB and must outlive this.
    WholeObjects(std::string_view text, const Judge& judge);

    // In the text's order, each before those in it. Of two that overlap one stands in the other, or begins in a string
    // of it.
    [[nodiscard]] const std::vector<Object>& inOrder() const noexcept { return _objects; }

private:
    [[nodiscard]] std::optional<Object> objectAt(std::size_t begin);
    [[nodiscard]] std::size_t behindString(std::size_t quote) const noexcept;
    [[nodiscard]] const Object* knownAt(std::size_t begin) const noexcept;

    const std::string_view _text;
    std::string _shallow;         // text of the object in progress, without what is nested in it
    std::vector<Object> _objects; // while they are looked for, from the last to the first
};

} // namespace VeltoTouch::Analysis
