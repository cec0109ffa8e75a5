#include "module_scene/mesh/cmesho.h"

namespace qel {
namespace scene {

void CMeshO::clear()
{
    vert.clear();
    vn = 0;
    face.clear();
    fn = 0;
    bbox.setEmpty();
    sfn = 0;
}

} // namespace scene
} // namespace qel
