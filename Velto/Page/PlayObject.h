#pragma once

#include "Velto/Page/AccelSamples.h"
#include "Velto/Page/Images.h"
#include "Velto/Page/RecordingPage.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace VeltoTouch::Page {

// All that a page shows of a play. The recording is played once, here; then ranges are cut out.
class PlayObject {
public:
    // Only `ranges` may be cut out: no other images are kept.
    PlayObject(const Play& play, std::vector<Range> ranges);

    [[nodiscard]] std::size_t imagesIn(const Range& range) const;

    // Returns a range as an object.
    [[nodiscard]] std::string cut(const Range& range) const;

private:
    void addTouches(const Play& play);
    void addLabels(const Play& play);
    void addWrites(const Play& play);
    void listen(const Play& play);
    void addImages(const Play& play, std::vector<Range> ranges);

    std::string _file;
    std::string _settings;
    std::uint64_t _durationNs = 0;
    Images _images;
    AccelSamples _accel;
    std::vector<Item> _touches;
    std::vector<Item> _labels;
    std::vector<Item> _writes;
    std::vector<Item> _gestures;
    std::vector<Item> _disturbances;
};

} // namespace VeltoTouch::Page
