#include "module_scene/mesh/meshrenderer.h"

#include "module_scene/mesh/cmesho.h"

#include <QOpenGLContext>
#include <qopengl.h>

namespace qel {
namespace scene {

namespace {

bool isDrawable(const CFaceO& face)
{
    return !face.isDeleted() && face.hasCorners();
}

bool wantsFaceColors(const CMeshO& mesh, int colorMode)
{
    return colorMode == MeshRenderer::COLOR_PER_FACE && mesh.face.isColorEnabled();
}

bool wantsWedgeTexCoords(const CMeshO& mesh, int textureMode)
{
    return (textureMode == MeshRenderer::TEXTURE_PER_WEDGE || textureMode == MeshRenderer::TEXTURE_PER_WEDGE_MULTI)
           && mesh.face.isWedgeTexCoordEnabled();
}

void emitCorner(const CVertexO& vertex, bool smooth, bool vertexColor)
{
    if (vertexColor)
        glColor4ubv(vertex.color.rgba);
    if (smooth)
        glNormal3dv(vertex.normal.data());
    glVertex3dv(vertex.coord.data());
}

} // namespace

MeshRenderer::MeshRenderer() = default;

MeshRenderer::~MeshRenderer()
{
    if (QOpenGLContext::currentContext())
        deleteDisplayList();
}

void MeshRenderer::resetCachedState()
{
    cachedDrawMode = DRAW_NONE;
    cachedColorMode = COLOR_NONE;
}

bool MeshRenderer::usesVertexArrays() const
{
    return (hints & (HINT_USE_VERTEX_ARRAY | HINT_USE_BUFFER)) != 0;
}

void MeshRenderer::updateIndices()
{
    if (!usesVertexArrays())
        return;
    indices.clear();
    indexedVertexCount = 0;
    if (!mesh)
        return;
    const CVertexO* base = mesh->vert.data();
    indices.reserve(static_cast<std::size_t>(mesh->fn) * 3);
    for (const CFaceO& face : mesh->face) {
        if (!isDrawable(face))
            continue;
        for (int corner = 0; corner < 3; ++corner)
            indices.push_back(static_cast<unsigned int>(face.v[corner] - base));
    }
    indexedVertexCount = mesh->vert.size();
}

void MeshRenderer::draw(int drawMode, int colorMode, int textureMode)
{
    if (!mesh || drawMode == DRAW_NONE)
        return;
    if (hints & HINT_USE_DISPLAY_LIST)
        drawThroughList(drawMode, colorMode, textureMode);
    else
        drawImmediate(drawMode, colorMode, textureMode);
}

bool MeshRenderer::cacheMatches(int drawMode, int colorMode) const
{
    return displayList != NO_DISPLAY_LIST && cachedDrawMode == drawMode && cachedColorMode == colorMode;
}

void MeshRenderer::drawThroughList(int drawMode, int colorMode, int textureMode)
{
    if (!cacheMatches(drawMode, colorMode)) {
        deleteDisplayList();
        const GLuint list = glGenLists(1);
        if (list == 0) {
            drawImmediate(drawMode, colorMode, textureMode);
            return;
        }
        glNewList(list, GL_COMPILE);
        drawImmediate(drawMode, colorMode, textureMode);
        glEndList();
        displayList = static_cast<int>(list);
        cachedDrawMode = drawMode;
        cachedColorMode = colorMode;
    }
    glCallList(static_cast<GLuint>(displayList));
}

void MeshRenderer::deleteDisplayList()
{
    if (displayList == NO_DISPLAY_LIST)
        return;
    if (glIsList(static_cast<GLuint>(displayList)))
        glDeleteLists(static_cast<GLuint>(displayList), 1);
    displayList = NO_DISPLAY_LIST;
}

void MeshRenderer::drawImmediate(int drawMode, int colorMode, int textureMode)
{
    switch (drawMode) {
    case DRAW_BOX:
        drawBox();
        break;
    case DRAW_POINTS:
        drawPoints(colorMode);
        break;
    case DRAW_WIRE:
        drawWire(colorMode, textureMode);
        break;
    case DRAW_HIDDEN:
        drawHidden(colorMode, textureMode);
        break;
    case DRAW_FLAT:
        drawTriangles(false, colorMode, textureMode);
        break;
    case DRAW_SMOOTH:
        if (!drawTrianglesFromArrays(colorMode))
            drawTriangles(true, colorMode, textureMode);
        break;
    case DRAW_FLAT_WIRE:
        drawFlatWire(colorMode, textureMode);
        break;
    default:
        break;
    }
}

void MeshRenderer::drawTriangles(bool smooth, int colorMode, int textureMode)
{
    const bool faceColor = wantsFaceColors(*mesh, colorMode);
    const bool vertexColor = colorMode == COLOR_PER_VERTEX;
    const bool wedges = wantsWedgeTexCoords(*mesh, textureMode);
    const FaceVector& faces = mesh->face;
    glBegin(GL_TRIANGLES);
    for (std::size_t place = 0; place < faces.size(); ++place) {
        const CFaceO& face = faces[place];
        if (!isDrawable(face))
            continue;
        if (faceColor)
            glColor4ubv(faces.colors()[place].rgba);
        if (!smooth)
            glNormal3dv(face.normal.data());
        for (int corner = 0; corner < 3; ++corner) {
            if (wedges) {
                const TexCoord2f& texCoord = faces.wedgeTexCoords()[place].corner[corner];
                glTexCoord2f(texCoord.u, texCoord.v);
            }
            emitCorner(*face.v[corner], smooth, vertexColor);
        }
    }
    glEnd();
}

// Smooth shading straight from the vertex vector: coordinates, normals and colours are read
// with the vertex record as stride. Per-face colours need the immediate path.
bool MeshRenderer::drawTrianglesFromArrays(int colorMode)
{
    if (!usesVertexArrays() || indices.empty() || indexedVertexCount != mesh->vert.size()
        || wantsFaceColors(*mesh, colorMode))
        return false;
    const CVertexO& first = mesh->vert.front();
    const GLsizei stride = static_cast<GLsizei>(sizeof(CVertexO));
    glPushClientAttrib(GL_CLIENT_VERTEX_ARRAY_BIT);
    glEnableClientState(GL_VERTEX_ARRAY);
    glVertexPointer(3, GL_DOUBLE, stride, first.coord.data());
    glEnableClientState(GL_NORMAL_ARRAY);
    glNormalPointer(GL_DOUBLE, stride, first.normal.data());
    if (colorMode == COLOR_PER_VERTEX) {
        glEnableClientState(GL_COLOR_ARRAY);
        glColorPointer(4, GL_UNSIGNED_BYTE, stride, first.color.rgba);
    }
    glDrawElements(GL_TRIANGLES, static_cast<GLsizei>(indices.size()), GL_UNSIGNED_INT, indices.data());
    glPopClientAttrib();
    return true;
}

void MeshRenderer::drawWire(int colorMode, int textureMode)
{
    glPushAttrib(GL_POLYGON_BIT);
    glPolygonMode(GL_FRONT_AND_BACK, GL_LINE);
    drawTriangles(true, colorMode, textureMode);
    glPopAttrib();
}

// The surface goes into the depth buffer only, pushed back a little, so that the lines in
// front of it pass the depth test and those behind it don't.
void MeshRenderer::drawHidden(int colorMode, int textureMode)
{
    glPushAttrib(GL_ENABLE_BIT | GL_COLOR_BUFFER_BIT | GL_POLYGON_BIT);
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(1.0f, 1.0f);
    glColorMask(GL_FALSE, GL_FALSE, GL_FALSE, GL_FALSE);
    drawTriangles(false, COLOR_NONE, TEXTURE_NONE);
    glPopAttrib();
    drawWire(colorMode, textureMode);
}

void MeshRenderer::drawFlatWire(int colorMode, int textureMode)
{
    glPushAttrib(GL_ENABLE_BIT | GL_POLYGON_BIT);
    glEnable(GL_POLYGON_OFFSET_FILL);
    glPolygonOffset(1.0f, 1.0f);
    drawTriangles(false, colorMode, textureMode);
    glPopAttrib();
    glPushAttrib(GL_ENABLE_BIT | GL_CURRENT_BIT | GL_LIGHTING_BIT);
    glDisable(GL_LIGHTING);
    glColor3f(0.0f, 0.0f, 0.0f);
    drawWire(COLOR_NONE, TEXTURE_NONE);
    glPopAttrib();
}

void MeshRenderer::drawPoints(int colorMode)
{
    const bool vertexColor = colorMode == COLOR_PER_VERTEX;
    glBegin(GL_POINTS);
    for (const CVertexO& vertex : mesh->vert) {
        if (!vertex.isDeleted())
            emitCorner(vertex, true, vertexColor);
    }
    glEnd();
}

void MeshRenderer::drawBox()
{
    const Box3d& box = mesh->bbox;
    if (box.isEmpty())
        return;
    const double* low = box.min.data();
    const double* high = box.max.data();
    glPushAttrib(GL_ENABLE_BIT);
    glDisable(GL_LIGHTING);
    glBegin(GL_LINES);
    for (int axis = 0; axis < 3; ++axis) {
        const int u = (axis + 1) % 3;
        const int w = (axis + 2) % 3;
        for (int corner = 0; corner < 4; ++corner) {
            double start[3];
            start[axis] = low[axis];
            start[u] = (corner & 1) ? high[u] : low[u];
            start[w] = (corner & 2) ? high[w] : low[w];
            double end[3] = {start[0], start[1], start[2]};
            end[axis] = high[axis];
            glVertex3dv(start);
            glVertex3dv(end);
        }
    }
    glEnd();
    glPopAttrib();
}

void MeshRenderer::pushSelectionState(float opacity, float offset)
{
    glPushAttrib(GL_CURRENT_BIT | GL_LIGHTING_BIT | GL_DEPTH_BUFFER_BIT | GL_ENABLE_BIT | GL_COLOR_BUFFER_BIT);
    glEnable(GL_POLYGON_OFFSET_FILL);
    glDisable(GL_LIGHTING);
    glDisable(GL_TEXTURE_2D);
    glEnable(GL_BLEND);
    glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
    glDepthMask(GL_FALSE);
    glColor4f(1.0f, 0.0f, 0.0f, opacity);
    glPolygonOffset(offset, offset);
    glPushMatrix();
}

void MeshRenderer::popSelectionState()
{
    glPopMatrix();
    glPopAttrib();
}

} // namespace scene
} // namespace qel
