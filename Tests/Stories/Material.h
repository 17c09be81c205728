#pragma once

#include <array>
#include <string_view>

// What stories are made of.

namespace VeltoTouch::Tests {

// Contacts as the surface sees them; the rest of the pads is silent.
struct PadSignal {
    char pad; // 0: none
    int signal;
};
using Contact = std::array<PadSignal, 9>;
inline constexpr std::array<Contact, 17> kContacts{{
    {{{'E', 150}, {'F', 60}, {'K', 40}}},   // a finger in each region
    {{{'G', 250}, {'H', 100}, {'I', 60}}},  //
    {{{'L', 200}, {'M', 60}}},              //
    {{{'A', 140}, {'B', 80}, {'E', 60}}},   //
    {{{'N', 240}, {'O', 180}, {'M', 90}}},  //
    {{{'C', 120}, {'D', 110}}},             //
    {{{'K', 110}, {'M', 100}, {'L', 60}}},  // between regions
    {{{'K', 110}, {'I', 105}, {'J', 70}}},  //
    {{{'E', 110}, {'L', 130}, {'K', 50}}},  //
    {{{'G', 210}, {'O', 205}}},             //
    {{{'J', 90}, {'E', 100}, {'G', 150}}},  //
    {{{'A', 140}, {'B', 138}, {'L', 150}}}, // the third in another region
    {{{'H', 203}}},                         // weak ones
    {{{'O', 194}}},                         //
    {{{'E', 106}}},                         //
    {{{'A', 70}, {'B', 72}, {'C', 70}, {'D', 71}, {'E', 70}, {'F', 72}, {'J', 60}, {'K', 50}, {'L', 60}}}, // a palm
    {{{'I', 51}, {'J', 50}, {'L', 49}, {'M', 49}}}, // just above the noise
}};

// Each gives its pad the value 208: pads that tie. Alone, each is a touch.
inline constexpr std::array<PadSignal, 9> kLevelPads{
    {{'C', 108}, {'E', 109}, {'F', 115}, {'G', 207}, {'H', 208}, {'J', 139}, {'M', 135}, {'N', 200}, {'O', 199}}};

inline constexpr std::array<std::string_view, 6> kSettingKeys{
    "Algs.EnableHoldSuppression", "Algs.EnableTapSuppression", "Algs.HoldTimeoutMilliseconds",
    "Algs.ActivationThreshold",   "Algs.ResetEventStats",      "Algs.VirtualNormalizationFactors."};
inline constexpr std::array<std::string_view, 11> kIndexTexts{
    "0", "7", "22", "23", "-1", "", "x", " 5", "+3", "4.9", "99999999999999999999999"};
inline constexpr std::array<std::string_view, 10> kOtherKeys{
    "Algs.EventStats", "Algs-EventStats", "Algs.DebugInfo",      "DebugInfo", "debuginfo", "Algs.", "Algs",
    "algs.EventStats", "Other",           "Algs.Algs.EventStats"};
inline constexpr std::array<double, 16> kNumbers{0,    1,     200,  150.5, 500,  0.5,   -1,           -0.0,
                                                 1e-3, 1e-40, 3e38, 1e39,  1e19, -1e19, 4294967296.5, 2e19};

} // namespace VeltoTouch::Tests
