#include "Shared/Util.h"

#include <gmock/gmock.h>

namespace VeltoTouch::Tests {
namespace {

InputReport::Image imageWithDistinctValues() {
    InputReport::Image image{};
    image.frameNumber = 4294967295;
    image.timestampMs = 1000;
    //                  A  B   C    D     E   F    G     H      I  J   K       L      M       N  O
    image.padSignal = {1, 22, 333, 4444, -5, -66, -777, -8888, 9, 10, -12345, 32767, -32768, 0, 100};
    image.padRaw = {65535, 2, 3, 4, 5, 6, 7, 8, 60000, 10, 11, 12, 13, 14, 1234};
    return image;
}

// The blank behind a place belongs to its value; a value longer than its place pushes the rest of its row along.
TEST(ImageTextTest, ShowsEverySignalInItsPlace) {
    EXPECT_EQ(Util::stringFromImage(imageWithDistinctValues(), false), "# Image frame 4294967295    time 1000 ms\n"
                                                                       "\n"
                                                                       "           -8888      -777          \n"
                                                                       "                 9                 \n"
                                                                       "     22                    1      \n"
                                                                       "         10           10          \n"
                                                                       "     -66                  -5      \n"
                                                                       "  1                           22  \n"
                                                                       "                -12345                 \n"
                                                                       " 4444                         333 \n"
                                                                       "     -5                   -66     \n"
                                                                       "         32767          32767         \n"
                                                                       "     333                  4444    \n"
                                                                       "                -32768                 \n"
                                                                       "            0       100           \n");
}

TEST(ImageTextTest, ShowsRawValuesUnsignedWhenAskedTo) {
    EXPECT_THAT(Util::stringFromImage(imageWithDistinctValues(), true),
                testing::HasSubstr("      6                    5      \n"
                                   " 65535                           2  \n"
                                   "                11                 \n"));
}

} // namespace
} // namespace VeltoTouch::Tests
