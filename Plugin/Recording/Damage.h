#pragma once

#include <exception>
#include <string>
#include <utility>

namespace VeltoTouch {

// Where a container is damaged. What reader and migration throw is an exception of the standard library and, if the
// place is known, a Damage too.
class Damage {
public:
    // "Frames[2]", or for text that is no JSON "byte 7: expected a value".
    [[nodiscard]] const std::string& place() const noexcept { return _place; }

protected:
    explicit Damage(std::string place) : _place(std::move(place)) {}
    ~Damage() = default;

private:
    std::string _place;
};

// An exception of the standard library with a place beside its message.
template <class Error>
class PlacedError final : public Error, public Damage {
public:
    PlacedError(const std::string& message, std::string place) : Error(message), Damage(std::move(place)) {}
};

// Returns the place of what was thrown, null if none is known.
[[nodiscard]] inline const std::string* placeOf(const std::exception& error) noexcept {
    const auto* damage = dynamic_cast<const Damage*>(&error);
    return damage != nullptr ? &damage->place() : nullptr;
}

// Returns the message of what was thrown, with its place in brackets if one is known.
[[nodiscard]] inline std::string placedMessageOf(const std::exception& error) {
    const std::string* place = placeOf(error);
    return place != nullptr ? error.what() + (" (" + *place + ")") : error.what();
}

} // namespace VeltoTouch
