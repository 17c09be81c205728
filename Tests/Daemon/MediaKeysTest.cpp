#include "Velto/Daemon/MediaKeys.h"

#include "Velto/Daemon/SurfaceKeys.h"

#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using enum PixelRegion;

// Keeps what is done with keys, as "+Up" and "-Up".
class WrittenKeys final : public KeyOutput {
public:
    std::vector<std::string> presses;
    bool isBroken = false;

    void setKey(std::uint16_t key, bool isPressed) override {
        if (isBroken)
            throw std::runtime_error("no keyboard");
        static const std::map<std::uint16_t, std::string> kNames{
            {KEY_PLAYPAUSE, "Play"}, {KEY_ASSISTANT, "Assistant"}, {KEY_VOLUMEUP, "Up"}, {KEY_VOLUMEDOWN, "Down"}};
        presses.push_back((isPressed ? "+" : "-") + kNames.at(key));
    }
};

constexpr auto kUnknown = std::nullopt; // a region of a later plug-in

Gesture mayBegin(PixelRegion region) { return {GestureKind::MayBegin, region}; }
Gesture tap(std::optional<PixelRegion> region) { return {GestureKind::Tap, region}; }
Gesture holdStart(std::optional<PixelRegion> region) { return {GestureKind::HoldStart, region}; }
Gesture holdChange(PixelRegion region) { return {GestureKind::HoldChange, region}; }
Gesture holdEnd(PixelRegion region) { return {GestureKind::HoldEnd, region}; }
Gesture cancel() { return {GestureKind::Cancel, std::nullopt}; }
Gesture firmwareReset() { return {GestureKind::FirmwareReset, std::nullopt}; }

TEST(MediaKeysTest, GesturesPressAndReleaseKeys) {
    struct Row {
        const char* name;
        std::vector<Gesture> gestures;
        std::vector<std::string> presses;
    };
    const Row rows[]{
        {"tap play-pause", {mayBegin(PlayPause), tap(PlayPause)}, {"+Play", "-Play"}},
        {"tap volume up", {mayBegin(VolumeUp), tap(VolumeUp)}, {"+Up", "-Up"}},
        {"tap volume down", {mayBegin(VolumeDown), tap(VolumeDown)}, {"+Down", "-Down"}},
        {"two taps", {tap(VolumeUp), tap(VolumeUp)}, {"+Up", "-Up", "+Up", "-Up"}},
        {"taps of nothing", {tap(None), tap(kUnknown)}, {}},
        {"touch that comes to nothing", {mayBegin(VolumeUp), cancel()}, {}},

        {"hold volume up", {mayBegin(VolumeUp), holdStart(VolumeUp), holdEnd(VolumeUp)}, {"+Up", "-Up"}},
        {"hold play-pause", {holdStart(PlayPause), holdEnd(PlayPause)}, {"+Assistant", "-Assistant"}},
        {"hold nothing", {holdStart(None), holdStart(kUnknown), holdEnd(None)}, {}},
        {"moved over the volume",
         {holdStart(VolumeUp), holdChange(VolumeDown), holdEnd(VolumeDown)},
         {"+Up", "-Up", "+Down", "-Down"}},
        {"moved over the volume by way of play-pause",
         {holdStart(VolumeUp), holdChange(PlayPause), holdChange(VolumeDown), holdEnd(VolumeDown)},
         {"+Up", "-Up", "+Down", "-Down"}},
        {"moved from play-pause over the volume",
         {holdStart(PlayPause), holdChange(VolumeUp), holdChange(PlayPause), holdEnd(PlayPause)},
         {"+Assistant", "-Assistant"}},
        {"moved within its region", {holdStart(VolumeUp), holdChange(VolumeUp), holdEnd(VolumeUp)}, {"+Up", "-Up"}},
        {"moved off the regions and back",
         {holdStart(VolumeUp), holdChange(None), holdChange(VolumeUp), holdEnd(VolumeUp)},
         {"+Up", "-Up", "+Up", "-Up"}},
        {"ended where nothing tells of the move", {holdStart(VolumeUp), holdEnd(PlayPause)}, {"+Up", "-Up"}},

        {"cancelled hold", {holdStart(VolumeUp), cancel(), holdEnd(VolumeUp)}, {"+Up", "-Up"}},
        {"reset during a hold", {holdStart(PlayPause), firmwareReset()}, {"+Assistant", "-Assistant"}},
        {"reset at rest", {firmwareReset()}, {}},
        {"hold without an end, then a touch",
         {holdStart(VolumeUp), mayBegin(VolumeDown), holdStart(VolumeDown)},
         {"+Up", "-Up", "+Down"}},
        {"hold without an end, then a tap", {holdStart(VolumeUp), tap(VolumeUp)}, {"+Up", "-Up", "+Up", "-Up"}},
    };
    for (const Row& row : rows) {
        WrittenKeys output;
        MediaKeys keys(output);
        for (const Gesture& gesture : row.gestures)
            keys.handle(gesture);
        EXPECT_EQ(output.presses, row.presses) << row.name;
    }
}

