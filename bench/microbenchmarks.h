#pragma once

// Google Benchmark kernels; accepts the usual --benchmark_* flags.
int runMicroBenchmarks(int argc, char** argv);
