velto_add_tests(serve_tests
    SOURCES Serve/MediaKeysTest.cpp
    LIBRARIES VeltoTouchServe fmt::fmt
)
