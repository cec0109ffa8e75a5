#pragma once

// qel-bench pick [--triangles N] [--rays N] [--sample N] [--order stacks|slices] [--json FILE]
// Picks on a bumpy sphere of N triangles (2,000,000 by default), shaped like a scan, through a
// model element's face search (what follows its box test): N rays (10,000) that hit the
// surface and N that pass through the mesh's box but miss the surface, through the pick tree,
// and a sample of each (200) through the walk over all faces, which must agree with the tree
// bit for bit. Reports the tree's build time and the mean time per ray of each path. The faces are stored ring by ring from pole to pole, or with
// --order slices slice by slice.
int runPickBenchmark(int argc, char** argv);
