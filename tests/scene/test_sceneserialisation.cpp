// The scene's section of a project: a scene saved into a tar archive and opened into
// another comes back with its tree, looks, meshes and picked points; bad sections and
// model entries are refused with a logged message and leave the live scene as it was.
#include "kernel/io/projectmanager.h"
#include "kernel/io/zfile.h"
#include "kernel/io/ztarfile.h"
#include "mesh/meshfixtures.h"
#include "module_scene/clippingplane.h"
#include "module_scene/mesh/meshbounds.h"
#include "module_scene/mesh/meshnormals.h"
#include "module_scene/mesh/modelentry.h"
#include "module_scene/meshmodel.h"
#include "module_scene/project/sceneprojectparticipant.h"
#include "module_scene/scene.h"
#include "module_scene/sceneselectionplane.h"
#include "module_scene/scenevcgmodel.h"
#include "module_scene/selectedpoint.h"
#include "scene/testelement.h"
#include "support/logcapture.h"

#include <QBuffer>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>
#include <gtest/gtest.h>
#include <memory>

namespace qel {
namespace test {
namespace {

using io::ZTarFile;
using scene::ClippingPlane;
using scene::MeshModel;
using scene::SceneElement;
using scene::SceneProjectParticipant;
using scene::SceneSelectionPlane;
using scene::SceneVCGModel;
typedef util::ZPointer<SceneVCGModel> ModelPointer;

MeshModel* cubeMesh(bool withColors)
{
    auto* mesh = new MeshModel;
    buildCube(mesh->cm);
    scene::MeshNormals::updateVertexAndFaceNormals(mesh->cm);
    scene::MeshBounds::update(mesh->cm);
    if (withColors) {
        mesh->Enable(MeshModel::FACE_COLOR);
        for (std::size_t f = 0; f < mesh->cm.face.size(); ++f)
            mesh->cm.face.colors()[f] = scene::Color4b::fromRgba(static_cast<unsigned char>(f * 20), 7, 99, 200);
    }
    mesh->busy = false;
    return mesh;
}

// Type, name and visibility of each element below the root, with its children.
QString treeOf(const SceneElement* element, const SceneElement* selectionNode)
{
    QStringList children;
    for (const SceneElement::Pointer& child : *element->getChilds()) {
        if (child.get() != selectionNode)
            children << treeOf(child.get(), selectionNode);
    }
    return QStringLiteral("%1:%2%3%4")
        .arg(element->getTypeName(), element->getName(), element->isVisible() ? "" : "(hidden)",
             children.isEmpty() ? QString() : "{" + children.join(",") + "}");
}

QString treeOf(scene::Scene* scene)
{
    return treeOf(scene->getRootNode().get(), scene->getSelectionNode().get());
}

template <class T>
util::ZPointer<T> find(scene::Scene* scene, const QString& name)
{
    util::ZPointer<T> found(dynamic_cast<T*>(scene->getSceneElement(name).get()));
    EXPECT_FALSE(found.isNull()) << qPrintable(name);
    return found;
}

// A scene with a participant of its own, as the module has for the global scene.
struct ProjectScene
{
    ProjectScene() : participant([this] { return holder.scene; }, false, holder.get()) {}

    scene::Scene* operator->() const { return holder.get(); }
    scene::Scene* get() const { return holder.get(); }

    // Adds an element under a parent (the root when null), as a user would.
    template <class T>
    T* add(T* element, SceneElement* parent = nullptr)
    {
        if (parent)
            parent->addChild(element);
        holder->addElement(element);
        return element;
    }

    SceneHolder holder;
    SceneProjectParticipant participant;
};

class SceneProjectTest : public ::testing::Test
{
protected:
    QString path(const QString& name) const { return directory.filePath(name); }

