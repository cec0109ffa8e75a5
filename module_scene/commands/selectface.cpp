#include "module_scene/commands/selectface.h"

#include "kernel/log/logger.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/overseer.h"
#include "module_scene/commands/commandparameters.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/mesh/facelinks.h"
#include "module_scene/meshmodel.h"
#include "module_scene/modulescenefactory.h"
#include "module_scene/scene.h"
#include "module_scene/sceneselectionplane.h"
#include "module_scene/scenesphere.h"
#include "module_scene/scenevcgmodel.h"
#include "module_scene/selectedpoint.h"

#include <QGuiApplication>
#include <QIcon>
#include <QMessageLogger>
#include <QObject>
#include <QStringList>
#include <boost/bind/bind.hpp>
#include <memory>
#include <typeinfo>

namespace qel {
namespace commands {
namespace scene {

namespace {

using qel::scene::CFaceO;
using qel::scene::SceneElement;
using qel::scene::SceneVCGModel;

const char* const LogFile = "module_scene/commands/selectface";
const char* const ExecuteFunction = "qel::commands::scene::SelectFace::execute";
const char* const FilterFunction = "qel::commands::scene::SelectFace::filterFaces";
const QString BoundingBoxType = QStringLiteral("BoundingBox");

bool isModel(const SceneElement* element)
{
    return element && element->getTypeName() == SceneVCGModel::TypeName;
}

std::size_t faceCountOf(const SceneVCGModel* model)
{
    return model->getMeshModel() ? model->getMeshModel()->cm.face.size() : 0;
}

// Faces of one model as marks by place.
typedef std::vector<bool> FaceMarks;

FaceMarks marksOf(const std::vector<unsigned int>& places, std::size_t faceCount)
{
    FaceMarks marks(faceCount, false);
    for (unsigned int place : places) {
        if (place < faceCount)
            marks[place] = true;
    }
    return marks;
}

// The connected patch of candidates around the seed, through the face-face adjacency (the
// seed alone without it). Iterative, so that a patch of millions of faces is no danger to
// the stack.
FaceMarks floodFill(const SceneVCGModel* model, std::size_t seed, const FaceMarks& candidates)
{
    const qel::scene::FaceVector& faces = model->getMeshModel()->cm.face;
    const bool linked = faces.isFaceFaceEnabled();
    FaceMarks visited(faces.size(), false);
    std::vector<std::size_t> pending{seed};
    while (!pending.empty()) {
        const std::size_t place = pending.back();
        pending.pop_back();
        if (place >= faces.size() || faces[place].isDeleted() || visited[place] || !candidates[place])
            continue;
        visited[place] = true;
        if (!linked)
            continue;
        // Edge 0 is taken up first.
        const qel::scene::FaceLinks& links = faces.faceFaceLinks()[place];
        for (int edge = 2; edge >= 0; --edge) {
            if (links.face[edge])
                pending.push_back(static_cast<std::size_t>(links.face[edge] - faces.data()));
        }
    }
    return visited;
}

void appendPlaces(const FaceMarks& marks, std::vector<unsigned int>& places)
{
    for (std::size_t place = 0; place < marks.size(); ++place) {
        if (marks[place])
            places.push_back(static_cast<unsigned int>(place));
    }
}

// The face a selected point lies on: its own face index, or the first face that a ray from
// the point towards the model's position meets.
bool seedOf(const qel::scene::SelectedPoint* point, SceneVCGModel* model, std::size_t& seed)
{
    const uint64_t index = point->getAssociatedFaceIndex();
    if (index != qel::scene::SelectedPoint::NoFace) {
        if (index < faceCountOf(model)) {
            seed = static_cast<std::size_t>(index);
            return true;
        }
        log::Logger::log(2000, LogFile, 298, FilterFunction, nullptr, "Index of face overflows size.");
        return false;
    }
    const SceneElement::Matrix4 complete = model->getCompleteTransformMatrix();
    const SceneVCGModel::Line line{point->getPoint() * model->getScalingFactor(),
                                   SceneVCGModel::Point(complete[12], complete[13], complete[14])};
    const CFaceO* face = nullptr;
    SceneVCGModel::Point hit;
    double distance = 0.0;
    if (!model->intersect(line, &face, hit, distance, false) || !face) {
        log::Logger::log(2000, LogFile, 311, FilterFunction, nullptr, "Could not find intersecting face.");
        return false;
    }
    seed = static_cast<std::size_t>(face - model->getMeshModel()->cm.face.data());
    return true;
}

// The value goes in as it stands, without text: only a parameter of the very type takes it.
template <class T>
void writeValue(main::AbstractParameter* parameter, const T& value)
{
    if (parameter->getTypeInfo() != typeid(T)) {
        QMessageLogger().critical("Invalid type! (%s <-> %s)", parameter->getTypeInfo().name(), typeid(T).name());
        return;
    }
    parameter->setValuePointer(new T(value));
}

} // namespace

const char* const SelectFace::CommandName = "selectface";

bool SelectFace::m_Registered =
    qel::scene::ModuleSceneFactory::getInstance()->registerPrimaryCommand(&SelectFace::create);

main::Command* SelectFace::create()
{
    return new SelectFace;
}

QString SelectFace::buildCommandString(const QString& model, const std::vector<unsigned int>& faces,
                                       unsigned int mode)
{
    QStringList places;
    for (unsigned int place : faces)
        places.append(QString::number(place));
    return QString("%1(%2,[").arg(CommandName, model) + places.join(",") + "]" + QString(",%1)").arg(mode);
}

SelectFace::SelectFace()
    : SceneCommand(new main::CommandDescriptor(CommandName, QObject::tr("Selects a face of a model")),
                   new main::CommandGUIDescriptor(main::CommandGUIDescriptor::CONTEXTMENU, "scenetree", 300,
                                                  QObject::tr("Select faces"), QObject::tr("Select faces"),
                                                  new QIcon(":/module_scene/image/selectface.png")))
{
    enableCloning<SelectFace>();
    auto* single = new main::ParameterSet(0, QObject::tr("Select a face"));
    single->addParameter(new main::Parameter<QString>("name", QObject::tr("Element name")));
    single->addParameter(new main::Parameter<unsigned int>("index", QObject::tr("Index of the face to select")));
    addParameterSet(single);
    auto* list = new main::ParameterSet(1, QObject::tr("Select faces"));
    list->addParameter(new main::Parameter<QString>("name", QObject::tr("Element name")));
    list->addParameter(new main::Parameter<std::vector<unsigned int>>(
        "indices", QObject::tr("Indices of the faces to (un-)select")));
    list->addParameter(new main::Parameter<unsigned int>("mode", QObject::tr("0=toggle, 1=select, 2=unselect")));
    addParameterSet(list);

    addGUIDescriptor(new main::CommandGUIDescriptor(main::CommandGUIDescriptor::CONTEXTMENU, "scenetree", 301,
                                                    QObject::tr("Unselect faces"), QObject::tr("Unselect faces"),
                                                    new QIcon(":/module_scene/image/selectface.png")));
    using namespace boost::placeholders;
    const std::vector<main::CommandGUIDescriptor*> entries = getGUIDescriptors();
    entries[0]->setGUIOpenFunction(boost::bind(&SelectFace::useSelectedElementForSelect, this, _1, _2));
    entries[1]->setGUIOpenFunction(boost::bind(&SelectFace::useSelectedElementForUnselect, this, _1, _2));
}

SelectFace::~SelectFace() = default;

void SelectFace::execute()
{
    LocalParameter<QString> name;
    LocalParameter<unsigned int> index;
    LocalParameter<std::vector<unsigned int>> indices;
    LocalParameter<unsigned int> mode;
    std::vector<unsigned int> faces;
    unsigned int chosenMode = MODE_TOGGLE;
    bool solved = false;
    if (selectedID == 0) {
        solved = solveParameters(typeSolver, selectedParameterSet, {&name, &index});
        if (solved)
            faces.push_back(*index);
    } else if (selectedID == 1) {
        solved = solveParameters(typeSolver, selectedParameterSet, {&name, &indices, &mode});
        if (solved) {
            faces = *indices;
            chosenMode = *mode;
        }
    } else {
        log::Logger::log(2000, LogFile, 187, ExecuteFunction, nullptr, "Invalid parameterset specified!");
        return;
    }
    if (!solved) {
        log::Logger::log(2000, LogFile, 192, ExecuteFunction, nullptr, QObject::tr("Parameter failure"));
        return;
    }
    const SceneElement::Pointer element = qel::scene::_GlobalScene()->getSceneElement(*name);
    if (element.isNull()) {
        log::Logger::log(2000, LogFile, 198, ExecuteFunction, nullptr, "Sceneelement '%s' was not found",
                         qPrintable(*name));
        return;
    }
    if (!isModel(element.get())) {
        log::Logger::log(2000, LogFile, 203, ExecuteFunction, nullptr, "Sceneelement is not a model");
        return;
    }
    applyTo(static_cast<SceneVCGModel*>(element.get()), faces, chosenMode);
}

void SelectFace::applyTo(SceneVCGModel* model, const std::vector<unsigned int>& faces, unsigned int mode) const
{
    switch (mode) {
    case MODE_TOGGLE:
        model->toggleFaceSelection(faces);
        break;
    case MODE_SELECT:
        model->addFaceSelection(faces);
        break;
    case MODE_UNSELECT:
        model->removeFaceSelection(faces);
        break;
    default:
        log::Logger::log(2000, LogFile, 220, ExecuteFunction, nullptr, "Invalid mode");
        break;
    }
}

void SelectFace::focusChanged()
{
    const QString type = mp_Element ? mp_Element->getTypeName() : QString();
    const bool body = mp_Element
                      && (type == BoundingBoxType || type == qel::scene::SceneSphere::TypeName
                          || type == qel::scene::SceneSelectionPlane::TypeName);
    for (main::CommandGUIDescriptor* descriptor : getGUIDescriptors())
        descriptor->enableQAction(body);
}

void SelectFace::useSelectedElementForSelect(QAction*, main::CommandGUIDescriptor*)
{
    useSelectedElement(MODE_SELECT, "qel::commands::scene::SelectFace::useSelectedElementForSelect");
}

void SelectFace::useSelectedElementForUnselect(QAction*, main::CommandGUIDescriptor*)
{
    useSelectedElement(MODE_UNSELECT, "qel::commands::scene::SelectFace::useSelectedElementForUnselect");
}

void SelectFace::useSelectedElement(unsigned int mode, const char* function)
{
    if (!mp_Element)
        return;
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    std::map<SceneElement::Pointer, std::vector<unsigned int>> found;
    if (auto* sphere = dynamic_cast<qel::scene::SceneSphere*>(mp_Element)) {
        found = sphere->getFacesInside();
    } else if (auto* plane = dynamic_cast<qel::scene::SceneSelectionPlane*>(mp_Element)) {
        found = plane->getFacesAbove();
    } else if (mp_Element->getTypeName() == BoundingBoxType) {
        log::Logger::log(2000, LogFile, 262, function, nullptr, "BoundingBox selection is not (yet) available!");
    }
    FaceMap faces;
    for (auto& entry : found)
        faces[entry.first.get()].swap(entry.second);
    filterFaces(faces);
    if (!faces.empty())
        executeFaces(faces, mode);
    QGuiApplication::restoreOverrideCursor();
}

void SelectFace::filterFaces(FaceMap& faces)
{
    qel::scene::Scene::PointList* points = qel::scene::_GlobalScene()->getSelectedPoints();
    if (points->empty())
        return;
    std::map<const SceneElement*, FaceMarks> candidates;
    for (auto& entry : faces) {
        if (!isModel(entry.first))
            continue;
        candidates[entry.first] = marksOf(entry.second, faceCountOf(static_cast<SceneVCGModel*>(entry.first)));
        entry.second.clear();
    }
    for (const qel::scene::Scene::PointPointer& point : *points) {
        const auto entry = faces.find(point->getElement());
        if (entry == faces.end() || !isModel(entry->first))
            continue;
        auto* model = static_cast<SceneVCGModel*>(entry->first);
        std::size_t seed = 0;
        if (!seedOf(point.get(), model, seed))
            continue;
        const auto modelCandidates = candidates.find(model);
        if (modelCandidates == candidates.end()) {
            log::Logger::log(2000, LogFile, 322, FilterFunction, nullptr, "Could not find faceset for given model");
            continue;
        }
        if (!modelCandidates->second[seed])
            continue;
        appendPlaces(floodFill(model, seed, modelCandidates->second), entry->second);
    }
}

void SelectFace::executeFaces(const FaceMap& faces, unsigned int mode) const
{
    main::CommandProcessor* processor = main::Overseer::getInstance()->getCommandProcessor();
    for (const auto& entry : faces) {
        if (entry.second.empty())
            continue;
        const QString name = entry.first->getName();
        if (processor->isRecording())
            processor->getMacroRecorder()->add(buildCommandString(name, entry.second, mode));
        std::unique_ptr<main::Command> command(clone());
        if (!command)
            continue;
        main::ParameterSet* set = command->getParameterSetByID(1);
        command->setExecutionMode(main::Command::EXECUTE_APPLICATIONTHREAD);
        command->setDone(true);
        command->setSelectedID(1);
        command->setSelectedParameterSet(set);
        setParameterValues(set, name, entry.second, mode);
        processor->processCommand(command.release(), main::Command::EXECUTE_APPLICATIONTHREAD, false);
    }
}

void SelectFace::setParameterValues(main::ParameterSet* set, const QString& model,
                                    const std::vector<unsigned int>& faces, unsigned int mode) const
{
    writeValue(set->getParameter(0), model);
    writeValue(set->getParameter(1), faces);
    writeValue(set->getParameter(2), mode);
}

} // namespace scene
} // namespace commands
} // namespace qel
