#pragma once

#include "module_scene/mesh/cmesho.h"
#include "module_scene/mesh/meshallocator.h"

#include <array>
#include <vector>

namespace qel {
namespace test {

typedef scene::CVertexO::Point Point;
typedef std::array<int, 3> Triangle;

// Fills an empty mesh with the given vertices and faces (indices into the vertex list).
inline void buildMesh(scene::CMeshO& mesh, const std::vector<Point>& points, const std::vector<Triangle>& triangles)
{
    scene::MeshAllocator::addVertices(mesh, points.size());
    for (std::size_t place = 0; place < points.size(); ++place)
        mesh.vert[place].coord = points[place];
    scene::MeshAllocator::addFaces(mesh, triangles.size());
    for (std::size_t place = 0; place < triangles.size(); ++place) {
        for (int corner = 0; corner < 3; ++corner)
            mesh.face[place].v[corner] = &mesh.vert[static_cast<std::size_t>(triangles[place][corner])];
    }
}

inline int vertexPlace(const scene::CMeshO& mesh, const scene::CVertexO* vertex)
{
    return static_cast<int>(vertex - mesh.vert.data());
}

inline Triangle corners(const scene::CMeshO& mesh, std::size_t face)
{
    const scene::CFaceO& f = mesh.face[face];
    return {vertexPlace(mesh, f.v[0]), vertexPlace(mesh, f.v[1]), vertexPlace(mesh, f.v[2])};
}

// Two triangles forming the unit square in z = 0 (diagonal 0-2), counter-clockwise seen from +z.
inline void buildSquare(scene::CMeshO& mesh)
{
    buildMesh(mesh, {Point(0.0, 0.0, 0.0), Point(1.0, 0.0, 0.0), Point(1.0, 1.0, 0.0), Point(0.0, 1.0, 0.0)},
              {{0, 1, 2}, {0, 2, 3}});
}

// An open strip of three triangles over vertices 0..4 along the x axis:
//  1---3
//  |\  |\     faces (0,2,1), (1,2,3), (2,4,3)
//  0---2---4
inline void buildOpenStrip(scene::CMeshO& mesh)
{
    buildMesh(mesh,
              {Point(0.0, 0.0, 0.0), Point(0.0, 1.0, 0.0), Point(1.0, 0.0, 0.0), Point(1.0, 1.0, 0.0),
               Point(2.0, 0.0, 0.0)},
              {{0, 2, 1}, {1, 2, 3}, {2, 4, 3}});
}

// An open fan of four triangles around the interior vertex 0 (the ring 1..4 is the border).
inline void buildFan(scene::CMeshO& mesh)
{
    buildMesh(mesh,
              {Point(0.0, 0.0, 0.0), Point(1.0, 0.0, 0.0), Point(0.0, 1.0, 0.0), Point(-1.0, 0.0, 0.0),
               Point(0.0, -1.0, 0.0)},
              {{0, 1, 2}, {0, 2, 3}, {0, 3, 4}, {0, 4, 1}});
}

// A closed tetrahedron, faces oriented outwards.
inline void buildTetrahedron(scene::CMeshO& mesh)
{
    buildMesh(mesh, {Point(0.0, 0.0, 0.0), Point(1.0, 0.0, 0.0), Point(0.0, 1.0, 0.0), Point(0.0, 0.0, 1.0)},
              {{0, 2, 1}, {0, 1, 3}, {0, 3, 2}, {1, 2, 3}});
}

// The unit cube [0,1]^3 as 12 outward triangles over 8 shared vertices.
inline void buildCube(scene::CMeshO& mesh)
{
    buildMesh(mesh,
              {Point(0.0, 0.0, 0.0), Point(1.0, 0.0, 0.0), Point(1.0, 1.0, 0.0), Point(0.0, 1.0, 0.0),
               Point(0.0, 0.0, 1.0), Point(1.0, 0.0, 1.0), Point(1.0, 1.0, 1.0), Point(0.0, 1.0, 1.0)},
              {{0, 2, 1}, {0, 3, 2}, {4, 5, 6}, {4, 6, 7}, {0, 1, 5}, {0, 5, 4},
               {1, 2, 6}, {1, 6, 5}, {2, 3, 7}, {2, 7, 6}, {3, 0, 4}, {3, 4, 7}});
}

// The cube as a triangle soup: three vertices of its own per face, as STL files deliver it.
inline void buildCubeSoup(scene::CMeshO& mesh)
{
    scene::CMeshO shared;
    buildCube(shared);
    std::vector<Point> points;
    std::vector<Triangle> triangles;
    for (std::size_t face = 0; face < shared.face.size(); ++face) {
        const Triangle t = corners(shared, face);
        const int first = static_cast<int>(points.size());
        for (int corner = 0; corner < 3; ++corner)
            points.push_back(shared.vert[static_cast<std::size_t>(t[corner])].coord);
        triangles.push_back({first, first + 1, first + 2});
    }
    buildMesh(mesh, points, triangles);
}

} // namespace test
} // namespace qel
