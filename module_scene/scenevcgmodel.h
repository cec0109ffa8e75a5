#pragma once

#include "module_scene/sceneelement.h"

#include <QColor>
#include <QMutex>
#include <QReadWriteLock>
#include <memory>
#include <set>
#include <vector>

namespace qel {
namespace scene {

class CFaceO;
class MeshModel;

// The scene element that shows a MeshModel: it owns the mesh, holds the model's look, keeps
// the set of selected faces, answers ray picks against the mesh and draws it, or only its
// box while the mesh is busy.
//
// Locks: renderMutex (the mesh drawing, mesh changes by other modules, the wireframe
// switch) before selectionLock (the face set). Neither is recursive.
class SceneVCGModel : public SceneElement
{
    Q_DECLARE_TR_FUNCTIONS(qel::scene::SceneVCGModel)

public:
    typedef math::Vector<double, 3> Point;

    // A pick ray from start through end, both in world coordinates.
    struct Line
    {
        Point start;
        Point end;
    };

    struct Settings
    {
        bool wireframe = false;
        QColor modelColor = QColor(255, 255, 255);
        QColor ambientColor = QColor::fromRgbF(0.23f, 0.09f, 0.03f, 1.0f);
        QColor diffuseColor = QColor::fromRgbF(0.55f, 0.21f, 0.07f, 1.0f);
        QColor specularColor = QColor::fromRgbF(0.58f, 0.22f, 0.07f, 1.0f);
        double shininess = static_cast<double>(51.2f);
        bool advancedColoring = false;
        QColor clippingColor = QColor(0, 204, 0);
    };

    typedef std::set<const CFaceO*> FaceSet;

    static const QString TypeName;

    // Takes over the mesh (may be null until a project's archive provides it).
    SceneVCGModel(MeshModel* mesh, const QString& name);
    ~SceneVCGModel() override;

    // An element without mesh and name, for loading projects.
    static SceneElement* createElement();

    QString getTypeName() const override;
    // The element's look beside the base's XML; the mesh payload belongs to the project archive.
    void saveTo(QXmlStreamWriter* writer, io::ZTarFile* tar, const bool& abort) override;
    // Reading "filename" builds the mesh from its archive entry. A missing entry, or one that
    // is truncated, refers to vertices that aren't there or has a colour block of the wrong
    // size, raises qel::Exception naming the entry and the project, and leaves the element
    // as it was; so does an abort. Not enough memory sets abort.
    void loadFrom(QXmlStreamReader* reader, io::ZTarFile* tar, Scene* scene, bool& abort) override;
    // "models/" + the MD5 of the name + ".qelmodel": the entry of the mesh in a project.
    QString getArchiveEntryName() const;

    MeshModel* getMeshModel() { return meshModel; }
    const MeshModel* getMeshModel() const { return meshModel; }

    // Look.
    const Settings* getSettings() const { return &settings; }
    void setSettings(const Settings* newSettings);
    QColor getModelColor() const { return settings.modelColor; }
    QColor getClippingColor() const { return settings.clippingColor; }
    QColor getAmbientColor() const { return settings.ambientColor; }
    QColor getDiffuseColor() const { return settings.diffuseColor; }
    QColor getSpecularColor() const { return settings.specularColor; }
    double getShininess() const { return settings.shininess; }
    // Invalid colours are ignored; a valid one is announced even when it is the same.
    void setModelColor(const QColor& color);
    void setAmbientColor(const QColor& color);
    void setDiffuseColor(const QColor& color);
    void setSpecularColor(const QColor& color);
    // Announced only when it differs; not checked for validity.
    void setClippingColor(const QColor& color);
    // A value outside [0, 128] becomes 0.
    void setShininess(double shininess);
    bool isWireframeEnabled() const { return settings.wireframe; }
    bool isAdvancedColoringEnabled() const { return settings.advancedColoring; }
    bool isRenderPerFaceEnabled() const { return renderPerFace; }
    bool isRenderNormalsEnabled() const { return renderNormals; }
    void setWireframeEnabled(bool enabled);
    void enableAdvancedColoring(bool enabled);
    void setRenderPerFace(bool perFace);
    void setRenderNormals(bool render);

    // The centre the model had in its source file, before the loader centred it.
    Point getPreSetCenter() const { return preSetCenter; }
    void setPreSetCenter(const Point& center) { preSetCenter = center; }

    // Holds off drawing while other code changes the mesh: true locks, false unlocks.
    void setRenderLock(bool lock);

    // Mean edge length of the first `count` faces in storage order (deleted ones included),
    // in mesh units.
    double getAverageEdgeLength(unsigned int count) const;