TEST(MediaKeysTest, WhatIsPressedIsReleasedOnce) {
    WrittenKeys output;
    MediaKeys keys(output);
    keys.releaseAll();
    EXPECT_THAT(output.presses, IsEmpty());
    keys.handle(holdStart(VolumeDown));
    keys.releaseAll();
    keys.releaseAll();
    EXPECT_THAT(output.presses, ElementsAre("+Down", "-Down"));
    keys.handle(holdChange(VolumeDown));
    EXPECT_THAT(output.presses, ElementsAre("+Down", "-Down", "+Down")) << "a hold that goes on is one again";
}

TEST(MediaKeysTest, AKeyThatCouldNotBeWrittenCountsAsReleased) {
    WrittenKeys output;
    MediaKeys keys(output);
    output.isBroken = true;
    EXPECT_THROW(keys.handle(holdStart(VolumeUp)), std::runtime_error);
    output.isBroken = false;
    keys.handle(holdEnd(VolumeUp));
    EXPECT_THAT(output.presses, IsEmpty());
    keys.handle(holdStart(VolumeUp));
    output.isBroken = true;
    EXPECT_THROW(keys.handle(holdEnd(VolumeUp)), std::runtime_error);
    output.isBroken = false;
    keys.releaseAll();
    EXPECT_THAT(output.presses, ElementsAre("+Up"));
}

TEST(SurfaceKeysTest, ASurfaceThatFallsSilentKeepsNoKey) {
    WrittenKeys output;
    std::uint64_t reports = 7;
    SurfaceKeys keys(
        output, [&] { return reports; }, [] { FAIL() << "nothing is wrong"; });
    keys.releaseIfSilent();
    keys.handle(holdStart(VolumeUp));
    ++reports;
    keys.releaseIfSilent();
    EXPECT_THAT(output.presses, ElementsAre("+Up"));
    keys.releaseIfSilent();
    EXPECT_THAT(output.presses, ElementsAre("+Up", "-Up"));
    keys.handle(holdStart(VolumeDown));
    keys.end();
    EXPECT_THAT(output.presses, ElementsAre("+Up", "-Up", "+Down", "-Down"));
}

TEST(SurfaceKeysTest, TheFirstFailureIsToldAtOnceAndAgainAtTheEnd) {
    WrittenKeys output;
    int failures = 0;
    SurfaceKeys keys(
        output, [] { return 0; }, [&] { ++failures; });
    output.isBroken = true;
    keys.handle(tap(VolumeUp));
    EXPECT_EQ(failures, 1);
    output.isBroken = false;
    keys.handle(tap(VolumeUp));
    EXPECT_THAT(output.presses, IsEmpty());
    EXPECT_THROW(keys.end(), std::runtime_error);
    EXPECT_EQ(failures, 1);
}

} // namespace
} // namespace VeltoTouch::Tests
