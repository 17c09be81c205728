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

// An error that is sent to the caller. `name` is its name on the bus.
struct CallError : std::runtime_error {
    CallError(const char* errorName, const std::string& message) : std::runtime_error(message), name(errorName) {}
    const char* name;
};

constexpr std::size_t kAnySize = std::numeric_limits<std::size_t>::max();
// The bus allows 64 containers in one another; a level of values takes three.
constexpr std::size_t kDeepestValue = 16;

// Reads the next variant of a message. `room` bounds the bytes that it takes, as appendVariant counts them.
// Throws CallError if it is no value, too large or too deep, and std::system_error if there is no variant.
[[nodiscard]] Ref<Value> readVariant(sd_bus_message* message, std::size_t room);

// The bus disconnects a client that sends a message of 32 MiB.
constexpr std::size_t kLargestSent = 24 << 20;

// Returns the text as the bus accepts it: invalid UTF-8, the character 0 and noncharacters become U+FFFD.
[[nodiscard]] std::string cleanText(std::string_view text);

// Appends a value, which is not nil, with clean texts, and returns an upper bound of its bytes. Throws CallError if it
// is too deep or larger than `kLargestSent`, std::system_error if there is no memory.
std::size_t appendVariant(sd_bus_message* message, const Value& value);

} // namespace VeltoTouch::Bus
