velto_add_tests(surface_tests
    SOURCES SurfaceDeviceTest.cpp SurfaceTest.cpp
    LIBRARIES VeltoTouchSurface fmt::fmt
)
