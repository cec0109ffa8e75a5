#pragma once

#include "kernel/io/projectparticipant.h"
#include "kernel/util/zpointer.h"
#include "module_scene/sceneelement.h"

#include <QByteArray>
#include <QCoreApplication>
#include <functional>
#include <memory>
#include <vector>

namespace qel {
namespace scene {

class Scene;
class SceneChangeWatcher;

// The scene's section of a project, "scene":
//
//   <scene>
//     <element type="TYPENAME">            one per serialisable element, in tree order
//       <content>...</content>             what the element's saveTo writes
//       <children><element .../>...</children>   its serialisable descendants, in child order
//     </element>
//     <points><point .../>...</points>     the picked points
//     <views><window>...</window>...</views>   the cameras of the open scene windows
//   </scene>
//
// An element that isn't serialisable is left out and its serialisable descendants take
// its place. Opening stages new elements apart from the scene; commit empties the scene and
// adds them through its normal operations, so that names, numbers and events come as if a
// user had made them.
class SceneProjectParticipant : public io::ProjectParticipant
{
    Q_DECLARE_TR_FUNCTIONS(qel::scene::SceneProjectParticipant)

public:
    typedef std::function<util::ZPointer<Scene>()> SceneSource;

    // The scene comes from the source at each call. With views, the cameras of the viewer's
    // scene windows are saved and restored; the changes of the source's scene (of any
    // scene without a watched one) are reported to the project manager.
    SceneProjectParticipant(const SceneSource& source, bool withViews, Scene* watchedScene = nullptr);
    ~SceneProjectParticipant() override;
    SceneProjectParticipant(const SceneProjectParticipant&) = delete;
    SceneProjectParticipant& operator=(const SceneProjectParticipant&) = delete;

    QString sectionName() const override;
    bool save(QXmlStreamWriter* writer, io::ZTarFile* tar, const bool& abort, QString& error) override;
    bool load(QXmlStreamReader* reader, io::ZTarFile* tar, bool& abort, QString& error) override;
    void commit() override;
    void discard() override;
    void clear() override;

private:
    struct Node
    {
        SceneElement::Pointer element;
        std::vector<Node> children;
    };
    typedef std::vector<Node> Nodes;

    // Saving.
    Nodes collectTree(Scene* scene) const;
    static void collectChildren(const SceneElement* parent, const SceneElement* skipped, Nodes& into);
    bool writeNodes(const Nodes& nodes, QXmlStreamWriter* writer, io::ZTarFile* tar, const bool& abort,
                    QString& error) const;
    static bool checkModelEntry(const SceneElement* element, const io::ZTarFile* tar, QString& error);
    static void writePoints(Scene* scene, QXmlStreamWriter* writer, const bool& abort);
    void writeViews(QXmlStreamWriter* writer) const;

    // Opening.
    bool readSection(QXmlStreamReader* reader, io::ZTarFile* tar, Scene* scene, bool& abort, QString& error);
    bool readElement(QXmlStreamReader* reader, io::ZTarFile* tar, Scene* scene, bool& abort, Nodes& into,
                     QString& error);
    bool readContent(QXmlStreamReader* reader, io::ZTarFile* tar, Scene* scene, SceneElement* element, bool& abort,
                     QString& error);
    bool readPoints(QXmlStreamReader* reader, QString& error);
    bool readViews(QXmlStreamReader* reader);
    void addNode(Scene* scene, SceneElement* parent, const Node& node) const;
    void restorePoints(Scene* scene) const;
    void restoreViews() const;

    SceneSource source;
    bool withViews;
    std::unique_ptr<SceneChangeWatcher> watcher;

    // The staged state of an opened section.
    Nodes stagedElements;
    std::vector<QByteArray> stagedPoints;
    std::vector<QByteArray> stagedViews;
};

} // namespace scene
} // namespace qel
