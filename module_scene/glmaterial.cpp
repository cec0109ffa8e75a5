#include "module_scene/glmaterial.h"

#include <QColor>
#include <qopengl.h>

namespace qel {
namespace scene {

// Tracked parameters ignore glMaterial while tracking is on: it goes off first.
void GLMaterial::applyColor(float red, float green, float blue, float alpha)
{
    const GLfloat color[4] = {red, green, blue, alpha};
    const GLfloat none[4] = {0.0f, 0.0f, 0.0f, 1.0f};
    glDisable(GL_COLOR_MATERIAL);
    glMaterialfv(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE, color);
    glMaterialfv(GL_FRONT_AND_BACK, GL_SPECULAR, none);
    glMaterialfv(GL_FRONT_AND_BACK, GL_EMISSION, none);
    glMaterialf(GL_FRONT_AND_BACK, GL_SHININESS, 0.0f);
    glColor4fv(color);
    glColorMaterial(GL_FRONT_AND_BACK, GL_AMBIENT_AND_DIFFUSE);
    glEnable(GL_COLOR_MATERIAL);
}

void GLMaterial::applyColor(const QColor& color, float alpha)
{
    applyColor(static_cast<float>(color.redF()), static_cast<float>(color.greenF()),
               static_cast<float>(color.blueF()), alpha);
}

} // namespace scene
} // namespace qel
