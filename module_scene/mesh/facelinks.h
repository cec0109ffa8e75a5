#pragma once

namespace qel {
namespace scene {

class CFaceO;

// Per-face adjacency record, used for the face-face and the vertex-face arrays: for each
// of the three corners (or edges) a face and which corner (or edge) of that face.
// An unset entry is a null face with index -1.
struct FaceLinks
{
    CFaceO* face[3] = {nullptr, nullptr, nullptr};
    signed char index[3] = {-1, -1, -1};
};

} // namespace scene
} // namespace qel
