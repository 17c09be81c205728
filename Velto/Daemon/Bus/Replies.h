#pragma once

#include "Velto/Daemon/Bus/Handles.h"
#include "Velto/Daemon/Bus/Values.h"

#include <cstdint>
#include <exception>
#include <string>

// What calls are answered with.

namespace VeltoTouch::Bus {

// A caller's name on the bus, which nobody else has.
[[nodiscard]] std::string callerOf(sd_bus_message* call);

// How many messages the bus has not taken from us.
[[nodiscard]] std::uint64_t unsentOn(sd_bus* bus) noexcept;

// Does nothing where the bus has gone, and the caller with it.
void sendError(sd_bus_message* call, const CallError& error) noexcept;

// Does a step of a call; what it throws is passed to `fail`, as a CallError.
template <class Step, class Fail>
void attempt(const Step& step, const Fail& fail) {
    try {
        step();
    } catch (const CallError& error) {
        fail(error);
    } catch (const std::exception& error) {
        fail(CallError(SD_BUS_ERROR_FAILED, error.what()));
    }
}

} // namespace VeltoTouch::Bus
