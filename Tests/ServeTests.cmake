velto_add_tests(serve_tests
    SOURCES Serve/BusTest.cpp Serve/BusValuesTest.cpp Serve/EventLoopTest.cpp Serve/MediaKeysTest.cpp
    LIBRARIES VeltoTouchServe fmt::fmt
)
