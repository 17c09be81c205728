#pragma once

#include "Velto/Daemon/Bus/Handles.h"
#include "Velto/Daemon/Bus/Values.h"

#include <cstdint>
#include <exception>
#include <string>

// Answers to calls.

namespace VeltoTouch::Bus {

// Returns a caller's unique name on the bus.
[[nodiscard]] std::string callerOf(sd_bus_message* call);

// Returns how many of our messages the bus has not taken.
[[nodiscard]] std::uint64_t unsentOn(sd_bus* bus) noexcept;

// Does nothing if the bus is gone.
void sendError(sd_bus_message* call, const CallError& error) noexcept;

// Runs a step of a call and passes what it throws to `fail`, as a CallError.
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
