#include "Tests/Support/Frames.h"
#include "Tests/Support/TestAccelerometer.h"
#include "Tests/Support/TestHost.h"

#include <numeric>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

// A service with an accelerometer, whose samples the test makes: the z of each is its number, from 0.
class AccelCaptureTest : public testing::Test {
protected:
    AccelCaptureTest() {
        registerEventService(accelerometer);
        host.schedule();
        device->deliverAndWait({}); // by now it listens
    }
    ~AccelCaptureTest() override { unregisterEventService(accelerometer); }

    void sample(int count) {
        for (; count != 0; --count)
            accelerometer->deliverAndWait(0.25, 0.1, _nextSample++);
    }

    void touch() {
        auto reports = reportsOf({"hold:play-pause"});
        reports.resize(10);
        device->deliverAll(reports);
    }
    // A firmware reset in the middle of a touch gives two events: the touch's cancel, then the vendor event.
    void touchAndReset() {
        touch();
        device->deliverAndWait(firmwareEventReport(InputReport::FirmwareEvent::kReset));
    }

    // The recorded samples, in the order of the recording.
    std::vector<Frame> recorded() const {
        std::vector<Frame> samples;
        const auto isSample = [](const Frame& frame) { return frame.type == Frame::Type::Metadata; };
        const PipelineRecording recording = host.recording();
        std::ranges::copy_if(recording.frames(), std::back_inserter(samples), isSample);
        return samples;
    }
    std::vector<int> recordedNumbers() const {
        std::vector<int> numbers;
        for (const Frame& frame : recorded())
            numbers.push_back(static_cast<int>(as<Number>(as<Dictionary>(frame.value)->find("Z"))->longLongValue()));
        return numbers;
    }
    static std::vector<int> fromTo(int first, int last) {
        std::vector<int> numbers(static_cast<std::size_t>(last - first + 1));
        std::iota(numbers.begin(), numbers.end(), first);
        return numbers;
    }

    const Ref<TestAccelerometer> accelerometer = makeRef<TestAccelerometer>();
    const Ref<TestDevice> device = makeRef<TestDevice>();
    TestHost host{device};

private:
    int _nextSample = 0;
};

TEST_F(AccelCaptureTest, HundredWaitAndAHundredFollowTheLastDigitizerEvent) {
    sample(150);
    EXPECT_THAT(recorded(), testing::IsEmpty());
    touchAndReset();
    EXPECT_THAT(recorded(), testing::IsEmpty()) << "the next sample brings them";
    sample(1);
    EXPECT_EQ(recordedNumbers(), fromTo(50, 150));
    sample(60);
    touchAndReset(); // counting restarts
    sample(100);
    EXPECT_EQ(recordedNumbers(), fromTo(50, 310));
    sample(3);
    EXPECT_EQ(recordedNumbers(), fromTo(50, 310)) << "the three wait";
    touchAndReset();
    sample(1);
    EXPECT_EQ(recordedNumbers(), fromTo(50, 314));
}

TEST_F(AccelCaptureTest, ADigitizerEventNeedNotBeTheLastOfItsBatch) {
    touch();
    sample(102); // the touch's own event has had its hundred
    EXPECT_EQ(recordedNumbers(), fromTo(0, 99));
    device->deliverAndWait(firmwareEventReport(InputReport::FirmwareEvent::kReset)); // cancel, vendor event
    sample(1);
    EXPECT_EQ(recordedNumbers(), fromTo(0, 102));
    EXPECT_EQ(accelerometer->reportInterval(), 10'000.0);
}

TEST_F(AccelCaptureTest, AResetAloneIsNoDigitizerEvent) {
    sample(1);
    device->deliverAndWait(firmwareEventReport(InputReport::FirmwareEvent::kReset));
    sample(1);
    EXPECT_EQ(host.events().size(), 1U);
    EXPECT_THAT(recorded(), testing::IsEmpty());
}

TEST_F(AccelCaptureTest, ASampleIsRecordedAsFloatsWithTheTimeOfItsArrival) {
    const std::uint64_t before = mach_absolute_time();
    sample(1);
    const std::uint64_t after = mach_absolute_time();
    touchAndReset();
    sample(1);
    const Frame waited = recorded().front();
    EXPECT_EQ(waited.key, "Accel");
    EXPECT_EQ(JSON::text(waited.value.get()), R"({"X":0.25,"Y":0.10000000149011612,"Z":0.0})");
    EXPECT_GE(waited.timestampNs, before);
    EXPECT_LE(waited.timestampNs, after);
}

} // namespace
} // namespace VeltoTouch::Tests
