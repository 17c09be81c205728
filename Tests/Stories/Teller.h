#pragma once

#include "Tests/Stories/Choices.h"
#include "Tests/Stories/Story.h"

namespace VeltoTouch::Tests {

// A story of about `stepCount` steps: fingers, weak contacts, palms and noise, with settings, metadata, resets, gaps
// and broken reports between them, on a surface that is ordinary in most stories and hostile in some. A step has at
// most `mostImages` images.
[[nodiscard]] Story tellStory(Choices& choices, std::size_t stepCount, std::uint32_t mostImages);

} // namespace VeltoTouch::Tests
