#include "Velto/Commands/Command.h"
#include "Velto/Commands/Keeping.h"
#include "Velto/Daemon/Bus/Client.h"
#include "Velto/Options/BusOptions.h"
#include "Velto/Options/ConfigurationOptions.h"
#include "Velto/Options/KeyOptions.h"
#include "Velto/Options/Keys.h"
#include "Velto/Options/Suggestion.h"
#include "Velto/Output/Terminal.h"

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <vector>

namespace VeltoTouch::Velto {
namespace {

constexpr const char* kSetText = "Writes properties of a surface that velto serve serves, from its next report on.\n"
                                 "Only root and the group velto may. What is set so ends with the service, or when it\n"
                                 "reloads its configuration.\n"
                                 "\n"
                                 "With --keep, settings and the keys of gestures are kept in a file of the\n"
                                 "configuration, for this and every later start. Only root may.";

struct SetOptions {
    ServedChoice served;
    std::vector<Setting> settings;
    std::string folder; // empty: the one that is read
    bool keep = false;
};

int set(const SetOptions& options) {
    warnOfDoubtfulSettings(options.settings);
    Bus::Client client(options.served.bus, options.served.device);
    bool failed = false;
    for (const Setting& setting : options.settings) {
        try {
            client.setProperty(setting.key, *setting.value);
        } catch (const std::exception& error) {
            complain(setting.key, messageOf(error) + didYouMean(setting.key, writableKeys()));
            failed = true;
        }
    }
    return failed ? 1 : 0;
}

int keepGiven(const SetOptions& options) {
    const ConfigurationEntries entries = entriesOf(options.settings, "velto set --keep");
    warnOfDoubtfulSettings(options.settings);
    return keep(entries, options.folder, options.served.bus);
}

// Keys of gestures are no properties.
int run(const SetOptions& options) {
    const auto isKey = [](const Setting& setting) { return Keys::below(kKeysDomain, setting.key).has_value(); };
    try {
        if (options.keep)
            return keepGiven(options);
        if (std::ranges::any_of(options.settings, isKey))
            throw std::invalid_argument("a gesture's key can only be kept: add --keep");
    } catch (const std::invalid_argument& error) {
        writeErrorLine(std::string("velto: ") + error.what());
        return kWrongUsage;
    }
    return set(options);
}

} // namespace

Command makeSetCommand(App& program) {
    const auto options = std::make_shared<SetOptions>();
    App* app = program.addCommand(
        "set",
        {"velto set Pipeline.Algs.HoldTimeoutMilliseconds=250", "velto set --keep keys.hold.play-pause=KEY_MICMUTE"},
        kSetText);
    addServed(*app, options->served);
    CLI::Option* keep =
        app->add_flag("--keep", options->keep, "Keep it in config.d/90-set.toml, and reload the configuration");
    keep->excludes(app->get_option("--device"));
    addConfiguration(*app, options->folder,
                     "The configuration's folder, for --keep (default: the one that velto serve reads)")
        ->needs(keep);
    addSettingArguments(*app, options->settings, "VALUE is JSON, or a text where it is no JSON")->required();
    app->addList(keyList());
    return {app, [options] { return run(*options); }};
}

} // namespace VeltoTouch::Velto
