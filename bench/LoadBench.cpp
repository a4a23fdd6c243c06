// Loading and unloading the plug-in, against an empty library.
#include <benchmark/benchmark.h>
#include <dlfcn.h>

namespace {

// A library that is linked stays loaded: copies are loaded, named by the build.
void load(benchmark::State& state, const char* path) {
    for (auto _ : state) {
        void* library = dlopen(path, RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr) {
            state.SkipWithError(dlerror());
            return;
        }
        dlclose(library);
    }
}

void loadPlugin(benchmark::State& state) {
    load(state, QUORVEL_BENCH_PLUGIN);
}
BENCHMARK(loadPlugin)->Unit(benchmark::kMicrosecond);

void loadEmptyLibrary(benchmark::State& state) {
    load(state, QUORVEL_BENCH_EMPTY);
}
BENCHMARK(loadEmptyLibrary)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
