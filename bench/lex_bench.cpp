#include <benchmark/benchmark.h>
