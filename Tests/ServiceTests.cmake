velto_add_tests(service_tests
    SOURCES
        Accel/AccelSystemTest.cpp
        Service/AccelCaptureTest.cpp
        Service/BoundaryTest.cpp
        Service/LifeTest.cpp
        Service/PropertiesTest.cpp
        Service/ReportPathTest.cpp
        Service/StressTest.cpp
    LIBRARIES VeltoTouchService VeltoTouchSurface fmt::fmt
)
