velto_add_tests(recording_tests SOURCES
    Recording/ContainerTest.cpp
    Recording/PipelineRecordingTest.cpp
    Recording/PlaybackTest.cpp
    Recording/TrimmingTest.cpp
)
