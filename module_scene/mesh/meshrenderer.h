#pragma once

#include <cstddef>
#include <vector>

class QOpenGLFunctions;

namespace qel {
namespace scene {

class CMeshO;

// Draws a mesh with the fixed-function pipeline in one of several draw, colour and texture
// modes. With the display list hint the drawing is compiled once into a list, which is
// called again as long as the draw and colour modes match those it was built for;
// resetCachedState forces a rebuild at the next draw. The list belongs to the share group of
// the context current at its creation, so the renderer must be destroyed with a context of
// that group current.
class MeshRenderer
{
public:
    enum DrawMode {
        DRAW_NONE = 0,
        DRAW_BOX = 1,
        DRAW_POINTS = 2,
        DRAW_WIRE = 3,
        // Wire with the lines behind the surface hidden.
        DRAW_HIDDEN = 4,
        DRAW_FLAT = 5,
        DRAW_SMOOTH = 6,
        DRAW_FLAT_WIRE = 7
    };
    enum ColorMode {
        COLOR_NONE = 0,
        // The current colour: a mesh has no colour of its own.
        COLOR_PER_MESH = 1,
        COLOR_PER_FACE = 2,
        COLOR_PER_VERTEX = 3
    };
    enum TextureMode {
        TEXTURE_NONE = 0,
        // A vertex has no texture coordinate: drawn without.
        TEXTURE_PER_VERTEX = 1,
        TEXTURE_PER_WEDGE = 2,
        TEXTURE_PER_WEDGE_MULTI = 3
    };
    enum Hint {
        HINT_USE_DISPLAY_LIST = 0x4,
        // The caller keeps the vertex normals up to date.
        HINT_CALLER_NORMALS = 0x200,
        HINT_USE_VERTEX_ARRAY = 0x800,
        HINT_DEFAULT = 0x1000,
        HINT_USE_BUFFER = 0x2000
    };
    static constexpr int NO_DISPLAY_LIST = -1;

    MeshRenderer();
    // Deletes the display list when a GL context is current.
    ~MeshRenderer();
    MeshRenderer(const MeshRenderer&) = delete;
    MeshRenderer& operator=(const MeshRenderer&) = delete;

    // Null: nothing is drawn.
    void setMesh(CMeshO* mesh) { this->mesh = mesh; }
    CMeshO* getMesh() const { return mesh; }

    int getHints() const { return hints; }
    void setHints(int hints) { this->hints = hints; }
    void addHints(int hints) { this->hints |= hints; }

    // Zeroes the modes the list was built for; the list number is kept for reuse.
    void resetCachedState();
    int getDisplayList() const { return displayList; }
    int getCachedDrawMode() const { return cachedDrawMode; }
    int getCachedColorMode() const { return cachedColorMode; }

    QOpenGLFunctions* getGLFunctions() const { return functions; }
    void setGLFunctions(QOpenGLFunctions* functions) { this->functions = functions; }

    // Rebuilds the vertex index list (three per live face) used with the vertex array and
    // buffer hints; without those hints it does nothing.
    void updateIndices();
    const std::vector<unsigned int>& getIndices() const { return indices; }

    // Needs a current GL context.
    void draw(int drawMode, int colorMode, int textureMode);

    // GL state for drawing selected faces over a drawn mesh: red at the given opacity,
    // blended, pulled towards the viewer by the polygon offset, depth left unwritten. The
    // state and the matrix are saved first and given back by popSelectionState.
    static void pushSelectionState(float opacity, float offset);
    static void popSelectionState();

private:
    bool usesVertexArrays() const;
    bool cacheMatches(int drawMode, int colorMode) const;
    void drawThroughList(int drawMode, int colorMode, int textureMode);
    void drawImmediate(int drawMode, int colorMode, int textureMode);
    void deleteDisplayList();

    void drawTriangles(bool smooth, int colorMode, int textureMode);
    bool drawTrianglesFromArrays(int colorMode);
    void drawWire(int colorMode, int textureMode);
    void drawHidden(int colorMode, int textureMode);
    void drawFlatWire(int colorMode, int textureMode);
    void drawPoints(int colorMode);
    void drawBox();

    CMeshO* mesh = nullptr;
    int hints = HINT_DEFAULT;
    int displayList = NO_DISPLAY_LIST;
    int cachedDrawMode = DRAW_NONE;
    int cachedColorMode = COLOR_NONE;
    QOpenGLFunctions* functions = nullptr;
    std::vector<unsigned int> indices;
    // The vertex count the indices were built for; they are not used once it changed.
    std::size_t indexedVertexCount = 0;
};

} // namespace scene
} // namespace qel
