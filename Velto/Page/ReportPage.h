#pragma once

#include "Velto/Page/Range.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace VeltoTouch::Page {

// What many recordings gave, as a page of a browser: counts, and lists of cases with pictures of the worst.

// Bounds of a page, so that it opens quickly and stays below 20 MB.
inline constexpr std::size_t kMostListed = 2'000; // of each group
inline constexpr std::size_t kMostListedBytes = 800'000;
inline constexpr std::size_t kMostPictures = 500; // of the page
inline constexpr std::size_t kMostPictureBytes = 17'000'000;
inline constexpr std::size_t kMostBytesOfOne = 1'000'000;
inline constexpr std::size_t kMostImagesOfOne = 30'000;

struct Picture {
    std::string members = {};                   // what a film's cut gives (Film.h); empty: none
    std::vector<std::string> explanations = {}; // of the touches that it is about, or why there is none
};

struct Case {
    std::string kind; // in a word
    std::string file;
    std::vector<std::string> texts;
    std::optional<Range> time = {};
    std::vector<std::size_t> touches = {}; // of its picture: a number a play, 0 for none; empty: it has no picture
    std::string command = {};              // that shows it; empty: none
    Picture picture = {};
};

// Cases of one sort, the worst first, then in the order in which they were added.
inline constexpr std::string_view kOrder =
    "The worst come first: each costs 1, so the recording with most of them leads its list.";
class Group {
public:
    explicit Group(std::string title) : _title(std::move(title)) {}

    // Takes in those of one recording.
    void add(std::vector<Case> cases);

    // Returns those that the page lists.
    [[nodiscard]] std::vector<Case*> listed();

    // Returns them as an object, with the number of all.
    [[nodiscard]] std::string object();

private:
    std::string _title;
    std::vector<std::vector<Case>> _recordings; // as far as they may be listed
    std::size_t _kept = 0;
    std::size_t _total = 0;
};

struct Report {
    std::string title;
    std::string text;                                 // a sentence a line
    std::vector<std::vector<std::string>> table = {}; // its first row is its heading; empty: none
    std::vector<Group>& groups;
};

// Takes pictures in until the page is full.
class PictureBounds {
public:
    // Says in the place of one that is too large why there is none; smaller ones may still come.
    void apply(Picture& picture);

private:
    std::size_t _bytes = 0;
};

[[nodiscard]] std::string reportPage(const Report& report);

} // namespace VeltoTouch::Page
