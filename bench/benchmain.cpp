// qel-bench: one executable, one sub-command per benchmark.
//   qel-bench load [--triangles N] [--file PATH] [--json FILE]   loading a large binary STL
//   qel-bench micro [Google Benchmark flags]   small kernels (events, pointers, parsing)
//   qel-bench pick [--triangles N] [--rays N] [--json FILE]   ray picks on a large model
//   qel-bench project [--triangles N] [--dir FOLDER] [--json FILE]   saving and opening a project
//   qel-bench render [--triangles N] [--frames N] [--json FILE]   drawing a large model
// Each sub-command prints a table; those that take --json FILE also write their figures there.
#include "loadbenchmark.h"
#include "microbenchmarks.h"
#include "pickbenchmark.h"
#include "projectbenchmark.h"
#include "renderbenchmark.h"

#include <cstdio>
#include <cstring>
#include <functional>
#include <map>
#include <string>

namespace {

typedef std::function<int(int, char**)> SubCommand;

const std::map<std::string, SubCommand>& subCommands()
{
    static const std::map<std::string, SubCommand> commands = {
        {"load", runLoadBenchmark},
        {"micro", runMicroBenchmarks},
        {"pick", runPickBenchmark},
        {"project", runProjectBenchmark},
        {"render", runRenderBenchmark},
    };
    return commands;
}

int usage()
{
    std::fprintf(stderr, "usage: qel-bench <sub-command> [options]\nsub-commands:");
    for (const auto& entry : subCommands())
        std::fprintf(stderr, " %s", entry.first.c_str());
    std::fprintf(stderr, "\n");
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
        return usage();
    auto found = subCommands().find(argv[1]);
    if (found == subCommands().end())
        return usage();
    // The sub-command sees its own name as argv[0].
    return found->second(argc - 1, argv + 1);
}
