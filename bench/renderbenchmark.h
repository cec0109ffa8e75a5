#pragma once

// qel-bench render [--triangles N] [--frames N] [--json FILE]
// Draws a finely tessellated torus of N triangles (2,000,000 by default) into a 1024x768
// frame buffer with the fixed-function pipeline, as a model is drawn in a scene view, and
// reports side by side the frames per second through the mesh renderer's display list, the
// time to build that list, and the frames per second of the same drawing in plain immediate
// mode. Needs an X display (Mesa's software renderer under xvfb-run will do).
int runRenderBenchmark(int argc, char** argv);
