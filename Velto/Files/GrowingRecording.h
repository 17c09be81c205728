#pragma once

#include "Platform/FileDescriptor.h"
#include "Plugin/Recording/Frame.h"

#include <chrono>
#include <cstdint>
#include <string>

namespace VeltoTouch::Files {

// A recording that is written while it is made. Behind its frames stands what a container ends with, and each write
// overwrites that and writes it again: between two writes the file is whole. What a write that was cut leaves,
// `velto recover` reads.
//
// Writing waits for the file system. One thread.
class GrowingRecording {
public:
    // What a reader takes of one file, less some room (4 GiB).
    static constexpr std::uint64_t kLargest = (std::uint64_t{4} << 30U) - (std::uint64_t{64} << 20U);

    // How often its owner syncs: what a loss of power takes is less than a second.
    static constexpr std::chrono::milliseconds kBetweenSyncs{500};

    // Begins a recording without frames. An existing file is replaced as writeFile does, or kept. Throws what beginFile
    // or beginNewFile throws.
    enum class Old : bool { Replace, Keep };
    explicit GrowingRecording(const std::string& path, Old old = Old::Replace);

    // Adds a frame, which `write` writes at the latest. The three throw std::system_error; the file then holds the
    // frames of the writes before.
    void append(const Frame& frame);
    void write();
    // Makes durable what is written.
    void sync();

    // Of the file after the next write, in bytes.
    [[nodiscard]] std::uint64_t size() const noexcept;

private:
    const FileDescriptor _file;
    std::uint64_t _framesEnd;
    std::string _waiting; // frames, each with a comma behind it
};

} // namespace VeltoTouch::Files
