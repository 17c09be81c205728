#include "Platform/Clock.h"
#include "Tests/Kernel/HidrawFixture.h"
#include "Tests/Support/Reports.h"
#include "Velto/Surface/ReportDescriptor.h"

#include <cerrno>
#include <ctime>
#include <system_error>
#include <tuple>

#include <gmock/gmock.h>
#include <sys/stat.h>

namespace VeltoTouch::Tests {
namespace {

using testing::AllOf;
using testing::AnyOf;
using testing::Each;
using testing::ElementsAre;
using testing::Ge;
using testing::IsEmpty;
using testing::Le;

class HidrawDeviceTest : public HidrawFixture {};

TEST_F(HidrawDeviceTest, PropertiesAreKnownBeforeItIsOpenAndAfterItHasGone) {
    const std::pair<const char*, const char*> rows[]{
        {"VendorID", "65025"}, // above the range of a signed 16-bit number
        {"ProductID", "32770"},
        {"Product", R"("Virtual Touch Surface")"},
        {"SerialNumber", R"("K-1")"},
        {"PhysicalLocation", R"("guest/input0")"},
        {"Transport", R"("Virtual")"},
        {"PrimaryUsagePage", "65376"},
        {"PrimaryUsage", "1"},
        {"MaxInputReportSize", "73"},
        {"Colour", "null"},
        {"", "null"},
    };
    for (const bool isThere : {true, false}) {
        SCOPED_TRACE(isThere ? "there" : "gone");
        for (const auto& [key, value] : rows)
            EXPECT_EQ(property(*device, key), value) << key;
        const Ref<Value> descriptor = device->getProperty("ReportDescriptor");
        ASSERT_NE(as<Data>(descriptor), nullptr);
        const std::string_view bytes = as<Data>(descriptor)->bytes();
        EXPECT_EQ(Report(bytes.begin(), bytes.end()),
                  Report(Surface::kReportDescriptor.begin(), Surface::kReportDescriptor.end()));
        EXPECT_FALSE(device->setProperty("Product", makeRef<String>("Another")));
        EXPECT_FALSE(device->setProperty("Colour", nullptr));
        surface.unplug();
    }
    const VirtualDevice plain({.serialNumber = "", .location = "", .bus = 0x05});
    const auto other = makeRef<HidrawDevice>(plain.path());
    EXPECT_EQ(property(*other, "SerialNumber"), "null") << "one that it does not have";
    EXPECT_EQ(property(*other, "PhysicalLocation"), "null");
    EXPECT_EQ(property(*other, "Transport"), R"("Bluetooth")");
}

TEST(HidrawNodeTest, WhatIsNoHidrawNodeCannotBeMadeADevice) {
    for (const auto& [path, error] :
         {std::pair{"/dev/hidraw63", ENOENT}, {"/dev/null", ENOTTY}, {"/proc/version", ENOTTY}, {"", ENOENT}}) {
        try {
            std::ignore = makeRef<HidrawDevice>(path);
            ADD_FAILURE() << path;
        } catch (const std::system_error& thrown) {
            EXPECT_EQ(thrown.code().value(), error) << path << ": " << thrown.what();
        }
    }
}

TEST_F(HidrawDeviceTest, ADeviceThatIsNotOpenGivesNoReports) {
    surface.answer(kIOHIDReportTypeFeature, 0x1F, {0x1F, 1, 2, 3, 4});
    for (const bool wasOpen : {false, true}) {
        SCOPED_TRACE(wasOpen ? "closed" : "never open");
        EXPECT_EQ(ask(0x1F), (Answer{kIOReturnNotOpen, {}}));
        EXPECT_THROW(start(), std::system_error);
        ASSERT_EQ(device->open(0), kIOReturnSuccess);
        EXPECT_EQ(ask(0x1F), (Answer{kIOReturnSuccess, {0x1F, 1, 2, 3, 4}}));
        device->close(0);
    }
}

TEST_F(HidrawDeviceTest, ADeviceThatMayOnlyBeReadIsNotPermitted) {
    ASSERT_EQ(::chmod(surface.path().c_str(), 0444), 0);
    ASSERT_EQ(::seteuid(65534), 0);
    const IOReturn status = device->open(0);
    const auto another = makeRef<HidrawDevice>(surface.path());
    ASSERT_EQ(::seteuid(0), 0);
    EXPECT_EQ(status, kIOReturnNotPermitted);
    EXPECT_TRUE(another->getProperty("VendorID")) << "to match it, reading is enough";
    EXPECT_EQ(device->open(0), kIOReturnSuccess);
}

TEST_F(HidrawDeviceTest, ReportsArriveBitForBitInOrderAndWithTheHostsTime) {
    openAndStart();
    std::vector<Report> sent;
    const std::uint64_t startTime = mach_absolute_time();
    for (std::uint32_t i = 0; i < 10 * kSurelyKept; ++i) {
        sent.push_back(i % 16 == 5 ? firmwareEventReport(static_cast<std::uint8_t>(i)) : imageNumber(i));
        surface.send(sent.back());
        if (i % kSurelyKept == kSurelyKept - 1) {
            ASSERT_TRUE(receive(sent.size()));
        }
    }
    EXPECT_EQ(received.reports, sent);
    EXPECT_THAT(received.times, Each(AllOf(Ge(startTime), Le(mach_absolute_time()))));
    EXPECT_TRUE(std::ranges::is_sorted(received.times));
    EXPECT_EQ(run(0), kCFRunLoopRunTimedOut) << "and no more";
}

TEST_F(HidrawDeviceTest, ReportsAreCutToTheBufferAndKeptWhileUnscheduled) {
    openAndStart();
    received.room = 4;
    surface.send(imageNumber(1));
    surface.send(imageNumber(2));
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    ASSERT_EQ(received.reports.size(), 1U);
    received.room = 0;
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource) << "a report that nobody wants is dropped";
    received.room = 512;
    source = {};
    surface.send(imageNumber(3));
    EXPECT_EQ(run(0), kCFRunLoopRunFinished);
    start();
    ASSERT_TRUE(receive(3));
    const Report first = imageNumber(1);
    EXPECT_THAT(received.reports, ElementsAre(Report(first.begin(), first.begin() + 4), IsEmpty(), imageNumber(3)));
}

TEST_F(HidrawDeviceTest, AskedForReportsComeAsTheDeviceAnswers) {
    ASSERT_EQ(device->open(0), kIOReturnSuccess);
    Report whole(128, 0x5A);
    whole[0] = 0x3F;
    surface.answer(kIOHIDReportTypeFeature, 0x1F, {0x1F, 0x88, 0x13, 0x00, 0x00});
    surface.answer(kIOHIDReportTypeFeature, 0x3F, whole);
    surface.answer(kIOHIDReportTypeFeature, 0x10, {0x10, 1, 2});
    surface.answer(kIOHIDReportTypeFeature, 0x11, {});
    surface.answer(kIOHIDReportTypeInput, 0x01, imageNumber(1));
    struct Row {
        const char* name;
        Answer asked, answer;
    };
    const Row rows[]{
        {"answered", ask(0x1F), {kIOReturnSuccess, {0x1F, 0x88, 0x13, 0x00, 0x00}}},
        {"as long as the buffer", ask(0x3F), {kIOReturnSuccess, whole}},
        {"a larger buffer", ask(0x3F, 100'000), {kIOReturnSuccess, whole}},
        {"cut to the buffer", ask(0x3F, 2), {kIOReturnSuccess, {0x3F, 0x5A}}},
        {"short", ask(0x10), {kIOReturnSuccess, {0x10, 1, 2}}},
        {"nothing", ask(0x11), {kIOReturnSuccess, {}}},
        {"refused", ask(0x12), {kIOReturnError, {}}},
        {"not declared", ask(0x77), {kIOReturnError, {}}},
        {"no report has this ID", ask(0x11F), {kIOReturnUnsupported, {}}},
        {"no room", ask(0x1F, 0), {kIOReturnError, {}}},
        {"input", ask(1, 128, kIOHIDReportTypeInput), {kIOReturnSuccess, imageNumber(1)}},
        {"input, refused", ask(2, 128, kIOHIDReportTypeInput), {kIOReturnError, {}}},
        {"output", ask(1, 128, kIOHIDReportTypeOutput), {kIOReturnUnsupported, {}}},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(row.asked.status, row.answer.status) << row.name;
        EXPECT_EQ(row.asked.report, row.answer.report) << row.name;
    }
}

TEST_F(HidrawDeviceTest, ReportsAreAskedForOnOtherThreadsUntilItHasGone) {
    const Answer wanted{kIOReturnSuccess, {0x1F, 1, 2, 3, 4}};
    surface.answer(kIOHIDReportTypeFeature, 0x1F, wanted.report);
    openAndStart();
    std::atomic<int> answers = 0;
    Answer last{};
    std::thread asker([&] {
        for (last = ask(0x1F); last == wanted; last = ask(0x1F))
            ++answers;
    });
    std::size_t sent = 0;
    while (answers < 50) {
        for (int i = 0; i < kSurelyKept; ++i)
            surface.send(imageNumber(static_cast<std::uint32_t>(sent++)));
        if (!receive(sent))
            break;
    }
    EXPECT_EQ(received.reports.size(), sent);
    surface.unplug();
    asker.join();
    EXPECT_GE(answers, 50);
    EXPECT_THAT(last.status, AnyOf(kIOReturnError, kIOReturnNoDevice)) << "the former for a request under way";
    EXPECT_EQ(ask(0x1F), (Answer{kIOReturnNoDevice, {}})) << "before the loop has noticed";
    EXPECT_EQ(run(), kCFRunLoopRunHandledSource);
    EXPECT_EQ(removals, 1);
}

} // namespace
} // namespace VeltoTouch::Tests
