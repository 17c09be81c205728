#pragma once

#include "Platform/Value.h"
#include "Velto/Daemon/Bus/Handles.h"

#include <cstddef>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>

// Values as the bus carries them, each in a variant:
//
//   boolean             b
//   signed, unsigned    x, t; integers of every size are read
//   float, double       d
//   text                s; object paths and signatures are read as text
//   array               av; arrays of any other type and structures are read
//   dictionary          a{sv}; dictionaries of any other type are read, if their keys are text
//   data                ay
//   null                g, an empty one: the bus has no null
//
// File descriptors are no values; no connection of ours takes them.

namespace VeltoTouch::Bus {

// An error that is sent to whoever called. `name` is the error's on the bus.
struct CallError : std::runtime_error {
    CallError(const char* errorName, const std::string& message) : std::runtime_error(message), name(errorName) {}
    const char* name;
};

constexpr std::size_t kAnySize = std::numeric_limits<std::size_t>::max();
// The bus allows 64 containers in one another; a level of values takes three.
constexpr std::size_t kDeepestValue = 16;

// Reads the variant that comes next in a message. `room`: how many bytes it may hold, keys and numbers included. Throws
// CallError for what is no value, too large or too deep, and std::system_error for a message without a variant there.
[[nodiscard]] Ref<Value> readVariant(sd_bus_message* message, std::size_t room);

// The bus cuts off who sends a message of 32 MiB.
constexpr std::size_t kLargestSent = 24 << 20;

// What the bus takes for this text: what is no UTF-8, the character 0 and noncharacters become U+FFFD.
[[nodiscard]] std::string cleanText(std::string_view text);

// Appends a value, which is not nil, with clean texts. Returns how many bytes it takes at most. Throws CallError for
// what is too deep or larger than `kLargestSent`, std::system_error where there is no memory.
std::size_t appendVariant(sd_bus_message* message, const Value& value);

} // namespace VeltoTouch::Bus
