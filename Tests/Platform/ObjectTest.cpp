#include "Platform/Object.h"

#include <array>
#include <numeric>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace VeltoTouch::Tests {
namespace {

// Adds what its holders left in it to `sum` when it is destroyed.
class Probe : public Object {
public:
    explicit Probe(int& sumAtEnd) : _sum(sumAtEnd) {}
    ~Probe() override { _sum += 1 + std::accumulate(slots.begin(), slots.end(), 0); }

    std::array<int, 4> slots{};

private:
    int& _sum;
};

TEST(ObjectTest, LivesUntilTheLastOfItsReferencesIsReleased) {
    int destroyed = 0;
    const CFTypeRef object = new Probe(destroyed);
    EXPECT_EQ(CFGetRetainCount(object), 1);
    EXPECT_EQ(CFRetain(object), object);
    EXPECT_EQ(CFGetRetainCount(object), 2);
    CFRelease(object);
    EXPECT_EQ(CFGetRetainCount(object), 1);
    EXPECT_EQ(destroyed, 0);
    CFRelease(object);
    EXPECT_EQ(destroyed, 1);

    EXPECT_EQ(CFRetain(nullptr), nullptr);
    EXPECT_EQ(CFGetRetainCount(nullptr), 0);
    CFRelease(nullptr);
}

TEST(ObjectTest, IsEqualToItselfAloneUnlessItsClassSaysMore) {
    int destroyed = 0;
    const auto one = makeRef<Probe>(destroyed);
    const auto other = makeRef<Probe>(destroyed);
    EXPECT_TRUE(CFEqual(one.get(), one.get()));
    EXPECT_FALSE(CFEqual(one.get(), other.get()));
    EXPECT_FALSE(CFEqual(one.get(), nullptr));
    EXPECT_FALSE(CFEqual(nullptr, one.get()));
    EXPECT_TRUE(CFEqual(nullptr, nullptr));
}

TEST(RefTest, AdoptsWithoutCountingRetainsWithCountingAndLeaksWithoutReleasing) {
    int destroyed = 0;
    auto* const object = new Probe(destroyed);
    auto adopted = Ref<Probe>::adopt(object);
    EXPECT_EQ(CFGetRetainCount(object), 1);
    {
        const auto retained = Ref<Probe>::retained(object);
        EXPECT_EQ(CFGetRetainCount(object), 2);
    }
    EXPECT_EQ(CFGetRetainCount(object), 1);
    EXPECT_EQ(adopted.leak(), object);
    EXPECT_FALSE(adopted);
    EXPECT_EQ(CFGetRetainCount(object), 1);
    CFRelease(object);
    EXPECT_EQ(destroyed, 1);
}

TEST(RefTest, CopiesAddAReferenceAndMovesHandItOn) {
    int destroyed = 0;
    auto original = makeRef<Probe>(destroyed);
    const Ref<Object> copyAsBase = original;
    EXPECT_EQ(CFGetRetainCount(copyAsBase.get()), 2);
    const Ref<Object> movedAsBase = std::move(original);
    EXPECT_EQ(CFGetRetainCount(copyAsBase.get()), 2);
    EXPECT_FALSE(original); // NOLINT(bugprone-use-after-move)
    EXPECT_EQ(movedAsBase, copyAsBase);
}

TEST(RefTest, AssignmentReleasesTheOldObjectAndSurvivesItself) {
    int destroyed = 0;
    auto ref = makeRef<Probe>(destroyed);
    const auto& itself = ref;
    ref = itself;
    EXPECT_EQ(CFGetRetainCount(ref.get()), 1);
    ref = makeRef<Probe>(destroyed);
    EXPECT_EQ(destroyed, 1);
    ref = nullptr;
    EXPECT_EQ(destroyed, 2);
}

TEST(RefTest, ThreadsThatShareAnObjectDestroyItOnceAndAfterTheirLastWrites) {
    int sum = 0;
    {
        auto shared = makeRef<Probe>(sum);
        std::vector<std::jthread> threads;
        for (int& slot : shared->slots) {
            threads.emplace_back([mine = shared, &slot]() mutable {
                for (int i = 0; i < 5000; ++i)
                    const Ref<Probe> passing = mine;
                slot = 10;
                mine = nullptr;
            });
        }
        shared = nullptr;
    }
    EXPECT_EQ(sum, 41);
}

} // namespace
} // namespace VeltoTouch::Tests
