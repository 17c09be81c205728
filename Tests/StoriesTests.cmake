find_package(nlohmann_json 3.11 REQUIRED)
velto_add_tests(stories_tests LIBRARIES nlohmann_json::nlohmann_json fmt::fmt SOURCES
    Stories/Clock.cpp
    Stories/Comparison.cpp
    Stories/Differences.cpp
    Stories/Observed.cpp
    Stories/StoriesTest.cpp
    Stories/Story.cpp
    Stories/Teller.cpp
    Stories/Values.cpp
)
target_precompile_headers(stories_tests PRIVATE <nlohmann/json.hpp>) # most of their compile time
