#include <cstdlib>

#include <benchmark/benchmark.h>

// What the service logs, that there is no accelerometer for one, has no place among figures.
int main(int argc, char** argv) {
    setenv("VELTO_LOG", "off", 0);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
