#include "Platform/JSON.h"
#include "Service/VeltoHIDService.h"
#include "Service/VeltoIUnknown.h"
#include "Tests/Support/TestHost.h"

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;

constexpr CFUUIDBytes kBasicUnknownID{0, 0, 0, 0, 0, 0, 0, 0, 0xC0, 0, 0, 0, 0, 0, 0, 0x46};

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

TEST(BoundaryTest, TheFactoryMakesAServiceForItsTypeAloneAndTheHostHoldsTheOnlyReference) {
    EXPECT_EQ(VeltoTouchHIDServiceFactory(nullptr, kIOHIDServiceInterface2ID), nullptr);
    EXPECT_EQ(VeltoTouchHIDServiceFactory(nullptr, nullptr), nullptr);

    const auto type = CFUUIDCreateFromUUIDBytes(nullptr, kIOHIDServicePlugInTypeID->bytes()); // equal, another object
    auto** handle = static_cast<IOCFPlugInInterfaceStruct**>(VeltoTouchHIDServiceFactory(nullptr, type.get()));
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ((*handle)->version, 1);
    EXPECT_EQ((*handle)->revision, 0);
    EXPECT_EQ((*handle)->AddRef(handle), 2U);
    EXPECT_EQ((*handle)->Release(handle), 1U);
    EXPECT_EQ((*handle)->Release(handle), 0U);
}

TEST(BoundaryTest, EitherHandleAnswersBothInterfacesWithAReferenceEachAndNoOther) {
    const auto object = makeRef<NotingService>();
    const Handles handles(*object);
    EXPECT_EQ((*handles.plugIn)->_reserved, static_cast<VeltoHIDService*>(object.get()));
    EXPECT_EQ((*handles.service)->_reserved, static_cast<VeltoHIDService*>(object.get()));

    const auto query = [&](const CFUUIDBytes& interface, bool throughService) {
        void* handle = &handle;
        const HRESULT status = throughService ? (*handles.service)->QueryInterface(handles.service, interface, &handle)
                                              : (*handles.plugIn)->QueryInterface(handles.plugIn, interface, &handle);
        if (status != S_OK) {
            EXPECT_EQ(status, E_NOINTERFACE);
            EXPECT_EQ(handle, &handle) << "the handle was touched";
            return static_cast<void*>(nullptr);
        }
        return handle;
    };
    for (const bool throughService : {false, true}) {
        EXPECT_EQ(query(kIOHIDServiceInterface2ID->bytes(), throughService), handles.service);
        EXPECT_EQ(query(kIOCFPlugInInterfaceID->bytes(), throughService), handles.plugIn);
        EXPECT_EQ(CFGetRetainCount(object.get()), 3);
        EXPECT_EQ(query(kBasicUnknownID, throughService), nullptr);
        EXPECT_EQ(query(kIOHIDServicePlugInTypeID->bytes(), throughService), nullptr);
        EXPECT_EQ(CFGetRetainCount(object.get()), 3);
        EXPECT_EQ((*handles.service)->Release(handles.service), 2U);
        EXPECT_EQ((*handles.plugIn)->Release(handles.plugIn), 1U);
    }
}

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
    EXPECT_THAT(object->calls, ElementsAre(R"(probe 5 {"a":1})", R"(start 6 {"a":1})", R"(set key to "value")"));
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

TEST(BoundaryTest, TheTouchServiceAnswersNoQueriesTakesNoOutputAndScoresNothing) {
    const TestHost host(makeRef<TestDevice>());
    const LogCapture log(OS_LOG_TYPE_DEBUG);
    std::int32_t order = 7;
    EXPECT_EQ((*host.plugIn)->Probe(host.plugIn, nullptr, 0, &order), kIOReturnSuccess);
    EXPECT_EQ(order, 7);
    EXPECT_EQ((*host.service)->copyEvent(host.service, kIOHIDEventTypeDigitizer, nullptr, 0), nullptr);
    EXPECT_EQ((*host.service)->setOutputEvent(host.service, nullptr), static_cast<IOReturn>(0xE00002C7));
    const auto line = [](const char* message) { return testing::FieldsAre("HIDService", OS_LOG_TYPE_DEBUG, message); };
    EXPECT_THAT(log.lines(), ElementsAre(line("probeWithService:properties:outScore:"),
                                         line("copyEventWithType:matching:options:"), line("setOutputEvent:")));
}

} // namespace
} // namespace VeltoTouch::Tests