    // Writes the section as the host does: "project.xml" with <project><scene>, and the entries.
    void save(ProjectScene& scene, const QString& file)
    {
        ZTarFile tar(file);
        ASSERT_TRUE(tar.open(QIODevice::WriteOnly));
        QByteArray xml;
        QXmlStreamWriter writer(&xml);
        writer.setAutoFormatting(true);
        writer.writeStartDocument();
        writer.writeStartElement("project");
        writer.writeStartElement(scene.participant.sectionName());
        const bool abort = false;
        QString error;
        ASSERT_TRUE(scene.participant.save(&writer, &tar, abort, error)) << qPrintable(error);
        writer.writeEndDocument();
        ASSERT_TRUE(tar.addData(xml, "project.xml"));
        tar.close();
    }

    // A hand-made archive: the section's XML and entries of any content.
    void writeArchive(const QString& file, const QString& section, const std::map<QString, QByteArray>& entries = {})
    {
        ZTarFile tar(file);
        ASSERT_TRUE(tar.open(QIODevice::WriteOnly));
        for (const auto& entry : entries)
            ASSERT_TRUE(tar.addData(entry.second, entry.first));
        ASSERT_TRUE(tar.addData(("<project><scene>" + section + "</scene></project>").toUtf8(), "project.xml"));
        tar.close();
    }

    // Opens the section as the host does: load, then commit or discard.
    bool open(ProjectScene& scene, const QString& file, QString& error)
    {
        ZTarFile tar(file);
        if (!tar.open(QIODevice::ReadOnly))
            return false;
        std::unique_ptr<io::ZFile> xml(tar.getFile("project.xml"));
        if (!xml || !xml->open(QIODevice::ReadOnly))
            return false;
        QXmlStreamReader reader(xml->readAll());
        reader.readNextStartElement();
        reader.readNextStartElement();
        bool abort = false;
        const bool loaded = scene.participant.load(&reader, &tar, abort, error);
        if (loaded) {
            EXPECT_TRUE(reader.isEndElement() && reader.name() == QLatin1String("scene"));
            scene.participant.commit();
        } else {
            scene.participant.discard();
        }
        return loaded;
    }

