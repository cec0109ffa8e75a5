// Cost of the notification paths every scene change goes through.
#include "kernel/events/eventhandler.h"
#include "kernel/main/eventmanager.h"
#include "kernel/util/zmemorymanaged.h"
#include "kernel/util/zpointer.h"
#include "module_scene/scene.h"
#include "module_scene/sceneevents.h"

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

// A movable element without drawing, as a loaded part would be.
class Part : public qel::scene::SceneElement
{
public:
    Part() : SceneElement("Part") {}
    QString getTypeName() const override { return "BenchPart"; }

protected:
    void drawGL() override {}
    void initializeGL() override {}
};

// A scene that owns its elements until the end of the benchmark.
struct SceneFixture
{
    qel::util::ZPointer<qel::scene::Scene> scene{new qel::scene::Scene};
    ~SceneFixture() { scene->shutDown(); }

    void addAlike(int count)
    {
        for (int i = 0; i < count; ++i) {
            qel::util::ZPointer<qel::scene::SceneElement> element(new Part);
            scene->addElement(element.get());
        }
    }
};

// Names the scene gives to N elements that all arrive as "Part".
void BM_SceneAddAlikeNamed(benchmark::State& state)
{
    for (auto _ : state) {
        SceneFixture fixture;
        fixture.addAlike(static_cast<int>(state.range(0)));
        benchmark::DoNotOptimize(fixture.scene->getElementList()->size());
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_SceneAddAlikeNamed)->Arg(1000)->Arg(8000)->Arg(32000)->Unit(benchmark::kMillisecond)->Complexity();

// What selecting them all by name costs: one look-up per name, then the selection event.
void BM_SceneSelectByName(benchmark::State& state)
{
    SceneFixture fixture;
    const int count = static_cast<int>(state.range(0));
    fixture.addAlike(count);
    std::vector<QString> names;
    for (const auto& element : *fixture.scene->getElementList())
        names.push_back(element->getName());
    for (auto _ : state) {
        qel::scene::Scene::ElementList selection;
        for (const QString& name : names)
            selection.push_back(fixture.scene->getSceneElement(name));
        qel::main::Event event(qel::scene::SCENE_ELEMENTS_SELECTION, &selection, nullptr, false);
        qel::main::EventManager::getInstance()->fireEvent(event);
    }
    state.SetComplexityN(state.range(0));
}
BENCHMARK(BM_SceneSelectByName)->Arg(1000)->Arg(8000)->Arg(32000)->Unit(benchmark::kMillisecond)->Complexity();

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
