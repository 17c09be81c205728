velto_add_tests(surface_tests
    SOURCES SurfaceStepTest.cpp SurfaceTest.cpp
    LIBRARIES VeltoTouchSurface fmt::fmt
)
