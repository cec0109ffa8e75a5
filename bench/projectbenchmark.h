#pragma once

// qel-bench project [--triangles N] [--dir FOLDER] [--json FILE]
// Loads the load benchmark's torus of N triangles (2,000,000 by default) through the PLY
// plug-in as a model of the global scene, saves it as a project through the scene module's
// participant and opens it again, beside the floors on the same bytes: writing the archive's
// size with one write and fsync, and reading it back. The reopened model must be identical:
// the same vertex and face counts and the same checksum of coordinates and corner numbers.
int runProjectBenchmark(int argc, char** argv);
