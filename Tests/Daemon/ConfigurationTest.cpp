#include "Velto/Daemon/Configuration.h"

#include "Platform/JSON.h"
#include "Plugin/Pipeline/Properties.h"
#include "Velto/Daemon/KeptConfiguration.h"
#include "Velto/Daemon/KeyNames.h"

#include <fstream>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

namespace VeltoTouch::Tests {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

class ConfigurationTest : public testing::Test {
protected:
    std::string folder = testing::TempDir() + "/velto-configuration." + std::to_string(::getpid());
    Configuration configuration;

    void SetUp() override { std::filesystem::create_directories(folder + "/config.d"); }
    void TearDown() override { std::filesystem::remove_all(folder); }

    void write(const std::string& name, const std::string& text) const { std::ofstream(folder + "/" + name) << text; }
    void read() { configuration = readConfiguration(folder, configuration); }

    [[nodiscard]] std::string place(const Origin& origin) const { return textOf(origin).substr(folder.size() + 1); }
    [[nodiscard]] std::vector<std::string> complaints() const {
        std::vector<std::string> lines;
        for (const Complaint& complaint : configuration.complaints)
            lines.push_back(place(complaint.origin) + ": " + complaint.message);
        return lines;
    }
    // What holds, as KEY=VALUE@PLACE.
    [[nodiscard]] std::vector<std::string> held() const {
        std::vector<std::string> lines;
        for (const auto& [key, value, origin] : configuration.settings)
            lines.push_back(fmt::format("{}={}@{}", *Keys::belowAlgs(key), JSON::text(value.get()), place(origin)));
        for (const auto& [keyPlace, key, origin] : configuration.keys)
            lines.push_back(fmt::format("{}={}@{}", nameOf(keyPlace), nameOfKey(key), place(origin)));
        return lines;
    }
};

TEST_F(ConfigurationTest, OfOneNameTheLastCounts) {
    write("config.toml", "[recognizer]\nHoldTimeoutMilliseconds = 250\nActivationThreshold = 2\n"
                         "[keys]\ntap.play-pause = \"KEY_MUTE\"\nhold.volume-up = \"none\"\n");
    for (int number = 98; number > 10; number -= 8) // whatever order the folder has them in
        write(fmt::format("config.d/{}-set.toml", number),
              fmt::format("recognizer.HoldTimeoutMilliseconds = {}\n", number));
    write("config.d/10-desk.toml",
          "recognizer.HoldTimeoutMilliseconds = 600\n"
          "recognizer.VirtualNormalizationFactors.3 = 1.5\nkeys.tap.play-pause = \"KEY_F13\"\n");
    write("config.d/.95.toml", "keys.tap.volume-up = 'KEY_F14'\n");
    write("config.d/99-old.bak", "recognizer.HoldTimeoutMilliseconds = 900\n");
    read();
    EXPECT_THAT(held(),
                ElementsAre("ActivationThreshold=2@config.toml:3", "HoldTimeoutMilliseconds=98@config.d/98-set.toml:1",
                            "VirtualNormalizationFactors.3=1.5@config.d/10-desk.toml:2",
                            "hold.volume-up=none@config.toml:6", "tap.play-pause=KEY_F13@config.d/10-desk.toml:3"));
    KeyTable keys = kDefaultKeys;
    keysOf(keys, PixelRegion::PlayPause).tap = KEY_F13;
    keysOf(keys, PixelRegion::VolumeUp).hold = kNoKey;
    EXPECT_EQ(keyTableOf(configuration), keys);
}

TEST_F(ConfigurationTest, AWrongLineIsComplainedOfAndTheRestHolds) {
    const std::string number = "a whole number from 0 to 4294967295 is wanted";
    const std::string real = "a number from -3.4e38 to 3.4e38 is wanted";
    const std::string key = "the name of a key is wanted, such as \"KEY_MUTE\", or \"none\"";
    const std::string names = " (one of tap.play-pause, tap.volume-up, tap.volume-down, hold.play-pause, "
                              "hold.volume-up, hold.volume-down is wanted)";
    const struct {
        const char* line; // the second
        std::string complaint;
    } rows[]{
        {"recognizer.HoldTimeoutMilliseconds = -7", "HoldTimeoutMilliseconds: " + number},
        {"recognizer.HoldTimeoutMilliseconds = 0.5", "HoldTimeoutMilliseconds: " + number},
        {"recognizer.HoldTimeoutMilliseconds = '250'", "HoldTimeoutMilliseconds: " + number},
        {"recognizer.HoldTimeoutMilliseconds = [250]", "HoldTimeoutMilliseconds: " + number},
        {"recognizer.HoldTimeoutMilliseconds = inf", "HoldTimeoutMilliseconds: " + number},
        {"recognizer.ActivationThreshold = nan", "ActivationThreshold: " + real},
        {"recognizer.ActivationThreshold = -inf", "ActivationThreshold: " + real},
        {"recognizer.ActivationThreshold = 1e39", "ActivationThreshold: " + real},
        {"recognizer.EnableTapSuppression = 2", "EnableTapSuppression: true, false, 0 or 1 is wanted"},
        {"recognizer.VirtualNormalizationFactors.23 = 1.0",
         "VirtualNormalizationFactors.23: factors are numbered 0 to 22"},
        {"recognizer.ResetEventStats = true", "ResetEventStats: it is no value that lasts"},
        {"recognizer.HoldTimeout = 250",
         "unknown setting 'HoldTimeout' (one of HoldTimeoutMilliseconds, ActivationThreshold, EnableHoldSuppression, "
         "EnableTapSuppression, VirtualNormalizationFactors is wanted)"},
        {"recognizer = 1", "recognizer: a table is wanted"},
        {"HoldTimeoutMilliseconds = 250",
         "unknown name 'HoldTimeoutMilliseconds' ([recognizer] and [keys] are wanted)"},
        {"keys.press.play-pause = 'KEY_MUTE'", "unknown name 'press.play-pause'" + names},
        {"keys.tap = 'KEY_MUTE'", "unknown name 'tap'" + names},
        {"keys.tap.left = 'KEY_MUTE'", "unknown name 'tap.left'" + names},
        {"keys.tap.play-pause = 'KEY_MUET'", "tap.play-pause: " + key},
        {"keys.tap.play-pause = 'BTN_LEFT'", "tap.play-pause: " + key},
        {"keys.tap.play-pause = 'KEY_RESERVED'", "tap.play-pause: " + key},
        {"keys.tap.play-pause = 113", "tap.play-pause: " + key},
    };
    for (const auto& [line, complaint] : rows) {
        SCOPED_TRACE(line);
        write("config.toml", fmt::format("# before\n{}\nkeys.hold.volume-down = 'KEY_F14'\n", line));
        read();
        EXPECT_THAT(complaints(), ElementsAre("config.toml:2: " + complaint));
        EXPECT_THAT(held(), ElementsAre("hold.volume-down=KEY_F14@config.toml:3"));
    }
}

// The file that is installed: each line that is commented out says what holds without it, and none is missing.
TEST_F(ConfigurationTest, TheInstalledFileShowsTheDefaults) {
    std::ifstream installed(VELTO_RECORDINGS "/../../Packaging/config.toml");
    std::string text;
    for (std::string line; std::getline(installed, line);)
        text += (line.starts_with("#") && !line.starts_with("# ") ? line.substr(1) : line) + "\n";
    write("config.toml", text);
    read();
    EXPECT_THAT(complaints(), IsEmpty());
    std::vector<std::string> names;
    for (const ConfiguredSetting& setting : configuration.settings) {
        names.push_back(setting.key);
        EXPECT_EQ(as<Number>(setting.value)->doubleValue(),
                  as<Number>(defaultOf(*settingUnder(setting.key)))->doubleValue())
            << setting.key;
    }
    std::vector<std::string> expected;
    for (const SettingRow& row : kSettingRows) {
        if (!row.is<SettingRow::Action>() && !row.is<SettingRow::Factors>()) // these change nothing
            expected.push_back(fullKeyOf(row));
    }
    EXPECT_THAT(names, testing::UnorderedElementsAreArray(expected));
    EXPECT_EQ(configuration.keys.size(), kKeyPlaces.size());
    EXPECT_EQ(keyTableOf(configuration), kDefaultKeys);
}

TEST_F(ConfigurationTest, WhatIsSurelyNotMeantHoldsAndIsComplainedOf) {
    write("config.toml", "[recognizer]\nActivationThreshold = 0\n");
    read();
    EXPECT_THAT(held(), ElementsAre("ActivationThreshold=0@config.toml:2"));
    EXPECT_THAT(complaints(), ElementsAre(StartsWith("config.toml:2: ActivationThreshold: 0 or less is allowed")));
}

TEST_F(ConfigurationTest, WhatIsKeptReadsTheSame) {
    ConfigurationEntries entries;
    for (const char* value : {"0.1", "-3.4e38", "1e-300", "18446744073709551615", "7"})
        entries.settings.push_back(configuredSetting(
            fmt::format("VirtualNormalizationFactors.{}", entries.settings.size()), JSON::parse(value), {}));
    entries.settings.push_back(configuredSetting("EnableTapSuppression", JSON::parse("false"), {}));
    entries.keys.push_back(configuredKey("hold.volume-down", "none", {}));
    write("config.toml", keptText(entries));
    read();
    ASSERT_EQ(configuration.settings.size(), entries.settings.size());
    for (const ConfiguredSetting& setting : entries.settings) {
        const auto read = std::ranges::find(configuration.settings, setting.key, &ConfiguredSetting::key);
        EXPECT_EQ(as<Number>(read->value)->doubleValue(), as<Number>(setting.value)->doubleValue()) << setting.key;
    }
    EXPECT_EQ(keyTableOf(configuration), keyTableOf(entries));
}

TEST_F(ConfigurationTest, AFileThatIsNoTOMLIsLeftOutAtFirstAndLaterStaysAsItWas) {
    write("config.toml", "[recognizer]\nHoldTimeoutMilliseconds = 250 ms\n");
    write("config.d/10.toml", "keys.tap.volume-up = 'KEY_F13'\n");
    ASSERT_EQ(::mkfifo((folder + "/config.d/20.toml").c_str(), 0600), 0);
    std::filesystem::create_symlink("/dev/zero", folder + "/config.d/30.toml");
    write("config.d/40.toml", std::string((16 << 10) + 1, ' '));
    std::string deepName = "recognizer";
    for (int depth = 0; depth < 8000; ++depth)
        deepName += ".a";
    write("config.d/50.toml", deepName + " = 1");
    read();
    EXPECT_THAT(held(), ElementsAre("tap.volume-up=KEY_F13@config.d/10.toml:1"));
    EXPECT_THAT(complaints(), ElementsAre(StartsWith("config.toml:2: this is no TOML: "),
                                          "config.d/20.toml: it is no regular file; the file is left out",
                                          "config.d/30.toml: it is no regular file; the file is left out",
                                          "config.d/40.toml: it is larger than 16 KiB; the file is left out",
                                          testing::AllOf(StartsWith("config.d/50.toml:1: unknown setting 'a.a.a"),
                                                         testing::SizeIs(testing::Lt(400U)))));

    for (const char* name : {"20", "30", "40", "50"})
        std::filesystem::remove(fmt::format("{}/config.d/{}.toml", folder, name));
    write("config.toml", "recognizer.HoldTimeoutMilliseconds = 250\n");
    read();
    EXPECT_THAT(complaints(), IsEmpty());
    write("config.toml", "recognizer.HoldTimeoutMilliseconds = 300 300\n");
    write("config.d/10.toml", "");
    read();
    EXPECT_THAT(held(), ElementsAre("HoldTimeoutMilliseconds=250@config.toml:1"));
    EXPECT_THAT(complaints(), ElementsAre(testing::EndsWith("; what the file said before goes on")));

    write("config.d/10.toml", "keys.tap.volume-up = 'KEY_F13'\n");
    read();
    std::filesystem::remove_all(folder + "/config.d");
    write("config.d", "no folder");
    std::filesystem::remove(folder + "/config.toml");
    read();
    EXPECT_THAT(held(), ElementsAre("tap.volume-up=KEY_F13@config.d/10.toml:1"));
    EXPECT_THAT(complaints(), ElementsAre("config.d: Not a directory",
                                          "config.d/10.toml: Not a directory; what the file said before goes on"));

    std::filesystem::remove(folder + "/config.d");
    read();
    EXPECT_THAT(held(), IsEmpty());
    EXPECT_THAT(complaints(), IsEmpty());
}

} // namespace
} // namespace VeltoTouch::Tests
