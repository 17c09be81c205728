#include "Platform/Testing/LogCapture.h"
#include "Tests/Support/Frames.h"
#include "Tests/Support/TestHost.h"

#include <thread>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;
using testing::FieldsAre;

class PropertiesTest : public testing::Test {
protected:
    PropertiesTest() { host.start(); }

    // The property in JSON, a nil one as (nil).
    std::string read(const std::string& key) const {
        const auto value = host.property(key);
        return value ? JSON::text(value.get()) : "(nil)";
    }
    bool write(const std::string& key, std::string_view value) { return host.set(key, json(value)); }

    std::vector<std::string> recordedFrames() const {
        auto texts = textsOf(host.recording().frames());
        for (std::string& frame : texts)
            frame.erase(frame.rfind('@')); // the time
        return texts;
    }

    const Ref<TestDevice> device = makeRef<TestDevice>();
    TestHost host{device};
};

TEST_F(PropertiesTest, OwnKeysAreExactAndReadOnlyOthersTheDevices) {
    const Ref<Value> product = json(R"("pad")");
    device->giveProperty("Product", product);
    device->giveProperty("Gain", json("1"), true);
    device->giveProperty("Pipeline", json("3"), true); // the domain without its dot is no key of the pipeline
    device->giveProperty("version", json("1"));
    for (const auto& [key, value] : {std::pair{"Version", "[19,0,0]"}, {"version", "1"}, {"Unknown", "(nil)"}})
        EXPECT_EQ(read(key), value);
    for (const char* key : {"Version", "Recording", "ServicePluginDebug", "Product"})
        EXPECT_FALSE(write(key, "1")) << key << " is passed to the device, which does not take it";
    for (const char* key : {"Gain", "Pipeline"}) {
        EXPECT_TRUE(write(key, "4"));
        EXPECT_EQ(read(key), "4");
    }
    const auto copied = host.property("Product");
    EXPECT_EQ(copied, product);
    EXPECT_EQ(CFGetRetainCount(copied.get()), 3) << "the test's, the device's, and the caller's";
    EXPECT_THAT(recordedFrames(), testing::IsEmpty());
}

TEST_F(PropertiesTest, WritesBelowThePipelineAreTakenAndRecorded) {
    EXPECT_TRUE(write("Pipeline.Algs.HoldTimeoutMilliseconds", "250"));
    EXPECT_TRUE(write("Pipeline.Nonsense", R"({"a":1})"));
    EXPECT_TRUE(host.set("Pipeline.", nullptr));
    EXPECT_EQ(read("Pipeline.Algs.HoldTimeoutMilliseconds"), "250");
    EXPECT_EQ(read("Pipeline.Nonsense"), "(nil)");
    EXPECT_EQ(read("Pipeline.DebugInfo"), R"({"DisjointImageCount":0,"ResetCount":0})");
    EXPECT_THAT(recordedFrames(), ElementsAre("Algs.HoldTimeoutMilliseconds=250", R"(Nonsense={"a":1})", "="));
}

TEST_F(PropertiesTest, FirmwareDebugReportsAreShownOrWithTheReason) {
    device->setFeatureReport(0x10, {.bytes = {0x10, 0x01, 0x02}});
    device->setFeatureReport(0x1D, {.bytes = Report(200, 0xAB), .claimedLength = 200});
    device->setFeatureReport(0x32, {.bytes = {0x32}, .claimedLength = SIZE_MAX});
    device->setFeatureReport(0x3F, {.bytes = {1}, .status = kIOReturnError});
    const auto reports = host.property("FirmwareDebugReports");
    const auto& dictionary = *as<Dictionary>(reports);
    const auto entry = [&](const char* key) { return as<String>(dictionary.find(key))->text(); };
    std::vector<std::string> keys;
    for (const auto& [key, value] : dictionary.entries())
        keys.push_back(key);
    EXPECT_THAT(keys, ElementsAre("0x04", "0x10", "0x11", "0x12", "0x13", "0x1d", "0x32", "0x3b", "0x3c", "0x3f"));
    EXPECT_EQ(entry("0x10"), "10 01 02 ");
    EXPECT_EQ(entry("0x04"), "Failed to get report ID 0x4: 0xe00002c7");
    EXPECT_EQ(entry("0x3f"), "Failed to get report ID 0x3f: 0xe00002bc");
    EXPECT_EQ(entry("0x1d"), Util::hexStringFromBytes(Report(128, 0xAB))) << "no more than the room that was given";
    EXPECT_EQ(entry("0x32"), "") << "a length that is none";
    EXPECT_EQ(device->lastRoom, 128U);
}

