#include "Plugin/Recording/ContainerWriter.h"

#include "Platform/JSON.h"
#include "Plugin/Recording/ContainerFormat.h"
#include "Plugin/Recording/LargeText.h"
#include "Plugin/Shared/HexText.h"

#include <array>
#include <charconv>
#include <string_view>

namespace VeltoTouch {
namespace {

using namespace Container;

// Enough for the text of an image report; a recording of longer frames grows while it is written.
constexpr std::size_t kUsualFrameLength = 300;

// Container, frames, frame. A value that would be nested too deep for the reader costs only itself.
constexpr std::size_t kDepthAroundValue = 3;

void appendNumber(std::string& text, std::uint64_t number) {
    std::array<char, 20> digits{};
    text.append(digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr);
}

// Members stand in the order of their names, as in every dictionary that we write.
void appendReport(std::string& text, const Frame& frame) {
    text += R"({"Data":")";
    Util::appendHexString(text, frame.report);
    text += R"(","Timestamp":)";
    appendNumber(text, frame.timestampNs);
    text += R"(,"Type":"InputReport"},)";
}

void appendKeyed(std::string& text, const Frame& frame, std::string_view type) {
    text += R"({"Key":)";
    JSON::appendString(text, frame.key);
    text += R"(,"Timestamp":)";
    appendNumber(text, frame.timestampNs);
    text.append(R"(,"Type":")").append(type).append("\"");
    if (frame.value) {
        text += R"(,"Value":)";
        if (frame.value->depth() + kDepthAroundValue <= Value::kDeepest)
            JSON::append(text, frame.value.get());
        else
            text += R"({"Unrepresentable":"depth"})";
    }
    text += "},";
}

} // namespace

void appendFrame(std::string& text, const Frame& frame) {
    switch (frame.type) {
    case Frame::Type::State:
        return appendKeyed(text, frame, kStateType);
    case Frame::Type::InputReport:
        return appendReport(text, frame);
    case Frame::Type::Metadata:
        return appendKeyed(text, frame, kMetadataType);
    }
}

std::string writeContainer(const std::list<Frame>& frames) {
    std::string text = roomForText(kUsualFrameLength * (frames.size() + 1));
    text += kContainerBeginning;
    for (const Frame& frame : frames)
        appendFrame(text, frame);
    if (text.back() == ',')
        text.pop_back();
    text += kContainerEnding;
    return text;
}

} // namespace VeltoTouch
