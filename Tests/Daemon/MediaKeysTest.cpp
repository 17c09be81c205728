#include "Velto/Daemon/MediaKeys.h"

#include "Velto/Daemon/GestureLog.h"
#include "Velto/Daemon/SurfaceKeys.h"

#include <map>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
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
        static const std::map<std::uint16_t, std::string> kNames{{KEY_PLAYPAUSE, "Play"}, {KEY_ASSISTANT, "Assistant"},
                                                                 {KEY_VOLUMEUP, "Up"},    {KEY_VOLUMEDOWN, "Down"},
                                                                 {KEY_MUTE, "Mute"},      {KEY_F13, "F13"}};
        presses.push_back((isPressed ? "+" : "-") + kNames.at(key));
    }
    void announce(std::span<const std::uint16_t> keys) override {
        presses.push_back(std::to_string(keys.size()) + " keys");
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

TEST(MediaKeysTest, AKeyIsReleasedAsPressedAndNewOnesAreAnnouncedWhenNoneIs) {
    KeyTable table = kDefaultKeys;
    keysOf(table, VolumeUp).hold = KEY_F13;
    keysOf(table, PlayPause) = {.tap = KEY_MUTE, .hold = kNoKey};
    WrittenKeys output;
    MediaKeys keys(output);
    keys.handle(holdStart(VolumeUp));
    keys.setTable(table);
    EXPECT_THAT(output.presses, ElementsAre("+Up"));
    keys.handle(holdEnd(VolumeUp));
    EXPECT_EQ(keys.handle(holdStart(VolumeUp)), KEY_F13);
    keys.handle(holdEnd(VolumeUp));
    EXPECT_THAT(output.presses, ElementsAre("+Up", "-Up", "4 keys", "+F13", "-F13"));

    output.presses.clear();
    EXPECT_EQ(keys.handle(tap(PlayPause)), KEY_MUTE);
    for (const Gesture& gesture : {holdStart(PlayPause), holdChange(VolumeUp), holdEnd(VolumeUp)})
        EXPECT_EQ(keys.handle(gesture), kNoKey) << "a hold of play-pause is for no key";
    EXPECT_THAT(output.presses, ElementsAre("+Mute", "-Mute"));
}

TEST(GestureLogTest, ATouchIsALine) {
    struct Row {
        std::vector<std::pair<Gesture, std::uint16_t>> gestures; // a tenth of a second from one to the next
        const char* line;
    };
    const Row rows[]{
        {{{mayBegin(PlayPause), kNoKey}, {tap(PlayPause), KEY_MUTE}}, "tap PlayPause, 0.10 s: KEY_MUTE"},
        {{{mayBegin(VolumeUp), kNoKey},
          {holdStart(VolumeUp), KEY_VOLUMEUP},
          {holdChange(VolumeDown), KEY_VOLUMEDOWN},
          {holdChange(VolumeUp), KEY_VOLUMEUP},
          {holdEnd(VolumeUp), kNoKey}},
         "hold VolumeUp, 0.40 s: KEY_VOLUMEUP, KEY_VOLUMEDOWN"},
        {{{mayBegin(VolumeUp), kNoKey},
          {holdStart(VolumeUp), kNoKey},
          {holdChange(None), kNoKey},
          {holdEnd(None), kNoKey}},
         "hold VolumeUp > None, 0.30 s: none"},
        {{{mayBegin(VolumeUp), kNoKey}, {cancel(), kNoKey}}, "rejected VolumeUp, 0.10 s: none"},
        {{{firmwareReset(), kNoKey}}, "firmware reset: none"},
        {{{holdEnd(VolumeUp), kNoKey}, {holdStart(VolumeUp), KEY_MUTE}, {holdEnd(VolumeUp), kNoKey}},
         "hold VolumeUp, 0.10 s: KEY_MUTE"}, // the end of one that began before, and one that begins again
        {{{tap(PlayPause), KEY_MUTE}}, "tap PlayPause, 0.00 s: KEY_MUTE"},
    };
    GestureLog log;
    HostTime time{};
    for (const auto& [gestures, line] : rows) {
        std::optional<std::string> last;
        for (auto [gesture, key] : gestures) {
            EXPECT_FALSE(last) << *last;
            gesture.time = time += std::chrono::milliseconds(100);
            last = log.add(gesture, key);
        }
        EXPECT_EQ(last, line);
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
        output, kDefaultKeys, [&] { return reports; }, [] { FAIL() << "nothing is wrong"; });
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
        output, kDefaultKeys, [] { return 0; }, [&] { ++failures; });
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
