#pragma once

#include "Plugin/Reports/InputReport.h"

#include <array>
#include <string>
#include <string_view>

namespace VeltoTouch::Util {

// Where the pads lie, seen from above. A run of four equal letters is the place where that pad's value is printed;
// eight pads show on both sides. Every row ends with a blank, which ends its last run.
inline constexpr std::array<std::string_view, 13> kPadLayout{
    "           HHHH      GGGG           ", //
    "                IIII                ", //
    "     BBBB                  AAAA     ", //
    "         JJJJ          JJJJ         ", //
    "     FFFF                  EEEE     ", //
    " AAAA                          BBBB ", //
    "                KKKK                ", //
    " DDDD                          CCCC ", //
    "     EEEE                  FFFF     ", //
    "         LLLL          LLLL         ", //
    "     CCCC                  DDDD     ", //
    "                MMMM                ", //
    "           NNNN      OOOO           ", //
};

// Returns the picture of an image: a header line with frame number and time, an empty line, and thirteen lines with
// each pad's value where the pad lies. `raw` shows the unsigned raw values in place of the signals. Any thread; running
// out of memory ends the process.
[[nodiscard]] std::string stringFromImage(const InputReport::Image& image, bool raw) noexcept;

} // namespace VeltoTouch::Util
