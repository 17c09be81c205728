velto_add_tests(tools_tests LIBRARIES VeltoTouchHost PkgConfig::SYSTEMD SOURCES
    Tools/BusCommandsTest.cpp
    Tools/DevicesCommandTest.cpp
    Tools/FilesTest.cpp
    Tools/HostedServiceTest.cpp
    Tools/KnownRecordingsTest.cpp
    Tools/RecordingCommandsTest.cpp
    Tools/ReplayCommandTest.cpp
    Tools/RunCommandTest.cpp
    Tools/UsageTest.cpp
)
target_compile_definitions(tools_tests PRIVATE VELTO_CHECK_DEVICE="$<TARGET_FILE:velto-check-device>")
add_dependencies(tools_tests velto velto-check-device)

# A recording that is added is found as a test by the next build.
file(GLOB VELTO_KNOWN_RECORDINGS CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/Recordings/*)
set_property(TARGET tools_tests PROPERTY LINK_DEPENDS ${VELTO_KNOWN_RECORDINGS})

# Manual pages and completions against the help.
add_test(NAME DocsTest COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/Tools/DocsTest $<TARGET_FILE:velto> ${PROJECT_BINARY_DIR}/docs)
