#pragma once

namespace VeltoTouch {

// Linear membership function through (x0, y0) and (x1, y1), not clipped.
[[nodiscard]] inline float fuzzify(float x, float x0, float x1, float y0, float y1) noexcept {
    const float a = (x - x0) / (x1 - x0);
    return a * y1 + (1.0F - a) * y0;
}

// The same, held at y0 up to x0 and at y1 from x1 on.
[[nodiscard]] inline float fuzzifyAndClip(float x, float x0, float x1, float y0, float y1) noexcept {
    if (x <= x0)
        return y0;
    if (x >= x1)
        return y1;
    return fuzzify(x, x0, x1, y0, y1);
}

} // namespace VeltoTouch