TEST_F(PropertiesTest, FactoryResetHoldDurationIsReadFromItsReportOrNil) {
    EXPECT_EQ(read("FactoryResetHoldDuration"), "(nil)") << "refused";
    device->setFeatureReport(0x1F, {.bytes = {0x1F, 0x88, 0x13, 0x00, 0x00}});
    EXPECT_EQ(read("FactoryResetHoldDuration"), "5000");
    EXPECT_EQ(device->lastRoom, 32U);
    device->setFeatureReport(0x1F, {.bytes = {0x1F, 0x88, 0x13, 0x00}});
    EXPECT_EQ(read("FactoryResetHoldDuration"), "(nil)") << "short";
    device->setFeatureReport(0x1F, {.bytes = {0x1F, 0x88, 0x13, 0x00, 0x00}, .status = kIOReturnError});
    EXPECT_EQ(read("FactoryResetHoldDuration"), "(nil)") << "failed";
}

TEST_F(PropertiesTest, TheDebugDumpHoldsFiveOthers) {
    write("Pipeline.Algs.EnableTapSuppression", "false");
    const auto dump = host.property("ServicePluginDebug");
    const auto& dictionary = *as<Dictionary>(dump);
    EXPECT_EQ(dictionary.entries().size(), 5U);
    for (const char* key :
         {"Version", "FirmwareDebugReports", "Recording", "Pipeline.DebugInfo", "Pipeline.Algs.DebugInfo"}) {
        ASSERT_NE(dictionary.find(key), nullptr) << key;
        EXPECT_TRUE(CFEqual(dictionary.find(key), host.property(key).get())) << key;
    }
}

TEST_F(PropertiesTest, ADeviceThatHasGoneOrNeverWasReadsNil) {
    host.stop();
    EXPECT_EQ(read("Product"), "(nil)");
    EXPECT_FALSE(write("Product", "1"));
    EXPECT_EQ(read("FactoryResetHoldDuration"), "(nil)");
    EXPECT_THAT(read("FirmwareDebugReports"), testing::HasSubstr("Failed to get report ID 0x4: 0xe00002c0"));
    EXPECT_EQ(read("Version"), "[19,0,0]");
}

TEST_F(PropertiesTest, RequestKeepsItsDeviceWhenTheHostStopsMeanwhile) {
    device->setFeatureReport(0x3F, {.bytes = {0x3F}});
    const CFIndex references = CFGetRetainCount(device.get());
    device->whenAsked = [&] {
        (*host.plugIn)->Stop(host.plugIn);
        EXPECT_EQ(CFGetRetainCount(device.get()), references);
    };
    EXPECT_THAT(read("FirmwareDebugReports"), testing::HasSubstr(R"("0x3f":"3f ")"));
    EXPECT_EQ(CFGetRetainCount(device.get()), references - 1);
}

TEST_F(PropertiesTest, ThreadsMayReadAndWriteWhileTheHostStartsAndStops) {
    std::atomic<bool> isOver{false};
    std::thread other([&] {
        while (!isOver) {
            (void)read("FactoryResetHoldDuration");
            write("Gain", "1");
        }
    });
    for (int i = 0; i < 2000; ++i) {
        (*host.plugIn)->Stop(host.plugIn);
        host.start();
    }
    isOver = true;
    other.join();
}

TEST_F(PropertiesTest, ReadsAndWritesAreLoggedWithKeyAndValue) {
    const LogCapture log(OS_LOG_TYPE_DEBUG);
    write("Gain", R"("much")");
    (void)read("Gain");
    (void)host.set("Gain", nullptr);
    const auto line = [](const char* message) { return FieldsAre("HIDService", OS_LOG_TYPE_DEBUG, message); };
    EXPECT_THAT(log.lines(), ElementsAre(line("setProperty:much forKey:Gain"), line("getPropertyForKey:Gain"),
                                         line("setProperty:(null) forKey:Gain")));
}

} // namespace
} // namespace VeltoTouch::Tests
