#include "Velto/Commands/Command.h"
#include "Velto/Commands/Hosting.h"
#include "Velto/Daemon/Bus/Client.h"
#include "Velto/Daemon/Configuration.h"
#include "Velto/Daemon/KeptConfiguration.h"
#include "Velto/Options/BusOptions.h"
#include "Velto/Options/KeyOptions.h"
#include "Velto/Options/Keys.h"
#include "Velto/Options/Lasting.h"
#include "Velto/Options/Suggestion.h"
#include "Velto/Output/Files.h"
#include "Velto/Output/Terminal.h"

#include <algorithm>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <vector>

#include <sys/stat.h>
#include <unistd.h>

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
    std::string folder = kConfigurationFolder;
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

// Everybody may read the file: the service is not root.
void write(const std::filesystem::path& file, const ConfigurationEntries& kept) {
    ::umask(022);
    std::filesystem::create_directories(file.parent_path());
    std::vector<Complaint> complaints; // of lines that go with this
    ConfigurationEntries entries;
    if (std::filesystem::exists(file))
        put(entries, readConfigurationFile(file, complaints));
    put(entries, kept);
    writeFile(file, keptText(entries));
}

// A file that comes later has the last word. Returns the exit status.
int reportOverruled(const std::filesystem::path& folder, const std::filesystem::path& file,
                    const ConfigurationEntries& kept) {
    const Configuration configuration = readConfiguration(folder);
    int status = 0;
    const auto report = [&](const std::string& name, const Origin& origin) {
        if (origin.file == file)
            return;
        complain(name, "kept, but " + textOf(origin) + " counts");
        status = 1;
    };
    for (const ConfiguredSetting& setting : configuration.settings) {
        if (std::ranges::count(kept.settings, setting.key, &ConfiguredSetting::key) > 0)
            report(setting.key, setting.origin);
    }
    for (const ConfiguredKey& key : configuration.keys) {
        if (find(kept, key.place) != nullptr)
            report(fullKeyOf(key.place), key.origin);
    }
    return status;
}

// All that are served, whatever comes of the others. Returns the exit status.
int reload(Bus::Which bus) {
    const std::vector<std::string> served = Bus::servedOn(bus);
    if (served.empty())
        throw std::runtime_error("no surface is served");
    return forEachFile(served, [bus](const std::string& element) { Bus::Client(bus, element).reload(); });
}

int keep(const SetOptions& options) {
    if (options.folder == kConfigurationFolder && ::geteuid() != 0)
        throw std::runtime_error("only root may keep settings (sudo velto set --keep)");
    const std::filesystem::path file = keptFileIn(options.folder);
    const ConfigurationEntries kept = lastingOf(options.settings, file);
    warnOfDoubtfulSettings(options.settings);
    about(file, [&] { write(file, kept); });
    const int status = reportOverruled(options.folder, file, kept);
    try {
        return std::max(status, reload(options.served.bus));
    } catch (const std::runtime_error& error) {
        writeErrorLine(std::string("velto: kept, from the next start on: ") + error.what());
    }
    return status;
}

// Keys of gestures are no properties.
int run(const SetOptions& options) {
    const auto isKey = [](const Setting& setting) { return Keys::below(kKeysDomain, setting.key).has_value(); };
    try {
        if (options.keep)
            return keep(options);
        if (std::ranges::any_of(options.settings, isKey))
            throw std::invalid_argument("keys of gestures are not set but kept (--keep)");
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
    addConfiguration(*app, options->folder, "The configuration's folder, for --keep")->needs(keep);
    addSettingArguments(*app, options->settings, "VALUE is JSON, or a text where it is no JSON")->required();
    app->addList(keyList());
    return {app, [options] { return run(*options); }};
}

} // namespace VeltoTouch::Velto
