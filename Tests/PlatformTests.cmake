velto_add_tests(platform_tests SOURCES
    Platform/DispatchTest.cpp
    Platform/EventReaderTest.cpp
    Platform/HIDDeviceTest.cpp
    Platform/HIDEventSystemTest.cpp
    Platform/HIDEventTest.cpp
    Platform/JSONTest.cpp
    Platform/LogTest.cpp
    Platform/ObjectTest.cpp
    Platform/ReportDescriptorTest.cpp
    Platform/RunLoopTest.cpp
    Platform/TraceTest.cpp
    Platform/UUIDTest.cpp
    Platform/ValueTest.cpp
    Shared/UtilTest.cpp
)
add_subdirectory(Kernel)
add_subdirectory(System)
