velto_add_tests(recognition_tests SOURCES
    Algs/ActiveRegionTest.cpp
    Algs/EventStatsTest.cpp
    Algs/GestureTest.cpp
    Algs/PixelTest.cpp
    Algs/SVMTest.cpp
    Algs/SettingsTest.cpp
    Algs/StateDescriptionsTest.cpp
    Algs/TapRejectionTest.cpp
    Algs/TouchScoreTest.cpp
    Algs/VirtualImageTest.cpp
    Pipeline/PipelineTest.cpp
)
