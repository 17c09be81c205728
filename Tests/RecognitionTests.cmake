velto_add_tests(recognition_tests SOURCES
    Algs/ActiveRegionTest.cpp
    Algs/DiagnosticsTest.cpp
    Algs/GestureTest.cpp
    Algs/PixelTest.cpp
    Algs/ScoresTest.cpp
    Algs/SettingsTest.cpp
    Pipeline/PipelineTest.cpp
)
