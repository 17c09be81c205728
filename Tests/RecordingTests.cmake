velto_add_tests(recording_tests SOURCES
    Recording/ContainerReaderTest.cpp
    Recording/ContainerWriterTest.cpp
    Recording/MigrationTest.cpp
    Recording/PipelineRecordingTest.cpp
    Recording/PlaybackTest.cpp
    Recording/RecordingCopyTest.cpp
    Recording/TrimmingTest.cpp
)