    using SceneElement::intersect;
    // The nearest face that the ray hits, after a test against the element's box. On a miss
    // of the box nothing is written. `distance` gets the ray parameter of the last plane
    // crossing of the walk, not that of the kept face. With `snap` the point is the hit
    // face's corner nearest to the hit. Answered through the pick tree, with exactly the
    // results of intersectFaces.
    bool intersect(const Line& line, const CFaceO** face, Point& point, double& distance, bool snap);
    // The same without the box test: every live face of the original mesh, in storage order,
    // the first of equally near faces winning. The reference for faster searches.
    bool intersectFaces(const Line& line, const CFaceO** face, Point& point, double& distance, bool snap) const;
    // intersectFaces through the pick tree: only faces whose boxes the ray meets are tested,
    // and the last plane crossing is found walking back from the end of the face vector past
    // blocks of faces that lie behind the ray. Falls back to the full walk where the tree
    // can't answer exactly (no usable tree, a projective or singular matrix, a ray that isn't
    // finite).
    bool intersectFacesAccelerated(const Line& line, const CFaceO** face, Point& point, double& distance,
                                   bool snap);
    // Builds the pick tree of the original mesh now unless a current one exists (the first
    // pick does it otherwise). False when the mesh can't have one.
    bool preparePickTree();
    // Drops the pick tree; the next pick builds a new one. Code that moves vertices or
    // replaces faces in place calls this (or holds the render lock meanwhile: releasing it
    // drops the tree). Changes of the storage, the counts or the mesh box are noticed anyway.
    void meshChanged();
    // The ray against one triangle. t is written for any crossing at or beyond the start,
    // whether inside the triangle or not; a point on an edge is inside.
    static bool intersectTriangle(const Point& a, const Point& b, const Point& c, const Line& line, Point& hit,
                                  double& t);
    // The ray parameter where the line crosses the triangle's plane (not finite for a
    // parallel line or a degenerate triangle); normal gets the raw normal (b - a) x (c - a).
    static double planeCrossing(const Point& a, const Point& b, const Point& c, const Line& line, Point& normal);

    // Logs the memory a model of this size needs, and touches that much once to see whether
    // it can be had.
    static bool checkForMemory(unsigned int vertices, unsigned int faces);

    // Face selection by places in the face vector: bad places are logged and skipped,
    // deleted faces skipped, and the change is announced once.
    void addFaceSelection(const std::vector<unsigned int>& faces);
    void removeFaceSelection(const std::vector<unsigned int>& faces);
    void toggleFaceSelection(const std::vector<unsigned int>& faces);
    // Face selection by pointer. The marker flag goes to the face at place / 8 in these forms
    // (drawing and saving go by the set, not by the flag). Only the toggle announces itself.
    bool addFaceSelection(const CFaceO* face);
    bool removeFaceSelection(const CFaceO* face);
    void toggleFaceSelection(const CFaceO* face);
    void clearFaceSelection();
    bool isFaceSelected(const CFaceO* face);
    bool isFaceSelected();
    // Not guarded once returned.
    const FaceSet& getSelectedFaces();

protected:
    QWidget* createCustomGUI() override;

private:
    enum FaceListChange { FACES_ADD, FACES_REMOVE, FACES_TOGGLE };

    void drawGL() override;
    void initializeGL() override;

    void initMeshModel();
    void saveMesh(QXmlStreamWriter* writer, io::ZTarFile* tar, const bool& abort);
    void loadMesh(const QString& entry, io::ZTarFile* tar, bool& abort);
    void restoreSelectionFromFlags();
    void takeLoadedMesh(MeshModel* mesh, bool complete);
    void drawNormals();
    void applyMaterial();
    bool isMeshReady();
    void drawBoxOutline();
    void drawMesh();
    void glDrawSelectedFaces();

    // What the pick tree was built from: a change of any of these needs a new tree.
    struct MeshShape
    {
        const void* faces = nullptr;
        std::size_t faceCount = 0;
        const void* vertices = nullptr;
        std::size_t vertexCount = 0;
        int liveFaces = 0;
        int liveVertices = 0;
        Point boxMinimum;
        Point boxMaximum;

        bool operator==(const MeshShape& other) const;
    };

    // The pick tree with the blocks for the last plane crossing, built together.
    struct PickIndex;

    MeshShape currentMeshShape() const;
    std::shared_ptr<const PickIndex> currentPickIndex();
    bool lastPlaneCrossing(const PickIndex& index, const Matrix4& complete, const Line& line, double& distance) const;

    void changeFaceSelection(const std::vector<unsigned int>& faces, FaceListChange change, long line,
                             const char* function);
    bool placeOf(const CFaceO* face, std::size_t& place) const;
    CFaceO& flagFaceOf(std::size_t place);
    void setChangedIfValid(const QColor& color, QColor& field);

    MeshModel* meshModel;
    int pendingDrawMode = 0;
    Settings settings;
    bool renderPerFace = true;
    bool renderNormals = false;
    Point preSetCenter;
    QMutex renderMutex;
    QReadWriteLock selectionLock;
    FaceSet selectedFaces;
    // Guards the two below; a pick copies the index pointer and searches without the lock.
    QMutex pickTreeMutex;
    std::shared_ptr<const PickIndex> pickIndex;
    MeshShape pickIndexShape;
};

} // namespace scene
} // namespace qel
