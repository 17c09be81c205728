#pragma once

#include "Platform/JSON.h"
#include "Platform/Linux/HidrawDevice.h"
#include "Tests/Kernel/VirtualDevice.h"
#include "Tests/Support/Reports.h"

#include <algorithm>
#include <array>
#include <span>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {

inline constexpr double kPatienceSeconds = 20;
inline constexpr int kSurelyKept = 60; // reports that the kernel surely keeps for a reader

// Keeps the reports that a device delivers.
class Reports final : public InputReportSink {
public:
    std::vector<Report> reports;
    std::vector<std::uint64_t> times;

    [[nodiscard]] std::span<std::uint8_t> buffer() noexcept override { return std::span(_buffer).first(room); }
    void deliver(std::size_t length, std::uint64_t timeStamp) override {
        const auto report = std::span(_buffer).first(std::min(length, room));
        reports.emplace_back(report.begin(), report.end());
        times.push_back(timeStamp);
    }

    std::size_t room = 512;

private:
    std::array<std::uint8_t, 512> _buffer{};
};

// An image whose bytes all differ from its neighbours'.
inline Report imageNumber(std::uint32_t number) {
    Report report(InputReport::kImageReportLength);
    for (std::size_t i = 0; i < report.size(); ++i)
        report[i] = static_cast<std::uint8_t>(number * 31 + i * 7);
    report[0] = InputReport::Image::kReportID;
    return report;
}

// A plugged-in surface, the device on it, and what it has delivered on the test's run loop.
class HidrawFixture : public testing::Test {
protected:
    VirtualDevice surface;
    Ref<HidrawDevice> device = makeRef<HidrawDevice>(surface.path());
    Reports received;
    RunLoopSource source;
    int removals = 0;
    const Ref<String> mode = makeRef<String>("Reports");

    void SetUp() override {
        device->removalHandler = [this] { ++removals; };
    }
    void start() { source = device->startReports(RunLoop::current(), mode->text(), received); }
    void openAndStart() {
        ASSERT_EQ(device->open(1), kIOReturnSuccess);
        start();
    }
    [[nodiscard]] CFRunLoopRunResult run(double seconds = kPatienceSeconds) const {
        return CFRunLoopRunInMode(mode.get(), seconds, true);
    }
    // Runs until so many reports have come in all.
    [[nodiscard]] bool receive(std::size_t count) const {
        while (received.reports.size() < count && run() == kCFRunLoopRunHandledSource) {
        }
        return received.reports.size() == count;
    }

    struct Answer {
        IOReturn status;
        Report report; // as much as the length tells
        friend bool operator==(const Answer&, const Answer&) = default;
    };
    [[nodiscard]] Answer ask(std::uint32_t reportID, std::size_t room = 128,
                             IOHIDReportType type = kIOHIDReportTypeFeature) const {
        Report buffer(room, 0xAA);
        std::size_t length = 9999;
        const IOReturn status = device->getReport(type, reportID, buffer, length);
        EXPECT_LE(length, room);
        buffer.resize(std::min(length, room));
        return {status, buffer};
    }
};

// In JSON; null where there is none.
inline std::string property(HidrawDevice& device, const std::string& key) {
    return JSON::text(device.getProperty(key).get());
}

} // namespace VeltoTouch::Tests
