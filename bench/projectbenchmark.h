#pragma once

// qel-bench project [--triangles N] [--dir FOLDER] [--json FILE]
// Saves and opens a project whose one participant holds the bytes of a model entry of N
// triangles (2,000,000 by default: 52 bytes a vertex, 40 a face), beside the floors on the
// same bytes: writing the archive's size with one write and fsync, and reading it back.
// What it times is the host's share of a project (archive, temporary file, sync, rename and
// the two-phase open); the scene's own writing of its models adds to it.
int runProjectBenchmark(int argc, char** argv);
