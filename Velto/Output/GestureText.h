#pragma once

#include "Velto/Host/Gesture.h"

#include <memory>
#include <string>
#include <string_view>

namespace VeltoTouch::Velto {

// The member ,"file":"PATH" that stands behind "kind" in every line that belongs to a file; empty for an empty path.
[[nodiscard]] std::string fileMember(std::string_view path);

// Gestures as text, one after the other as they come: JSON Lines for programs or a table for people. Their times are
// since the start.
class GestureText {
public:
    // A line an event: "kind":"event". `file` is what it belongs to; empty: no file.
    [[nodiscard]] static std::unique_ptr<GestureText> eventLines(std::string_view file);
    // A line a gesture that came over the bus: "kind":"gesture".
    [[nodiscard]] static std::unique_ptr<GestureText> gestureLines();
    // A row a touch, below a title, if it has one. With `showsHolds`, a hold in progress has a row that the next one
    // overwrites on a terminal.
    [[nodiscard]] static std::unique_ptr<GestureText> table(std::string_view title, bool showsHolds);

    GestureText(const GestureText&) = delete;
    GestureText& operator=(const GestureText&) = delete;
    virtual ~GestureText() = default;

    // What stands above the gestures.
    [[nodiscard]] virtual std::string heading() const { return {}; }
    // Appends what there is to show now.
    virtual void add(std::string& text, const Gesture& gesture) = 0;
    // Appends what the end cut off.
    virtual void finish(std::string& /*text*/, HostTime /*end*/) {}
    // How many gestures there were.
    [[nodiscard]] virtual std::string summary() const { return {}; }

protected:
    GestureText() = default;
};

} // namespace VeltoTouch::Velto
