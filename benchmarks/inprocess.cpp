// All in-process comparisons in one program. The environment variable HWDEF_BENCH_DIR names the
// directory with the corpus and the containers, HWDEF_BENCH_SMALL asks for a trial.

#include <benchmark/benchmark.h>

#include <iostream>

#include "Workloads.h"

int main(int argc, char** argv)
{
    try {
        bench::addOpening();
        bench::addMembers();
        bench::addRewriting();
        bench::addDigests();
        bench::addAppending();
        bench::addGrowth();
        bench::addLimits();
    } catch (const std::exception& error) {
        std::cerr << error.what() << "\n";
        return EXIT_FAILURE;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return EXIT_FAILURE;
    }
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}
