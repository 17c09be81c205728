#include "Velto/Bench/LiveSurface.h"
#include "Platform/JSON.h"
#include "Plugin/Pipeline/Properties.h"
#include "Tests/Daemon/BusFixture.h"
#include "Velto/Surface/Devices.h"
#include "Velto/Surface/Scripts.h"

#include <limits>
#include <string>
#include <thread>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using namespace std::chrono_literals;
using Bench::LiveSurface;
using Bench::Setting;

constexpr std::size_t kReports = 2 * LiveSurface::kMostWaiting;

// Sends so many reports as fast as it goes.
Ref<Surface::PlayedDevice> fastDevice(std::size_t reports) {
    const auto steps = Surface::scriptOf({Surface::parseStep(fmt::format("idle:{}", reports * 10))});
    Surface::Simulation simulation({}, steps);
    return Surface::simulatedDevice(std::move(simulation), std::numeric_limits<double>::infinity());
}

TEST(LiveSurfaceTest, WhatWaitsForTheLoopIsNeitherLostNorMixedUp) {
    const Surface::ConnectedDevice device("sim", fastDevice(kReports), {});
    EventLoop loop;
    std::size_t reports = 0;
    HostTime last{};
    HostTime set{};
    std::string order;
    const Setting setting{.key = std::string(Analysis::kHoldTimeout), .value = Number::withUnsignedInt(250)};
    LiveSurface surface(loop, device, Bus::Which::System, {setting},
                        {.report =
                             [&](HostTime time, std::span<const std::uint8_t> report) {
                                 EXPECT_EQ(report.size(), InputReport::kImageReportLength);
                                 EXPECT_GE(time, last);
                                 last = time;
                                 if (++reports == 1) {
                                     EXPECT_EQ(set, time);
                                     order += "report ";
                                 }
                             },
                         .setting =
                             [&](HostTime time, const Setting& given) {
                                 set = time;
                                 order += given.key + " ";
                             },
                         .gone =
                             [&](const std::string& failure) {
                                 order += "gone" + failure;
                                 loop.stop();
                             }});
    std::this_thread::sleep_for(100ms); // the reader goes on alone, until there is no room
    loop.run(60s);
    EXPECT_EQ(reports, kReports);
    EXPECT_EQ(order, "Pipeline.Algs.HoldTimeoutMilliseconds report gone");
    EXPECT_EQ(surface.settings().description(), "the defaults, 1 of the command line");
}

TEST(LiveSurfaceTest, AReaderThatWaitsForRoomCanBeEnded) {
    const Surface::ConnectedDevice device("sim", fastDevice(kReports), {});
    EventLoop loop;
    const LiveSurface surface(loop, device, Bus::Which::System, {}, {});
    std::this_thread::sleep_for(100ms);
}

// Each write is handed over with the value that holds; a setting of the command line stays.
TEST_F(BusTest, ALiveSurfaceFollowsTheSettingsOfTheServiceThatServesIt) {
    for (const FoundSetting& setting : allSettings())
        properties.put(fullKeyOf(setting), Number::withUnsignedInt(1));
    const std::string threshold(Analysis::kActivationThreshold);
    const std::string timeout(Analysis::kHoldTimeout);
    Bus::Client writer = client();
    const Surface::ConnectedDevice device(kDevice, fastDevice(1), {});

    EventLoop loop;
    std::vector<std::string> given;
    std::optional<std::jthread> writing;
    const auto write = [&](std::stop_token) {
        writer.setProperty("Product", *Number::withUnsignedInt(9)); // not public
        writer.setProperty(threshold, *Number::withUnsignedInt(300));
        writer.setProperty(timeout, *Number::withUnsignedInt(250));
    };
    const auto take = [&](HostTime, const Setting& setting) {
        given.push_back(fmt::format("{}={}", setting.key, as<Number>(setting.value)->doubleValue()));
        if (setting.key == timeout && as<Number>(setting.value)->doubleValue() == 250)
            loop.stop();
    };
    const LiveSurface surface(loop, device, Bus::Which::System, {{.key = threshold, .value = Number::withFloat(7)}},
                              {.setting = take, .batchEnd = [&] {
                                   if (!writing)
                                       writing.emplace(write);
                               }});
    EXPECT_EQ(surface.settings().description(), "velto serve (hidraw7), 1 of the command line");
    loop.run(kPatience);
    ASSERT_EQ(given.size(), 4 + kGroupCount + 1);
    EXPECT_EQ(given.front(), "Pipeline.Algs.HoldTimeoutMilliseconds=1");
    EXPECT_THAT(given, testing::Contains("Pipeline.Algs.ActivationThreshold=7").Times(1));
    EXPECT_EQ(given.back(), "Pipeline.Algs.HoldTimeoutMilliseconds=250");
}

TEST_F(BusTest, ALiveSurfaceTakesUpAServiceThatBeginsAndGoesBackWhenItEnds) {
    for (const FoundSetting& setting : allSettings())
        properties.put(fullKeyOf(setting), Number::withUnsignedInt(1));
    server.reset();
    const Surface::ConnectedDevice device(kDevice, fastDevice(1), {});
    EventLoop loop;
    std::vector<std::string> seen;
    std::optional<LiveSurface> surface;
    std::string timeout = "default";
    const auto look = [&] { // at first without a service, then with it, at last without it again
        const std::string now = fmt::format("{}: {}", surface->settings().description(), timeout);
        if (!seen.empty() && seen.back() == now)
            return;
        seen.push_back(now);
        if (seen.size() == 1)
            server.emplace(properties, kDevice);
        else if (seen.size() == 2)
            server.reset();
        else
            loop.stop();
    };
    surface.emplace(loop, device, Bus::Which::System, std::vector<Setting>(),
                    LiveSurface::Handlers{.setting =
                                              [&](HostTime, const Setting& setting) {
                                                  if (setting.key == Analysis::kHoldTimeout)
                                                      timeout = JSON::text(setting.value.get());
                                              },
                                          .batchEnd = look});
    loop.run(kPatience);
    EXPECT_THAT(seen, testing::ElementsAre("the defaults: default", "velto serve (hidraw7): 1", "the defaults: 500"));
}

} // namespace
} // namespace VeltoTouch::Tests
