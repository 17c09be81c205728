#include "Velto/Commands/Command.h"
#include "Velto/Daemon/Bus/Client.h"
#include "Velto/Options/BusOptions.h"
#include "Velto/Options/KeyOptions.h"
#include "Velto/Options/Keys.h"
#include "Velto/Options/Suggestion.h"
#include "Velto/Output/Terminal.h"

#include <memory>
#include <vector>

namespace VeltoTouch::Velto {
namespace {

constexpr const char* kText = "Writes properties of a surface that velto serve serves, from its next report on.\n"
                              "Only root and the group velto may.";

struct Options {
    ServedChoice served;
    std::vector<Setting> settings;
};

int set(const Options& options) {
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

} // namespace

Command makeSetCommand(App& program) {
    const auto options = std::make_shared<Options>();
    App* app = program.addCommand("set", {"velto set Pipeline.Algs.HoldTimeoutMilliseconds=250"}, kText);
    addServed(*app, options->served);
    addSettingArguments(*app, options->settings, "VALUE is JSON, or a text where it is no JSON")->required();
    return {app, [options] { return set(*options); }};
}

} // namespace VeltoTouch::Velto
