#include "Velto/Surface/SurfaceMatch.h"

// velto-check-device FOLDER: whether the HID device whose node has this folder below /sys is the surface. Prints
// nothing. The exit status is 0 for the surface, 1 for anything else, 2 for wrong usage.
int main(int argc, char** argv) {
    if (argc != 2)
        return 2;
    const auto descriptor = VeltoTouch::readReportDescriptor(argv[1]);
    return descriptor && VeltoTouch::Surface::isSurface(*descriptor) ? 0 : 1;
}
