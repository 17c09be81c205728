#include "Platform/JSON.h"
#include "Plugin/Service/VeltoHIDService.h"
#include "Plugin/Service/VeltoIUnknown.h"
#include "Tests/Support/TestHost.h"

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

// A service of the base class, which notes how its operations are called.
class NotingService final : public VeltoHIDService {
public:
    std::vector<std::string> calls;
    Ref<Value> answer = makeRef<String>("answer");

    IOReturn probeWithServicePropertiesOutScore(io_service_t service, CFDictionaryRef properties,
                                                std::int32_t* score) override {
        *score = 7;
        calls.push_back(fmt::format("probe {} {}", service, JSON::text(properties)));
        return 1;
    }
    IOReturn startWithServiceProperties(io_service_t service, CFDictionaryRef properties) override {
        calls.push_back(fmt::format("start {} {}", service, JSON::text(properties)));
        return 2;
    }
    Ref<Value> getPropertyForKey(CFStringRef key) override { return key->text() == "key" ? answer : nullptr; }
    bool setPropertyForKey(CFPropertyListRef value, CFStringRef key) override {
        calls.push_back(fmt::format("set {} to {}", key->text(), JSON::text(value)));
        return true;
    }
};

// Its handles, as a host holds them.
struct Handles {
    explicit Handles(const VeltoHIDService& object)
        : plugIn(static_cast<IOCFPlugInInterfaceStruct**>(VeltoIUnknown::handleOf(object.getPluginInterface()))),
          service(static_cast<IOHIDServiceInterface2**>(VeltoIUnknown::handleOf(object.getServiceInterface()))) {}

    IOCFPlugInInterfaceStruct** plugIn;
    IOHIDServiceInterface2** service;
};

TEST(BoundaryTest, ForwardingSwapsTheArgumentsThatTheServiceTakesTheOtherWayRound) {
    const auto object = makeRef<NotingService>();
    const Handles handles(*object);
    const auto table = makeRef<Dictionary>(std::vector<Dictionary::Entry>{{"a", Number::withUnsignedInt(1)}});
    std::int32_t order = 0;
    EXPECT_EQ((*handles.plugIn)->Probe(handles.plugIn, table.get(), 5, &order), 1);
    EXPECT_EQ(order, 7);
    EXPECT_EQ((*handles.plugIn)->Start(handles.plugIn, table.get(), 6), 2);
    const auto key = makeRef<String>("key");
    EXPECT_TRUE((*handles.service)->setProperty(handles.service, key.get(), makeRef<String>("value").get()));
    EXPECT_THAT(object->calls,
                testing::ElementsAre(R"(probe 5 {"a":1})", R"(start 6 {"a":1})", R"(set key to "value")"));
    EXPECT_EQ((*handles.plugIn)->Stop(handles.plugIn), kIOReturnUnsupported) << "what it does not define";
    EXPECT_FALSE((*handles.service)->open(handles.service, 0));
}

TEST(BoundaryTest, ACopiedPropertyIsTheCallersAndNilIsNull) {
    const auto object = makeRef<NotingService>();
    const Handles handles(*object);
    const auto key = makeRef<String>("key");
    const auto copied = Ref<Value>::adopt((*handles.service)->copyProperty(handles.service, key.get()));
    EXPECT_EQ(copied, object->answer);
    EXPECT_EQ(CFGetRetainCount(copied.get()), 2);
    object->answer = nullptr;
    EXPECT_EQ((*handles.service)->copyProperty(handles.service, key.get()), nullptr);
}

} // namespace
} // namespace VeltoTouch::Tests
