#pragma once

#include <cstdint>
#include <cstring>
#include <random>
#include <span>

namespace VeltoTouch::Tests {

// Where a story's choices come from: a seed, or the bytes of a fuzzer, which read as zeros once they have ended.
class Choices {
public:
    explicit Choices(std::uint64_t seed) : _random(seed), _hasBytes(false) {}
    explicit Choices(std::span<const std::uint8_t> bytes) : _bytes(bytes), _hasBytes(true) {}

    // False once the bytes have ended; a seed never ends.
    [[nodiscard]] bool canContinue() const { return !_hasBytes || !_bytes.empty(); }

    // A number of all bits.
    std::uint64_t bits() { return _hasBytes ? take(sizeof(std::uint64_t)) : _random(); }

    // A number from 0 to `count` - 1. Small choices cost a fuzzer one byte.
    std::uint64_t below(std::uint64_t count) {
        const std::uint64_t number = _hasBytes ? take(count <= 256 ? 1 : sizeof(std::uint64_t)) : _random();
        return number % count;
    }
    bool oneIn(std::uint64_t count) { return below(count) == count - 1; }

    template <class Container>
    const auto& oneOf(const Container& choices) {
        return choices[below(std::size(choices))];
    }

private:
    std::uint64_t take(std::size_t size) {
        std::uint64_t number = 0;
        const std::size_t count = size < _bytes.size() ? size : _bytes.size();
        std::memcpy(&number, _bytes.data(), count);
        _bytes = _bytes.subspan(count);
        return number;
    }

    std::mt19937_64 _random;
    std::span<const std::uint8_t> _bytes;
    bool _hasBytes;
};

} // namespace VeltoTouch::Tests
