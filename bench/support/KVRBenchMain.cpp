#include <benchmark/benchmark.h>

#include "support/KVRBenchEnvironment.h"

int main(int argc, char** argv) {
    KVRBenchEnvironment environment;
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
