#include "Platform/Object.h"

#include <thread>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

// Adds what its users left in it, and 1, to `sum` when it is destroyed.
class Probe : public Object {
public:
    explicit Probe(int& sumAtEnd) : _sum(sumAtEnd) {}
    ~Probe() override { _sum += 1 + left[0] + left[1]; }

    int left[2]{};

private:
    int& _sum;
};

TEST(ObjectTest, IsCountedAndEqualToItselfAlone) {
    int destroyed = 0;
    const CFTypeRef object = new Probe(destroyed);
    EXPECT_EQ(CFRetain(object), object);
    CFRelease(object);
    EXPECT_EQ(CFGetRetainCount(object), 1);
    EXPECT_TRUE(CFEqual(object, object));
    EXPECT_FALSE(CFEqual(object, makeRef<Probe>(destroyed).get()));
    EXPECT_FALSE(CFEqual(object, nullptr) || CFEqual(nullptr, object));
    CFRelease(object);
    EXPECT_EQ(destroyed, 2);

    EXPECT_EQ(CFRetain(nullptr), nullptr);
    EXPECT_EQ(CFGetRetainCount(nullptr), 0);
    CFRelease(nullptr);
    EXPECT_TRUE(CFEqual(nullptr, nullptr));
}

TEST(RefTest, CopiesAddAReferenceAndMovesHandItOn) {
    int destroyed = 0;
    auto original = makeRef<Probe>(destroyed);
    const CFTypeRef object = original.get();
    Ref<Object> copy = original;
    EXPECT_EQ(CFGetRetainCount(object), 2);
    const Ref<Object> moved = std::move(original);
    EXPECT_EQ(CFGetRetainCount(object), 2);
    const auto& itself = copy;
    copy = itself;
    EXPECT_EQ(CFGetRetainCount(object), 2);
    copy = makeRef<Probe>(destroyed);
    EXPECT_EQ(CFGetRetainCount(object), 1);
    copy = nullptr;
    EXPECT_EQ(destroyed, 1);
}

TEST(RefTest, LastOfManyThreadsDestroysTheObject) {
    int sum = 0;
    {
        auto shared = makeRef<Probe>(sum);
        const auto use = [](Ref<Probe> mine, std::size_t place) {
            for (int i = 0; i < 5000; ++i)
                const Ref<Probe> passing = mine;
            mine->left[place] = 10;
        };
        const std::jthread one(use, shared, 0);
        const std::jthread other(use, std::move(shared), 1);
    }
    EXPECT_EQ(sum, 21);
}

} // namespace
} // namespace VeltoTouch::Tests
