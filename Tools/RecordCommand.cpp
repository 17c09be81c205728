#include "Serve/Bus/Client.h"
#include "Tools/BusOptions.h"
#include "Tools/Command.h"
#include "Tools/Files.h"
#include "Tools/Terminal.h"

#include <memory>
#include <stdexcept>
#include <string>

namespace VeltoTouch::Tools {
namespace {

constexpr const char* kDescription =
    "Example:\n"
    "  velto record -o gestures.json && velto replay gestures.json\n\n"
    "Saves the recording so far of a surface that velto serve serves; recording goes on.";

struct Options {
    ServedChoice served;
    std::string output; // empty: the standard output
};

int record(const Options& options) {
    const Ref<Value> recording = Bus::Client(options.served.bus, options.served.device).getProperty("Recording");
    if (as<String>(recording) == nullptr)
        throw std::runtime_error("the service gives no recording");
    return forEachFile({options.output},
                       [&](const std::string& file) { writeFile(file, as<String>(recording)->text()); });
}

} // namespace

Command makeRecordCommand(CLI::App& program) {
    const auto options = std::make_shared<Options>();
    CLI::App* app = program.add_subcommand("record", kDescription);
    addServed(*app, options->served);
    app->add_option("-o", options->output, "Where to write (default: standard output)")->type_name("OUT");
    return {app, [options] { return record(*options); }};
}

} // namespace VeltoTouch::Tools
