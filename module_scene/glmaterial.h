#pragma once

class QColor;

namespace qel {
namespace scene {

// Material state for lit drawing. Colour material copies the current colour into the
// material only when that colour changes, and an attribute frame that is popped brings back
// the colour but not what tracking did to the material meanwhile. A lit drawing that sets
// only a colour equal to the current one therefore inherits the material that the last
// drawing left behind; whoever draws lit sets the material and the colour together.
class GLMaterial
{
public:
    // Ambient and diffuse of both faces become the colour and keep tracking the colours given
    // while drawing; no highlight and no glow. The current colour is the colour.
    static void applyColor(float red, float green, float blue, float alpha);
    static void applyColor(const QColor& color, float alpha);

private:
    GLMaterial() = delete;
};

} // namespace scene
} // namespace qel
