#pragma once

#include "Velto/Analysis/EventLines.h"
#include "Velto/Host/Gesture.h"

#include <memory>
#include <string>
#include <string_view>

namespace VeltoTouch::Velto {

using Analysis::fileMember;

// Gestures as text, one after the other as they come: JSON Lines for programs or a table for people. Their times are
// since the start.
class GestureText {
public:
    // One line per event: "kind":"event". `file` is the file it belongs to, or empty.
    [[nodiscard]] static std::unique_ptr<GestureText> eventLines(std::string_view file);
    // One line per gesture received over the bus: "kind":"gesture".
    [[nodiscard]] static std::unique_ptr<GestureText> gestureLines();
    // One row per touch, below a title, if there is one. With `showsHolds`, a hold in progress has a row that the next
    // one overwrites on a terminal.
    [[nodiscard]] static std::unique_ptr<GestureText> table(std::string_view title, bool showsHolds);

    GestureText(const GestureText&) = delete;
    GestureText& operator=(const GestureText&) = delete;
    virtual ~GestureText() = default;

    // Returns what stands above the gestures.
    [[nodiscard]] virtual std::string heading() const { return {}; }
    // Appends what a gesture adds to the text.
    virtual void add(std::string& text, const Gesture& gesture) = 0;
    // Appends a hold that the end cut off.
    virtual void finish(std::string& /*text*/, HostTime /*end*/) {}
    // Returns how many gestures there were.
    [[nodiscard]] virtual std::string summary() const { return {}; }

protected:
    GestureText() = default;
};

} // namespace VeltoTouch::Velto
