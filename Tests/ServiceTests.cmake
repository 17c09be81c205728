velto_add_tests(service_tests
    SOURCES
        Accel/AccelSystemTest.cpp
        Service/AccelCaptureTest.cpp
        Service/BoundaryTest.cpp
        Service/LifeTest.cpp
        Service/PropertiesTest.cpp
        Service/ReportPathTest.cpp
        Service/StopTest.cpp
        Service/StressTest.cpp
    LIBRARIES VeltoTouchService VeltoTouchSurface fmt::fmt
)

# The module as a foreign host sees it. Nothing else of the project is C; the compiler need not be the C++ compiler's kin.
enable_language(C)
add_library(plain_host_c OBJECT Service/PlainHost.c)
set_target_properties(plain_host_c PROPERTIES C_STANDARD 11 C_STANDARD_REQUIRED ON C_EXTENSIONS OFF)
target_compile_options(plain_host_c PRIVATE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
add_executable(plain_host Service/PlainHostDevice.cpp $<TARGET_OBJECTS:plain_host_c>)
target_link_libraries(plain_host PRIVATE VeltoFlags VeltoPlatform)
add_dependencies(plain_host VeltoTouchHIDService)
add_test(NAME PlainHostTest COMMAND plain_host $<TARGET_FILE:VeltoTouchHIDService>)
set_tests_properties(PlainHostTest PROPERTIES ENVIRONMENT VELTO_LOG=off TIMEOUT 120)
