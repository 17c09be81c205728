#include "Platform/UUID.h"
#include "Platform/Value.h"

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

constexpr CFUUIDBytes kBytes{0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF,
                             0xFE, 0xDC, 0xBA, 0x98, 0x76, 0x54, 0x32, 0x10};

TEST(UUIDTest, WrittenFormIsReadInEitherCaseOtherTextIsNull) {
    const auto made = CFUUIDCreateFromUUIDBytes(nullptr, kBytes);
    for (const char* text : {"01234567-89AB-CDEF-FEDC-BA9876543210", "01234567-89ab-cdef-fEdC-ba9876543210"})
        EXPECT_TRUE(CFEqual(CFUUIDCreateFromString(nullptr, text).get(), made.get())) << text;
    for (const char* text : {
             "",
             "0123456789ABCDEFFEDCBA9876543210",
             "01234567-89AB-CDEF-FEDC-BA987654321",
             "01234567-89AB-CDEF-FEDC-BA98765432100",
             "01234567-89AB-CDEF-FEDC-BA987654321G",
             "0123456-789AB-CDEF-FEDC-BA9876543210",
             "0x234567-89AB-CDEF-FEDC-BA9876543210",
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

} // namespace
} // namespace VeltoTouch::Tests
