// Cost of the notification paths every scene change goes through.
#include "kernel/events/eventhandler.h"
#include "kernel/main/eventmanager.h"
#include "kernel/util/zmemorymanaged.h"
#include "kernel/util/zpointer.h"

#include "microbenchmarks.h"

#include <benchmark/benchmark.h>

namespace {

struct Node : qel::util::ZMemoryManaged<Node>
{
};

void BM_ZPointerCopy(benchmark::State& state)
{
    qel::util::ZPointer<Node> node(new Node);
    for (auto _ : state) {
        qel::util::ZPointer<Node> copy(node);
        benchmark::DoNotOptimize(copy.get());
    }
}
BENCHMARK(BM_ZPointerCopy);

void BM_FireEvent(benchmark::State& state)
{
    const unsigned long id = qel::events::EventHandler::getInstance()->addEvent("Bench", "BENCH_EVENT");
    auto* manager = qel::main::EventManager::getInstance();
    int owners[64];
    long calls = 0;
    for (int i = 0; i < state.range(0); ++i)
        manager->registerEventFunction(id, new qel::main::EventManager::EventFunction([&calls](const qel::main::Event*) { ++calls; }), &owners[i]);
    for (auto _ : state) {
        qel::main::Event event(id, nullptr, nullptr, false);
        manager->fireEvent(event);
    }
    for (int i = 0; i < state.range(0); ++i)
        manager->unregisterAllEventFunctionsOf(&owners[i]);
    benchmark::DoNotOptimize(calls);
}
BENCHMARK(BM_FireEvent)->Arg(1)->Arg(8)->Arg(64);

} // namespace

int runMicroBenchmarks(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 2;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
