#include "Tests/Stories/Story.h"

#include <bit>
#include <cmath>

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace VeltoTouch::Tests {
namespace {

std::string textOf(const StoryValue& value) {
    if (!value)
        return "{}";
    if (value->is_binary())
        return fmt::format("nlohmann::json::binary({{{}}})", fmt::join(value->get_binary(), ", "));
    if (value->is_number_float() && !std::isfinite(value->get<double>()))
        return fmt::format("std::bit_cast<double>({:#x})", std::bit_cast<std::uint64_t>(value->get<double>()));
    return fmt::format("nlohmann::json::parse(R\"({})\")",
                       value->dump(-1, ' ', true, nlohmann::json::error_handler_t::replace));
}

struct Printer {
    std::string operator()(const Steps::Images& images) const {
        return fmt::format("Images{{{}, {}, {{{}}}, {}, {}, {}}}", images.frame, images.timeMs,
                           fmt::join(images.signals, ", "), images.count, images.frameStep, images.timeStepMs);
    }
    std::string operator()(const Steps::Report& report) const {
        return fmt::format("Report{{{{{:#04x}}}}}", fmt::join(report.bytes, ", "));
    }
    std::string operator()(const Steps::Setting& setting) const {
        return fmt::format("Setting{{{}, {}}}", quoted(setting.key), textOf(setting.value));
    }
    std::string operator()(const Steps::Metadata& metadata) const {
        return fmt::format("Metadata{{{}, {}}}", quoted(metadata.key), textOf(metadata.value));
    }
    std::string operator()(const Steps::Read& read) const { return fmt::format("Read{{{}}}", quoted(read.key)); }
    std::string operator()(const Steps::Clock& clock) const { return fmt::format("Clock{{{}u}}", clock.ticks); }
    std::string operator()(const Steps::Callbacks& callbacks) const {
        return fmt::format("Callbacks{{{:#x}}}", callbacks.installed);
    }
    std::string operator()(const Steps::Bound& bound) const { return fmt::format("Bound{{{}}}", bound.count); }
    std::string operator()(const Steps::Sort& /*sort*/) const { return "Sort{}"; }
    std::string operator()(const Steps::Copy& /*copy*/) const { return "Copy{}"; }
    std::string operator()(const Steps::MoveOut& move) const { return fmt::format("MoveOut{{{}}}", move.isAssigned); }
    std::string operator()(const Steps::CopySome& some) const { return fmt::format("CopySome{{{}}}", some.count); }
    std::string operator()(const Steps::Counters& counters) const {
        return fmt::format("Counters{{{}u}}", counters.count);
    }
    std::string operator()(const Steps::Batch& batch) const { return fmt::format("Batch{{{}}}", batch.count); }
    std::string operator()(const Steps::WriteAndRead& /*write*/) const { return "WriteAndRead{}"; }
    std::string operator()(const Steps::PlayReset& /*reset*/) const { return "PlayReset{}"; }
    std::string operator()(const Steps::Play& play) const {
        return fmt::format("Play{{std::bit_cast<float>({:#x}u), {}}}", std::bit_cast<std::uint32_t>(play.speed),
                           play.count);
    }
};

} // namespace

std::string quoted(const std::string& text) {
    std::string out;
    for (const char c : text) {
        if (c == '"' || c == '\\')
            out += '\\';
        out += c >= ' ' && c <= '~' ? std::string(1, c) : fmt::format("\\{:03o}", c & 0xFF);
    }
    return '"' + out + '"';
}

std::string textOf(const Story& story) {
    std::string text = fmt::format("{{.isLogged = {}, .steps = {{\n", story.isLogged);
    for (const Step& step : story.steps)
        text += "    Steps::" + std::visit(Printer{}, step) + ",\n";
    return text + "}}\n";
}

} // namespace VeltoTouch::Tests
