#pragma once

// qel-bench load [--triangles N] [--file PATH] [--json FILE]
// Generates a binary STL of a finely tessellated torus and reports, side by side, the raw
// read of the file (the I/O floor), the load through the STL plug-in to a cleaned MeshModel,
// and assimp's import of the same file with aiProcess_JoinIdenticalVertices, with the vertex
// count each path ends with and the load's peak memory per million triangles.
int runLoadBenchmark(int argc, char** argv);
