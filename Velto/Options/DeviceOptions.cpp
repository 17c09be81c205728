#include "Velto/Options/DeviceOptions.h"

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <utility>

namespace VeltoTouch::Velto {
namespace {

HelpList deviceList() {
    HelpList list{.heading = "Devices", .entries = {}, .remarks = {}, .textColumn = 18};
    for (const DeviceForm& form : deviceForms())
        list.entries.push_back({.term = form.text(), .text = std::string(form.meaning)});
    return list;
}

Candidates deviceCandidates() {
    using enum DeviceForm::Completion;
    Candidates candidates;
    for (const DeviceForm& form : deviceForms()) {
        switch (form.completion) {
        case Word:
            candidates.words.emplace_back(form.opening);
            break;
        case Opening:
            candidates.openings.emplace_back(form.opening);
            break;
        case FilePrefix:
            candidates.filePrefixes.emplace_back(form.opening);
            break;
        case Nodes:
            candidates.patterns = hidrawNodes().patterns;
            break;
        case None:
            break;
        }
    }
    return candidates;
}

// Why a device cannot be served; empty if it can, or is none.
std::string whyNotServed(const std::string& device) {
    const DeviceForm* const form = formOf(device);
    return form == nullptr ? "" : std::string(form->whyNotServed);
}

DeviceChoice parseDeviceOption(const std::string& name, const std::string& text) {
    return asUsage(name, [&] { return parseDevice(text); });
}

CLI::Option* addDeviceOf(App& app, HelpList devices, DeviceChoice& target, const std::string& description) {
    app.addList(std::move(devices));
    CLI::Option* option = app.add_option_function<std::string>(
        "--device", [&target](const std::string& text) { target = parseDeviceOption("--device", text); }, description);
    return app.offer(option, deviceCandidates())->type_name("DEVICE");
}

} // namespace

CLI::Option* addDevice(App& app, DeviceChoice& target, const std::string& description) {
    return addDeviceOf(app, deviceList(), target, description);
}

CLI::Option* addDeviceToServe(App& app, DeviceChoice& target) {
    HelpList devices = deviceList();
    std::erase_if(devices.entries, [](const auto& entry) { return !whyNotServed(entry.term).empty(); });
    return addDeviceOf(app, std::move(devices), target, "The surface; see below")->required()->check(whyNotServed);
}

CLI::Option* addWatched(App& app, Watched& target, const std::string& description) {
    app.addList(deviceList());
    const auto parse = [&target](const std::string& text) {
        target = asUsage("DEVICE|FILE", [&] { return parseWatched(text); });
    };
    Candidates candidates = deviceCandidates();
    candidates.filePrefixes.emplace_back();
    CLI::Option* option = app.add_option_function<std::string>("DEVICE|FILE", parse, description);
    return app.offer(option, std::move(candidates))->type_name("")->required();
}

CLI::Option* addDeviceArgument(App& app, DeviceChoice& target) {
    app.addList(deviceList());
    CLI::Option* option = app.add_option_function<std::string>(
        "DEVICE", [&target](const std::string& text) { target = parseDeviceOption("DEVICE", text); },
        "What to open; see below");
    return app.offer(option, deviceCandidates())->type_name("")->required();
}

void refuseBesideRecording(std::initializer_list<const CLI::Option*> options) {
    for (const CLI::Option* option : options) {
        if (option->count() > 0)
            throw CLI::ValidationError(option->get_name(), "for a device only");
    }
}

void requireOtherFile(const DeviceChoice& device, const std::string& output) {
    std::error_code notThere;
    if (!device.file().empty() && std::filesystem::equivalent(device.file(), output, notThere))
        throw std::runtime_error(output + ": it is the recording that is played");
}

} // namespace VeltoTouch::Velto
