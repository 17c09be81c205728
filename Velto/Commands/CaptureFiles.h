#pragma once

#include "Platform/FileDescriptor.h"
#include "Velto/Bench/TroubleWatch.h"
#include "Velto/Bench/TroubleWindow.h"
#include "Velto/Files/GrowingRecording.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

// The files that `velto capture` writes. One thread; system errors are thrown as std::runtime_error under the file's
// name.

namespace VeltoTouch::Velto {

// A recording in as many files as it takes: where one is full, the next goes on, beginning with the settings in force.
// NAME.json is followed by NAME-2.json and so on; a file that is there already is never one of those, NAME.json itself
// only if it is to be replaced.
class RollingRecording {
public:
    using Old = Files::GrowingRecording::Old;
    RollingRecording(std::string path, Old old, std::uint64_t largest = Files::GrowingRecording::kLargest);

    void append(const Frame& frame);
    void write();
    void sync();

    // The file that grows.
    [[nodiscard]] const std::string& path() const noexcept { return _path; }
    // Of all files, in bytes.
    [[nodiscard]] std::uint64_t size() const noexcept { return _sizeBefore + _file->size(); }

private:
    void goOn(std::uint64_t timestampNs);
    void beginUnused();

    const std::string _firstPath;
    const std::uint64_t _largest;
    std::string _path;
    std::unique_ptr<Files::GrowingRecording> _file;
    std::uint64_t _sizeBefore = 0;
    std::size_t _number = 1;
    Bench::SettingsInForce _settings;
};

// What a capture does with its frames.
class CaptureTarget {
public:
    CaptureTarget() = default;
    CaptureTarget(const CaptureTarget&) = delete;
    CaptureTarget& operator=(const CaptureTarget&) = delete;
    virtual ~CaptureTarget() = default;

    virtual void add(const Frame& frame) = 0;
    // Called when the newest frame is trouble.
    virtual void mark(Bench::Trouble /*trouble*/) {}
    // Hands what was added to the system.
    virtual void write() = 0;
    // Makes durable what was written.
    virtual void sync() = 0;
    // Called when no more comes: writes all and makes it durable.
    virtual void finish() = 0;
    // Returns how much has been written, in bytes.
    [[nodiscard]] virtual std::uint64_t size() const = 0;
    // Returns how many recordings there are; nothing if it is always one.
    [[nodiscard]] virtual std::optional<std::uint64_t> recordings() const { return std::nullopt; }
};

// Everything, in one recording.
class WholeCapture final : public CaptureTarget {
public:
    explicit WholeCapture(const std::string& path) : _recording(path, RollingRecording::Old::Replace) {}

    void add(const Frame& frame) override { _recording.append(frame); }
    void write() override { _recording.write(); }
    void sync() override { _recording.sync(); }
    void finish() override;
    [[nodiscard]] std::uint64_t size() const override { return _recording.size(); }

private:
    RollingRecording _recording;
};

// The time around trouble: a recording each in a folder, named velto-TIME-CAUSE.json after when (UTC) and what it was.
class TroubleCapture final : public CaptureTarget {
public:
    struct Options {
        std::string folder; // made where there is none
        std::uint64_t beforeNs = 0;
        std::uint64_t afterNs = 0;
        // What the files named in this way may take, those of other runs included; beyond it the oldest are deleted.
        std::optional<std::uint64_t> limit;
    };

    // `watch` outlives this and handles each frame before it comes here. Throws std::runtime_error if another capture
    // with a limit keeps its recordings in the folder, or any does where this one has a limit.
    TroubleCapture(const Options& options, const Bench::TroubleWatch& watch);

    void add(const Frame& frame) override { _window.add(frame); }
    void mark(Bench::Trouble trouble) override;
    void write() override;
    void sync() override;
    void finish() override;
    [[nodiscard]] std::uint64_t size() const override { return _sizeBefore + (_recording ? _recording->size() : 0); }
    [[nodiscard]] std::optional<std::uint64_t> recordings() const override { return _recordings; }

private:
    void begin();
    void end();
    void keepLimit() const;
    void deleteBeyond(std::uint64_t limit) const;
    void lockFolder();

    const Options _options;
    FileDescriptor _folder; // holds the lock
    Bench::TroubleWindow _window;
    Bench::Trouble _trouble{}; // the first of the recording in progress
    std::optional<RollingRecording> _recording;
    std::uint64_t _recordings = 0;
    std::uint64_t _sizeBefore = 0;
};

} // namespace VeltoTouch::Velto
