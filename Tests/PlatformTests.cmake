velto_add_tests(platform_tests SOURCES
    Platform/ClockTest.cpp
    Platform/HIDEventTest.cpp
    Platform/JSONElementTest.cpp
    Platform/JSONReadingTest.cpp
    Platform/JSONWritingTest.cpp
    Platform/LogTest.cpp
    Platform/ObjectTest.cpp
    Platform/ValueTest.cpp
    Pipeline/ReportTest.cpp
    Shared/HexTextTest.cpp
    Shared/ImageTextTest.cpp
    Shared/UtilTest.cpp
)
