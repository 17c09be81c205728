#include "Platform/FileDescriptor.h"
#include "Velto/Commands/Examination.h"
#include "Velto/Daemon/Bus/UnitState.h"
#include "Velto/Surface/NodeRights.h"

#include <cerrno>
#include <cmath>
#include <ctime>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

namespace VeltoTouch::Velto {
namespace {

using enum Finding::Verdict;
constexpr const char* kUinput = "/dev/uinput";
constexpr const char* kUinputGroup = "velto-uinput";
constexpr std::chrono::seconds kCounted{1};

std::string textOf(const Ref<Value>& value) {
    const auto* const text = as<String>(value);
    return text == nullptr ? "" : text->text();
}

std::string timeOf(const Ref<Value>& nanoseconds) {
    const auto* const number = as<Number>(nanoseconds);
    const std::uint64_t time = number == nullptr ? 0 : number->unsignedLongLongValue();
    return fmt::format("{:%Y-%m-%d %H:%M:%S}", fmt::localtime(static_cast<std::time_t>(time / 1'000'000'000)));
}

// What keeps a service from making its keyboard, and what to do about it; nothing is known if both are empty.
struct Obstacle {
    std::string text;
    std::string advice;
};

// Who may not serves without keys.
bool mayMakeKeyboard() { return ::access(kUinput, W_OK) == 0; }

Obstacle obstacleToKeyboard() {
    const FileDescriptor node(::open(kUinput, O_RDWR | O_NONBLOCK | O_CLOEXEC));
    const int error = node.isOpen() ? 0 : errno;
    if (error == ENOENT)
        return {.text = fmt::format(", and {} is not there", kUinput), .advice = "sudo modprobe uinput && "};
    if (error == ENODEV || error == ENXIO)
        return {.text = ", and the module uinput is not loaded", .advice = "sudo modprobe uinput && "};
    struct stat status {};
    const group* const wanted = ::getgrnam(kUinputGroup);
    if (wanted != nullptr && ::stat(kUinput, &status) == 0 && status.st_gid != wanted->gr_gid)
        return {.text = fmt::format(", and {} does not belong to the group {}", kUinput, kUinputGroup),
                .advice = "sudo udevadm trigger --settle --subsystem-match=misc --sysname-match=uinput && "};
    return {};
}

// Of a unit whose service is not on the bus.
Finding findingOf(const Bus::UnitState& state, const std::string& unit, const std::string& serve,
                  const Obstacle& obstacle) {
    const auto no = [&](const std::string& text, const std::string& advice) {
        return Finding{.verdict = No, .text = unit + text, .advice = advice};
    };
    const std::string why = (state.result == "success" ? "" : fmt::format(" ({})", state.result)) + obstacle.text;
    // One that has failed too often is not started before it is reset.
    const std::string reset = state.active == "failed" ? fmt::format("sudo systemctl reset-failed {} && ", unit) : "";
    const std::string restart = fmt::format("{}{}sudo systemctl restart {}", obstacle.advice, reset, unit);
    const std::string journal = fmt::format("; sudo journalctl -u {} says why", unit);
    if (state.load == "masked")
        return no(" is masked", fmt::format("sudo systemctl unmask {0} && sudo systemctl unmask --runtime {0} && {1}",
                                            unit, restart));
    if (state.load != "loaded")
        return no(" is not installed", "install the package velto-touch; without it, " + serve +
                                           " presses keys, but the bus refuses it a name");
    if (state.active == "failed")
        return no(" has failed" + why, restart + journal);
    if (state.active == "activating")
        return no(" does not come up" + why, restart + journal);
    if (state.active == "active")
        return no(" runs, but is not on the bus", restart + journal);
    return no(" does not run" + obstacle.text,
              restart + "; it starts by itself where the surface is plugged in: sudo udevadm trigger "
                        "--subsystem-match=hidraw");
}

} // namespace

std::string Examination::unit() const { return fmt::format("velto-touch@{}.service", Bus::elementOf(_device)); }

std::string Examination::commandLine(std::string_view subcommand) const {
    return fmt::format("velto {}{}{}", subcommand, isOnSystemBus() ? "" : " --user",
                       _served.size() > 1 ? " --device " + _device : "");
}

Finding Examination::notServed() const {
    const std::string serve = isOnSystemBus() ? fmt::format("sudo velto serve --device {}", _device)
                                              : fmt::format("velto serve --user {}--device {}",
                                                            mayMakeKeyboard() ? "" : "--no-keys ", _device);
    const Obstacle obstacle = hasNode() ? obstacleToKeyboard() : Obstacle();
    const auto state = isOnSystemBus() && hasNode() ? Bus::stateOfUnit(unit()) : std::nullopt;
    if (state)
        return findingOf(*state, unit(), serve, obstacle);
    return {.verdict = No,
            .text = fmt::format("no service runs for {}{}", _device, obstacle.text),
            .advice = obstacle.advice + serve};
}

std::string Examination::howToRestart() const {
    return hasNode() && isOnSystemBus() ? "sudo systemctl restart " + unit() : "end velto serve and start it again";
}

Finding Examination::noAnswer() const {
    return {.verdict = No, .text = "the service does not answer", .advice = howToRestart()};
}

Finding Examination::service() {
    if (!_busFailure.empty())
        return {.verdict = No,
                .text = _busFailure,
                .advice = isOnSystemBus() ? "sudo systemctl start dbus; velto run --device surface needs none"
                                          : "log in (which takes the package dbus-user-session), or leave out --user"};
    if (!isServed())
        return notServed();
    std::string version;
    try {
        _client.emplace(_options.served.bus, _device);
        version = textOf(_client->getObjectProperty("Version"));
    } catch (const Bus::NotAllowed& error) {
        return {.verdict = No, .text = error.what(), .advice = "sit at the machine, or " + Surface::howToJoin()};
    } catch (const Bus::NoAnswer&) {
        throw;
    } catch (const std::runtime_error& error) { // it has ended meanwhile, or does not speak our language
        return {.verdict = No, .text = error.what(), .advice = howToRestart()};
    }
    try {
        const std::string since = timeOf(_client->getObjectProperty("Since"));
        _keyboard = textOf(_client->getObjectProperty("Keyboard"));
        return {.verdict = Yes, .text = fmt::format("version {} since {}", version, since)};
    } catch (const Bus::Refused&) { // it knows no such properties
        return {.verdict = No,
                .text = fmt::format("the service of version {} is older than this program", version),
                .advice = howToRestart()};
    }
}

std::uint64_t Examination::counter(const char* name) {
    const Ref<Value> counters = _client->getObjectProperty("Counters");
    const auto* const dictionary = as<Dictionary>(counters);
    const auto* const number = dictionary == nullptr ? nullptr : as<Number>(dictionary->value(name));
    return number == nullptr ? 0 : number->unsignedLongLongValue();
}

Finding Examination::reports() {
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    const std::uint64_t before = counter("reports");
    std::this_thread::sleep_for(kCounted);
    const std::uint64_t now = counter("reports");
    if (now == before)
        return {.verdict = No,
                .text = fmt::format("no reports come ({} since the start)", now),
                .advice = "touch the surface; if none come then, unplug it and plug it in again"};
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    return {.verdict = Yes,
            .text = fmt::format("{:.0f} a second", std::round(static_cast<double>(now - before) / seconds))};
}

} // namespace VeltoTouch::Velto
