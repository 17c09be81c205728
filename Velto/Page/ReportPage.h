#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace VeltoTouch::Page {

// What many recordings gave, as a page of a browser: counts, and lists of touches with pictures of some.

// Bounds of all pictures of a page, so that it opens quickly.
inline constexpr std::size_t kMostPictures = 500;
inline constexpr std::size_t kMostPictureBytes = 18'000'000;

struct Picture {
    std::string members = {};                   // what `pictureMembers` returns (RecordingPage.h); empty: none
    std::vector<std::string> explanations = {}; // of the touches that it is about

    [[nodiscard]] std::size_t size() const noexcept;
};

struct Case {
    std::string kind; // in a word
    std::uint64_t startNs = 0;
    std::string file;
    std::vector<std::string> texts;
    Picture picture = {};
};

struct Group {
    std::string title;
    std::vector<Case> cases = {};
};

struct Report {
    std::string title;
    std::string text;                                 // a sentence a line
    std::vector<std::vector<std::string>> table = {}; // its first row is its heading; empty: none
    std::vector<Group> groups;
};

// Gives cases their pictures until a bound is reached; cases after that have none.
class PictureBounds {
public:
    // How many pictures there may still be. Any thread.
    [[nodiscard]] std::size_t left() const noexcept { return _left; }
    // Takes the picture away if it is one too many.
    void apply(Picture& picture);

private:
    std::atomic<std::size_t> _left = kMostPictures;
    std::size_t _bytes = 0;
};

[[nodiscard]] std::string reportPage(const Report& report);

} // namespace VeltoTouch::Page