    QTemporaryDir directory;
};

// Models with face colours under a clipping plane, one hidden, a selection plane, a moved
// model and a picked point.
void fillScene(ProjectScene& scene)
{
    SceneVCGModel* first = scene.add(new SceneVCGModel(cubeMesh(true), "first"));
    first->translate(10.0, -2.5, 1.0 / 3.0);
    first->rotate(0.0, 0.0, 1.0, 0.3);
    first->setOpacity(0.1);
    first->showBoundingBox(true);
    first->setModelColor(QColor(12, 34, 56));
    first->setWireframeEnabled(true);
    first->addFaceSelection(std::vector<unsigned int>{1, 4});
    ClippingPlane* plane = scene.add(new ClippingPlane);
    plane->setColoringEnabled(true);
    plane->translate(0.0, 0.0, 0.25);
    SceneVCGModel* hidden = scene.add(new SceneVCGModel(cubeMesh(false), "hidden"), plane);
    hidden->setVisible(false);
    scene.add(new SceneVCGModel(cubeMesh(false), "second"), plane);
    SceneSelectionPlane* selection = scene.add(new SceneSelectionPlane("cut"), plane);
    selection->setOpacity(0.5);
    scene->addSelectedPoint(SceneElement::Vector4(10.0, -2.0, 0.5, 1.0), first);
}

void expectSameMesh(const SceneVCGModel* saved, const SceneVCGModel* loaded)
{
    ASSERT_TRUE(loaded->getMeshModel());
    const scene::CMeshO& a = saved->getMeshModel()->cm;
    const scene::CMeshO& b = loaded->getMeshModel()->cm;
    EXPECT_FALSE(loaded->getMeshModel()->busy);
    ASSERT_EQ(a.vert.size(), b.vert.size());
    ASSERT_EQ(a.face.size(), b.face.size());
    EXPECT_EQ(a.vn, b.vn);
    EXPECT_EQ(a.fn, b.fn);
    for (std::size_t v = 0; v < a.vert.size(); ++v)
        EXPECT_EQ(a.vert[v].coord, b.vert[v].coord);
    EXPECT_EQ(a.face.isColorEnabled(), b.face.isColorEnabled());
    for (std::size_t f = 0; f < a.face.size(); ++f) {
        EXPECT_EQ(corners(a, f), corners(b, f));
        EXPECT_EQ(a.face[f].flags, b.face[f].flags);
        if (a.face.isColorEnabled()) {
            EXPECT_EQ(a.face.colors()[f], b.face.colors()[f]);
        }
    }
    EXPECT_TRUE(b.face.isFaceFaceEnabled());
    EXPECT_NE(nullptr, b.vert[0].vfFace);
}

void expectSameToSinglePrecision(const SceneElement::Matrix4& saved, const SceneElement::Matrix4& loaded)
{
    for (int i = 0; i < 16; ++i)
        EXPECT_EQ(static_cast<double>(static_cast<float>(saved[i])), loaded[i]) << i;
}

TEST_F(SceneProjectTest, SavedSceneOpensWithTreeLooksMeshesAndPoints)
{
    ProjectScene saved;
    fillScene(saved);
    save(saved, path("scene.qel"));

    ZTarFile tar(path("scene.qel"));
    ASSERT_TRUE(tar.open(QIODevice::ReadOnly));
    EXPECT_EQ(4, tar.getFileNames().size());

    ProjectScene opened;
    QString error;
    ASSERT_TRUE(open(opened, path("scene.qel"), error)) << qPrintable(error);
    EXPECT_EQ(treeOf(saved.get()), treeOf(opened.get()));
    EXPECT_EQ("Coordinatesystem:Coordinatesystem{SceneVCGModel:first,ClippingPlane:ClippingPlane{SceneVCGModel:hidden("
              "hidden),SceneVCGModel:second,SceneSelectionPlane:cut}}",
              treeOf(opened.get()));

    const auto first = find<SceneVCGModel>(opened.get(), "first");
    const auto savedFirst = find<SceneVCGModel>(saved.get(), "first");
    expectSameMesh(savedFirst.get(), first.get());
    expectSameMesh(find<SceneVCGModel>(saved.get(), "second").get(), find<SceneVCGModel>(opened.get(), "second").get());
    expectSameToSinglePrecision(savedFirst->getTransformMatrix(), first->getTransformMatrix());
    expectSameToSinglePrecision(savedFirst->getOrigin(), first->getOrigin());
    EXPECT_EQ(first->getTransformMatrix(), first->getFutureTransformMatrix());
    EXPECT_EQ(static_cast<double>(0.1f), first->getOpacity());
    EXPECT_TRUE(first->isBoundingBoxVisible());
    EXPECT_TRUE(first->isWireframeEnabled());
    EXPECT_EQ(QColor(12, 34, 56), first->getModelColor());
    // The face selection travels as the faces' marks and is rebuilt from them.
    EXPECT_TRUE(first->getMeshModel()->cm.face[1].hasFlag(scene::CFaceO::ELEMENT_SELECTED));
    EXPECT_TRUE(first->isFaceSelected());

    const auto plane = find<ClippingPlane>(opened.get(), "ClippingPlane");
    EXPECT_TRUE(plane->isColoringEnabled());
    EXPECT_EQ(0, plane->getPlaneNumber());
    EXPECT_EQ(QStringList({"hidden", "second"}), [&] {
        QStringList names;
        for (const SceneVCGModel* model : plane->getModels())
            names << model->getName();
        return names;
    }());
    EXPECT_EQ(0.5, find<SceneSelectionPlane>(opened.get(), "cut")->getOpacity());

    ASSERT_EQ(1u, opened->getSelectedPoints()->size());
    const scene::SelectedPoint* point = opened->getSelectedPoints()->front().get();
    const scene::SelectedPoint* savedPoint = saved->getSelectedPoints()->front().get();
    EXPECT_EQ(first.get(), point->getElement());
    for (int axis = 0; axis < 3; ++axis)
        EXPECT_NEAR(savedPoint->getPoint()[axis], point->getPoint()[axis], 1e-5);
}

TEST_F(SceneProjectTest, OpeningReplacesTheSceneWithNamesAndNumbersAsNew)
{
    ProjectScene saved;
    saved.add(new ClippingPlane);
    saved.add(new SceneVCGModel(cubeMesh(false), "model"));
    save(saved, path("planes.qel"));

    ProjectScene opened;
    opened.add(new ClippingPlane);
    opened.add(new ClippingPlane);
    opened.add(new SceneVCGModel(cubeMesh(false), "model"));
    QString error;
    ASSERT_TRUE(open(opened, path("planes.qel"), error)) << qPrintable(error);
    EXPECT_EQ((QStringList{"Coordinatesystem", "MultipleElementsSelection", "ClippingPlane", "model"}),
              namesOf(*opened->getElementList()));
    EXPECT_EQ(0, find<ClippingPlane>(opened.get(), "ClippingPlane")->getPlaneNumber());
    EXPECT_EQ(1, opened->findFreeClippingPlaneNumber());

    opened.participant.clear();
    EXPECT_EQ((QStringList{"Coordinatesystem", "MultipleElementsSelection"}), namesOf(*opened->getElementList()));
}

// Elements that aren't saved give their place to their saved descendants.
TEST_F(SceneProjectTest, DescendantsOfUnsavedElementsTakeTheirPlace)
{
    ProjectScene saved;
    Element group(new TestElement("group"));
    saved.add(group.get());
    saved.add(new SceneVCGModel(cubeMesh(false), "inner"), group.get());
    save(saved, path("group.qel"));

    ProjectScene opened;
    QString error;
    ASSERT_TRUE(open(opened, path("group.qel"), error)) << qPrintable(error);
    EXPECT_EQ("Coordinatesystem:Coordinatesystem{SceneVCGModel:inner}", treeOf(opened.get()));
}

TEST_F(SceneProjectTest, ChangesAreReportedButNotThoseOfOpening)
{
    io::ProjectManager* manager = io::ProjectManager::getInstance();
    ProjectScene scene;
    manager->setModified(false);
    SceneVCGModel* model = scene.add(new SceneVCGModel(cubeMesh(false), "model"));
    EXPECT_TRUE(manager->isModified());

    save(scene, path("changes.qel"));
    QString error;
    manager->setModified(false);
    ASSERT_TRUE(open(scene, path("changes.qel"), error)) << qPrintable(error);
    EXPECT_FALSE(manager->isModified());

    const auto loaded = find<SceneVCGModel>(scene.get(), "model");
    loaded->setModelColor(QColor(1, 2, 3));
    EXPECT_TRUE(manager->isModified());
    manager->setModified(false);
    loaded->translate(1.0, 2.0, 3.0);
    EXPECT_TRUE(manager->isModified());
    manager->setModified(false);
    scene->addSelectedPoint(SceneElement::Vector4(0.0, 0.0, 0.0, 1.0), loaded.get());
    EXPECT_TRUE(manager->isModified());
    manager->setModified(false);
    scene.participant.clear();
    EXPECT_FALSE(manager->isModified());
    (void)model;
}

// ---------------------------------------------------------------------------------------
// Bad input

QByteArray cubeEntry()
{
    std::unique_ptr<MeshModel> mesh(cubeMesh(false));
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadWrite);
    const bool abort = false;
    QString reason;
    scene::ModelEntry::write(mesh->cm, &buffer, abort, reason);
    return bytes;
}

QString modelSection(const QString& entry)
{
    return "<element type=\"SceneVCGModel\"><content><name>broken</name><filename>" + entry +
           "</filename></content></element>";
}

TEST_F(SceneProjectTest, BadSectionsAndEntriesAreRefusedAndTheSceneStays)
{
    const QByteArray good = cubeEntry();
    QByteArray outOfRange = good;
    outOfRange[8 + 52 * 8 + 40 * 3] = 8;
    const QString entry = "models/broken.qelmodel";
    struct Case
    {
        const char* what;
        QString section;
        std::map<QString, QByteArray> entries;
        QString errorPart;
    };
    const Case cases[] = {
        {"missing entry", modelSection(entry), {}, "Could find file models/broken.qelmodel in project file"},
        {"truncated entry", modelSection(entry), {{entry, good.left(good.size() - 7)}}, "truncated"},
        {"face index out of range", modelSection(entry), {{entry, outOfRange}}, "face 3 refers to vertex 8 of 8"},
        {"colour block of the wrong size", modelSection(entry), {{entry, good + QByteArray(3, 'c')}}, "colour block"},
        {"element without type", "<element><content><name>x</name></content></element>", {}, "has no type"},
        {"broken XML", "<element type=\"ClippingPlane\"><content><name>x</content></element>", {}, "malformed"},
        {"point without numbers", "<points><point x=\"nan\" y=\"1\" z=\"2\" referencename=\"a\"/></points>", {},
         "picked point"},
    };
    for (const Case& c : cases) {
        ProjectScene live;
        fillScene(live);
        const QString before = treeOf(live.get());
        const auto model = find<SceneVCGModel>(live.get(), "first");
        const MeshModel* mesh = model->getMeshModel();
        const QString file = path(QString("bad%1.qel").arg(&c - cases));
        writeArchive(file, c.section, c.entries);

        LogCapture log;
        QString error;
        EXPECT_FALSE(open(live, file, error)) << c.what;
        EXPECT_TRUE(error.contains(c.errorPart)) << c.what << ": " << qPrintable(error);
        EXPECT_EQ(1, log.count(error, 1000)) << c.what;
        EXPECT_EQ(before, treeOf(live.get())) << c.what;
        EXPECT_EQ(mesh, model->getMeshModel()) << c.what;
        EXPECT_EQ(1u, live->getSelectedPoints()->size()) << c.what;
    }
}

TEST_F(SceneProjectTest, RefusalsOfModelEntriesNameTheProjectAndTheEntry)
{
    const QString entry = "models/broken.qelmodel";
    writeArchive(path("named.qel"), modelSection(entry), {{entry, cubeEntry().left(20)}});
    ProjectScene live;
    QString error;
    EXPECT_FALSE(open(live, path("named.qel"), error));
    EXPECT_TRUE(error.contains(path("named.qel"))) << qPrintable(error);
    EXPECT_TRUE(error.contains(entry)) << qPrintable(error);
}

TEST_F(SceneProjectTest, UnknownTypesAreSkippedWithAWarningAndTheirChildrenKept)
{
    writeArchive(path("unknown.qel"),
                 "<element type=\"Hologram\"><content><name>ghost</name></content><children>"
                 "<element type=\"SceneSelectionPlane\"><content><name>kept</name><visible>0</visible></content>"
                 "</element></children></element>"
                 "<element type=\"ClippingPlane\"><content><name>after</name><extra><deep/></extra></content>"
                 "</element><unknownpart/>");
    ProjectScene opened;
    LogCapture log;
    QString error;
    ASSERT_TRUE(open(opened, path("unknown.qel"), error)) << qPrintable(error);
    EXPECT_EQ(1, log.count("Unknown element type 'Hologram'", 2000));
    EXPECT_EQ("Coordinatesystem:Coordinatesystem{SceneSelectionPlane:kept(hidden),ClippingPlane:after}",
              treeOf(opened.get()));
}

} // namespace
} // namespace test
} // namespace qel
