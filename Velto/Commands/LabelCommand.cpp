#include "Platform/JSON.h"
#include "Plugin/Recording/ContainerFormat.h"
#include "Plugin/Recording/ContainerWriter.h"
#include "Velto/Analysis/Label.h"
#include "Velto/Commands/Command.h"
#include "Velto/Commands/LabelEdit.h"
#include "Velto/Options/Numbers.h"
#include "Velto/Options/RecordingFiles.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/GestureText.h"
#include "Velto/Output/Terminal.h"

#include <iterator>
#include <memory>
#include <stdexcept>

#include <fmt/format.h>

namespace VeltoTouch::Velto {
namespace {

using Analysis::Label;

constexpr const char* kLabelText =
    "Lists and edits the labels of a recording: for velto score, they say what was meant by\n"
    "each contact.\n"
    "\n"
    "LABEL is GESTURE:REGION@START+LENGTH: the gestures are tap, hold, slide, brush and palm,\n"
    "places as in velto simulate --help, seconds from the recording's first frame. A palm has\n"
    "no region: palm@3+1, nor has a time in which nothing counts: spoiled@3+1. Numbers are\n"
    "those that velto label lists, before the edit. Without -o the file itself is edited,\n"
    "whole or not at all; all else in it stays as it is.";

struct LabelOptions {
    std::string file;
    std::string output; // empty: the file itself
    LabelEdit edit;
    bool jsonl = false;
};

SaidLabel readLabel(const std::string& text) {
    return asUsage("", [&] { return parseLabel(text); });
}

std::size_t readNumber(const std::string& option, const std::string& text) {
    const auto number = numberIn<std::size_t>(text);
    if (!number || *number == 0)
        throw CLI::ValidationError(option, fmt::format("\"{}\" is no label's number", text));
    return *number;
}

std::string asLine(const std::string& file, const Label& label) {
    return fmt::format(
        R"({{"kind":"label"{},"label":{},"gesture":{},"region":{},"endRegion":{},"startNs":{},"endNs":{}}})"
        "\n",
        fileMember(file), label.index, JSON::quoted(label.gesture), JSON::quoted(label.region),
        label.endRegion.empty() ? "null" : JSON::quoted(label.endRegion), label.startNs, label.endNs);
}

std::string asRow(const Label& label) {
    const std::string way = label.endRegion.empty() ? label.region : label.region + " > " + label.endRegion;
    return fmt::format("  {:>5} {:>10.3f} s {:>7} ms  {:<8} {}\n", label.index,
                       static_cast<double>(label.startNs) / 1e9, (label.endNs - label.startNs) / 1'000'000,
                       printable(label.gesture), printable(way));
}

void list(const LabelOptions& options, const std::string& file) {
    const std::vector<Label> labels = Analysis::labelsOf(loadRecording(file).frames());
    std::string text = options.jsonl ? "" : coloured(Colour::Bold, printable(file)) + "\n";
    if (!options.jsonl)
        text += labels.empty() ? "  no labels\n" : "  label        start      lasts  gesture  region\n";
    for (const Label& label : labels)
        text += options.jsonl ? asLine(file, label) : asRow(label);
    writeStandardOutput(text);
}

// The recording with its labels edited. One of an old version would not stay as it is.
std::string edited(const LabelOptions& options, const std::string& file) {
    auto [version, frames] = loadContainer(file);
    if (version != Container::kCurrentVersion)
        throw std::runtime_error(
            fmt::format("a recording of version {}: velto convert brings it to the current one", version));
    editLabels(frames, options.edit);
    return writeContainer(frames);
}

int label(const LabelOptions& options) {
    if (options.edit.isEmpty())
        return forEachFile({options.file}, [&](const std::string& file) { list(options, file); });
    std::string container;
    const int status = forEachFile({options.file}, [&](const std::string& file) { container = edited(options, file); });
    if (status != 0)
        return status;
    return forEachFile({options.output.empty() ? options.file : options.output},
                       [&](const std::string& file) { writeFile(file, container); });
}

void addEdits(App& app, LabelEdit& edit) {
    const auto add = [&edit](const std::vector<std::string>& texts) {
        for (const std::string& text : texts)
            edit.added.push_back(readLabel(text));
    };
    const auto change = [&edit](const std::vector<std::string>& texts) { // in pairs
        for (auto text = texts.begin(); text != texts.end(); std::advance(text, 2))
            edit.changed.emplace_back(readNumber("--change", *text), readLabel(*std::next(text)));
    };
    const auto remove = [&edit](const std::vector<std::string>& texts) {
        for (const std::string& text : texts)
            edit.removed.push_back(readNumber("--remove", text));
    };
    using Texts = std::vector<std::string>;
    app.add_option_function<Texts>("--add", add, "Add a label")->type_name("LABEL")->allow_extra_args(false);
    app.add_option_function<Texts>("--change", change, "Put another label in the place of label N")
        ->type_name("N LABEL")
        ->type_size(2)
        ->allow_extra_args(false);
    app.add_option_function<Texts>("--remove", remove, "Remove label N")->type_name("N")->allow_extra_args(false);
}

} // namespace

Command makeLabelCommand(App& program) {
    const auto options = std::make_shared<LabelOptions>();
    App* app = program.addCommand(
        "label", {"velto label gestures.json", "velto label gestures.json --add tap:volume-up@2.5+0.1 --remove 3"},
        kLabelText);
    addRecording(*app, options->file);
    addEdits(*app, options->edit);
    addOutput(*app, options->output)->description("Where to write the edited recording (default: FILE itself)");
    app->add_flag("--jsonl", options->jsonl, "List as JSON Lines");
    app->callback([options] {
        if (options->edit.isEmpty() && !options->output.empty())
            throw CLI::RequiredError("-o: --add, --change or --remove");
        if (!options->edit.isEmpty() && options->jsonl)
            throw CLI::ExcludesError("--jsonl", "--add, --change and --remove");
    });
    return {app, [options] { return label(*options); }};
}

} // namespace VeltoTouch::Velto
