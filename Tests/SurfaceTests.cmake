velto_add_tests(surface_tests
    SOURCES SurfaceDeviceTest.cpp SurfaceMatchTest.cpp SurfaceTest.cpp
    LIBRARIES VeltoTouchSurface fmt::fmt
)
target_compile_definitions(surface_tests PRIVATE VELTO_MANIFEST="${PROJECT_SOURCE_DIR}/Service/Info.json")
