#include "Platform/UUID.h"
#include "Platform/PlugIn.h"

#include <cstddef>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

constexpr CFUUIDBytes kBytes{0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF,
                             0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10};

TEST(UUIDTest, TheWrittenFormIsReadInEitherCaseAndAnyOtherTextIsNull) {
    const auto made = CFUUIDCreateFromUUIDBytes(nullptr, kBytes);
    for (const char* text : {"01234567-89AB-CDEF-FEDC-BA9876543210", "01234567-89ab-cdef-fEdC-ba9876543210"})
        EXPECT_TRUE(CFEqual(CFUUIDCreateFromString(nullptr, text).get(), made.get())) << text;
    for (const char* text : {
             "",
             "0123456789ABCDEFFEDCBA9876543210",
             "01234567-89AB-CDEF-FEDC-BA987654321",
             "01234567-89AB-CDEF-FEDC-BA98765432100",
             "01234567-89AB-CDEF-FEDC-BA987654321G",
             "01234567-89AB-CDEF-FEDC+BA9876543210",
             "0123456-789AB-CDEF-FEDC-BA9876543210",
             "0x234567-89AB-CDEF-FEDC-BA9876543210",
             "-1234567-89AB-CDEF-FEDC-BA9876543210",
             " 1234567-89AB-CDEF-FEDC-BA9876543210",
         })
        EXPECT_FALSE(CFUUIDCreateFromString(nullptr, text)) << text;
}

TEST(UUIDTest, EqualityIsOfBytesAndAConstantIsOneObject) {
    CFUUIDBytes otherBytes = kBytes;
    otherBytes.back() ^= 1;
    const CFUUIDRef constant = CFUUIDGetConstantUUIDWithBytes(nullptr, kBytes);
    const CFUUIDRef other = CFUUIDGetConstantUUIDWithBytes(nullptr, otherBytes);
    const auto made = CFUUIDCreateFromUUIDBytes(nullptr, kBytes);
    EXPECT_EQ(CFUUIDGetConstantUUIDWithBytes(nullptr, kBytes), constant);
    EXPECT_TRUE(CFEqual(constant, made.get()));
    EXPECT_NE(constant, made.get());
    EXPECT_FALSE(CFEqual(constant, other));
    EXPECT_FALSE(CFEqual(constant, makeRef<String>("01234567-89AB-CDEF-FEDC-BA9876543210").get()));
}

// Hosts and plug-ins are built apart: they meet in these identifiers and places.
TEST(PlugInTest, IdentifiersAndTheLayoutOfTheTablesStayAsTheyAre) {
    const std::pair<CFUUIDRef, const char*> identifiers[]{
        {kIOHIDServicePlugInTypeID, "0516B563-B15B-11DA-96EB-0014519758EF"},
        {kIOCFPlugInInterfaceID, "C244E858-109C-11D4-91D4-0050E4C6426F"},
        {kIOHIDServiceInterface2ID, "6FE22ABF-68B9-11DB-A71F-0016CBC110F7"},
    };
    for (const auto& [identifier, text] : identifiers)
        EXPECT_TRUE(CFEqual(identifier, CFUUIDCreateFromString(nullptr, text).get())) << text;

    constexpr std::size_t kSlot = sizeof(void*);
    EXPECT_EQ(offsetof(IOCFPlugInInterfaceStruct, Release), 3 * kSlot);
    EXPECT_EQ(offsetof(IOCFPlugInInterfaceStruct, revision), 4 * kSlot + 2);
    EXPECT_EQ(offsetof(IOCFPlugInInterfaceStruct, Probe), 5 * kSlot);
    EXPECT_EQ(offsetof(IOCFPlugInInterfaceStruct, Stop), 7 * kSlot);
    EXPECT_EQ(offsetof(IOHIDServiceInterface2, open), 4 * kSlot);
    EXPECT_EQ(offsetof(IOHIDServiceInterface2, scheduleWithDispatchQueue), 9 * kSlot);
    EXPECT_EQ(offsetof(IOHIDServiceInterface2, setOutputEvent), 12 * kSlot);
}

} // namespace
} // namespace VeltoTouch::Tests
