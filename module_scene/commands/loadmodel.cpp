#include "module_scene/commands/loadmodel.h"

#include "kernel/gui/fileparameterpanelfactory.h"
#include "kernel/log/logger.h"
#include "kernel/main/commandprocessor.h"
#include "kernel/main/event.h"
#include "kernel/main/eventmanager.h"
#include "kernel/main/overseer.h"
#include "kernel/main/parameter.h"
#include "kernel/main/qstringvectorcastclass.h"
#include "module_scene/commands/commandparameters.h"
#include "module_scene/gui/viewer.h"
#include "module_scene/io/importer.h"
#include "module_scene/io/loader.h"
#include "module_scene/meshmodel.h"
#include "module_scene/modulescenefactory.h"
#include "module_scene/scene.h"
#include "module_scene/scenelocker.h"
#include "module_scene/sceneevents.h"
#include "module_scene/scenevcgmodel.h"

#include <QAction>
#include <QCheckBox>
#include <QCoreApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QGridLayout>
#include <QIcon>
#include <QMessageBox>
#include <QSettings>
#include <QThread>
#include <boost/bind/bind.hpp>
#include <cmath>
#include <stdexcept>

namespace qel {
namespace commands {
namespace scene {

namespace {

typedef math::Vector<double, 3> Vector3;
typedef math::Vector<double, 4> Vector4;
typedef qel::scene::SceneElement::Matrix4 Matrix4;
typedef LoadModel::Box Box;

const char* const LogFile = "module_scene/commands/loadmodel";
const char* const ExecuteFunction = "qel::commands::scene::LoadModel::execute";
const char* const DirectorySetting = "settings/modeldirectory";
const char* const InPlaceProperty = "in-place-widget";

// The parameter at a place of the set, with the bounds checked.
main::AbstractParameter* parameterAt(const main::ParameterSet* set, std::size_t place)
{
    if (place >= set->size())
        throw std::out_of_range("invalid deque<T> subscript");
    return set->getParameter(place);
}

template <class T>
bool solveAt(const main::TypeSolver& solver, const main::ParameterSet* set, std::size_t place, T& value)
{
    LocalParameter<T> local;
    if (!solver.solve(&local, parameterAt(set, place)))
        return false;
    value = *local;
    return true;
}

// Multiplies the translation of the matrix by the factor; w becomes 1.
Matrix4 withScaledTranslation(Matrix4 matrix, double factor)
{
    for (int row = 0; row < 3; ++row)
        matrix(row, 3) *= factor;
    matrix(3, 3) = 1.0;
    return matrix;
}

// --- Oriented box overlap -----------------------------------------------------------------

Vector3 snapped(Vector3 vector)
{
    for (int i = 0; i < 3; ++i)
        vector[i] = math::snap(vector[i]);
    return vector;
}

Vector3 pointOf(const Vector4& point)
{
    return Vector3(point.x(), point.y(), point.z());
}

// The unit normal of the plane through three corners of the box.
Vector3 planeNormal(const Box& box, int first, int second, int third)
{
    const Vector3 origin = pointOf(box.corners[first]);
    const Vector3 edge1 = snapped(pointOf(box.corners[second]) - origin);
    const Vector3 edge2 = snapped(pointOf(box.corners[third]) - origin);
    return snapped(edge1.cross(edge2)).getNormalized();
}

struct OrientedBox
{
    Vector3 center;
    Vector3 axes[3];
    double halfExtents[3];
};

// The axes are the box's z, y and x axis, in this order, while the half extents run x, y, z:
// the first and the last axis get each other's extent. Placement depends on it as it is.
OrientedBox orientedBox(const Box& box)
{
    return OrientedBox{pointOf(box.center),
                       {planeNormal(box, 0, 1, 3), planeNormal(box, 5, 6, 0), planeNormal(box, 0, 6, 1)},
                       {box.size.x() / 2.0, box.size.y() / 2.0, box.size.z() / 2.0}};
}

double projectedRadius(const OrientedBox& box, const Vector3& axis)
{
    double radius = 0.0;
    for (int i = 0; i < 3; ++i)
        radius += std::fabs(box.halfExtents[i] * box.axes[i].dot(axis));
    return radius;
}

bool separates(const OrientedBox& first, const OrientedBox& second, const Vector3& between, const Vector3& axis)
{
    return std::fabs(between.dot(axis)) > projectedRadius(first, axis) + projectedRadius(second, axis);
}

} // namespace

const char* const LoadModel::CommandName = "loadmodel";

bool LoadModel::m_registered =
    qel::scene::ModuleSceneFactory::getInstance()->registerPrimaryCommand(&LoadModel::create);

main::Command* LoadModel::create()
{
    return new LoadModel;
}

LoadModel::LoadModel()
    : QObject(nullptr),
      Command(new main::CommandDescriptor(CommandName, tr("Loads a Model")), nullptr),
      filePanelFactory(std::make_shared<main::FileParameterPanelFactory>(&LoadModel::createDialog)),
      fileListCast(new main::QStringVectorCastClass)
{
    enableCloning<LoadModel>();

    auto* named = new main::ParameterSet(0, tr("Load a model under a name"));
    named->addParameter(
        new main::Parameter<QString>(tr("Filename"), tr("File to load"), QString(), true, filePanelFactory.get()));
    named->addParameter(new main::Parameter<QString>(tr("Naming"), tr("A name to represent the loaded file")));
    addParameterSet(named);

    auto* listed = new main::ParameterSet(1, tr("Load several models"));
    auto* files = new main::Parameter<std::vector<QString>>(tr("Filename"), tr("File to load"));
    files->setCastClass(fileListCast.get());
    listed->addParameter(files);
    addParameterSet(listed);

    // The third parameter only gives the set a third place, to tell it from the named set.
    auto* placed = new main::ParameterSet(2, tr("Load a model, in place or not"));
    placed->addParameter(new main::Parameter<QString>(tr("Filename"), tr("File to load")));
    placed->addParameter(new main::Parameter<bool>(tr("In-Place"), tr("If selected the model won't be repositioned.")));
    placed->addParameter(new main::Parameter<QString>(tr("dummy"), tr("noDesc")));
    addParameterSet(placed);

    QCoreApplication* application = QCoreApplication::instance();
    if (application && QThread::currentThread() == application->thread()) {
        using namespace boost::placeholders;
        const main::CommandGUIDescriptor::GUIOpenFunction open = boost::bind(&LoadModel::showGUIWindow, this, _1, _2);
        auto* menuEntry = new main::CommandGUIDescriptor(main::CommandGUIDescriptor::MAINMENU, "File", 0,
                                                         tr("Load model"), tr("Load model"),
                                                         new QIcon(":/image/fileopen.png"));
        menuEntry->setShortcut(QKeySequence(Qt::CTRL + Qt::Key_L));
        menuEntry->setGUIOpenFunction(open);
        addGUIDescriptor(menuEntry);
        auto* extraEntry = new main::CommandGUIDescriptor(main::CommandGUIDescriptor::EXTRA, QString(), 0,
                                                          tr("Load model"), tr("Load model"),
                                                          new QIcon(":/image/fileopen.png"));
        extraEntry->setGUIOpenFunction(open);
        addGUIDescriptor(extraEntry);
    }

    using namespace boost::placeholders;
    main::EventManager* events = main::EventManager::getInstance();
    for (unsigned long id : {qel::scene::SCENE_STRUCTURE_LOCKED, qel::scene::SCENE_STRUCTURE_UNLOCKED}) {
        events->registerEventFunction(
            id, new main::EventManager::EventFunction(boost::bind(&LoadModel::structureLockChanged, this, _1)), this);
    }
}

// A working copy: it shares the dialog factory and the cast class and follows no event.
LoadModel::LoadModel(const LoadModel& other)
    : QObject(nullptr),
      Command(other),
      filePanelFactory(other.filePanelFactory),
      fileListCast(other.fileListCast)
{
}

LoadModel::~LoadModel()
{
    main::EventManager::getInstance()->unregisterAllEventFunctionsOf(this);
}

void LoadModel::structureLockChanged(const main::Event* event)
{
    if (event->getData())
        disableCommand(*static_cast<const bool*>(event->getData()));
}

void LoadModel::abort()
{
    Command::abort();
    emit abortLoading();
}

void LoadModel::updateProgress(int value, QString text)
{
    updateProcessed(value);
    if (text == lastProgressText)
        return;
    updateText(text);
    lastProgressText = text;
}

// ---------------------------------------------------------------------------------------
// Dialog

QFileDialog* LoadModel::createDialog()
{
    const std::map<QString, QString>* loadable = io::scene::Importer::getInstance()->getLoadableFiles();
    if (loadable->empty())
        log::Logger::log(2000, LogFile, 132, "qel::commands::scene::LoadModel::createDialog", nullptr,
                         "There are no import filters available!");
    QStringList patterns;
    for (const auto& entry : *loadable)
        patterns << "*." + entry.first.toLower();
    QStringList filters;
    filters << tr("All known types") + " (" + patterns.join(' ') + ")";
    for (const auto& entry : *loadable)
        filters << entry.second + " (*." + entry.first.toLower() + ")";

    auto* dialog = new QFileDialog(nullptr, QString(), QString(), QString());
    dialog->setOption(QFileDialog::DontUseNativeDialog, true);
    dialog->setFileMode(QFileDialog::ExistingFiles);
    QSettings* settings = main::Overseer::getInstance()->getQSettings();
    dialog->setDirectory(settings->value(DirectorySetting, main::Overseer::homeDirPath()).toString());
    dialog->setNameFilters(filters);

    auto* inPlace = new QCheckBox(tr("Load in-place"), dialog);
    inPlace->setToolTip(tr("If checked the model won't be repositioned."));
    if (auto* grid = qobject_cast<QGridLayout*>(dialog->layout()))
        grid->addWidget(inPlace, 5, 1);
    dialog->setProperty(InPlaceProperty, QVariant::fromValue<QObject*>(inPlace));
    return dialog;
}

// One command per chosen file, so that each is recorded and can be undone on its own.
void LoadModel::showGUIWindow(QAction*, main::CommandGUIDescriptor* descriptor)
{
    QFileDialog* dialog = createDialog();
    dialog->setWindowTitle(descriptor->getNameOnGUI());
    if (dialog->exec() != QDialog::Accepted) {
        delete dialog;
        return;
    }
    const auto* inPlace = qobject_cast<QCheckBox*>(dialog->property(InPlaceProperty).value<QObject*>());
    const bool loadInPlace = inPlace && inPlace->isChecked();
    main::Overseer* overseer = main::Overseer::getInstance();
    overseer->getQSettings()->setValue(DirectorySetting, dialog->directory().absolutePath());
    for (const QString& file : dialog->selectedFiles())
        overseer->executeNativeCommand(QString("%1(%2,%3,inplace)").arg(CommandName, file).arg(loadInPlace ? 1 : 0));
    delete dialog;
}

// ---------------------------------------------------------------------------------------
// Loading

void LoadModel::execute()
{
    lastProgressText.clear();
    std::vector<QString> files;
    QString name;
    bool inPlace = false;
    if (!readParameters(files, name, inPlace))
        return;
    // A script may run while something holds the scene's structure (an alignment, say):
    // the menu entry is disabled then, and the string is refused here.
    if (qel::scene::_GlobalScene()->isStructureLocked()) {
        log::Logger::log(2000, LogFile, 290, ExecuteFunction, nullptr,
                         tr("The scene's structure is locked: no model can be loaded now"));
        return;
    }
    for (const QString& file : files) {
        if (file.isEmpty())
            continue;
        if (!loadFile(file, name, inPlace))
            return;
    }
    qel::scene::_GlobalScene()->triggerUpdate();
}

// Set 1 carries no in-place flag, yet its second place is read: the list form always ends
// here with an out-of-range error and loads nothing.
bool LoadModel::readParameters(std::vector<QString>& files, QString& name, bool& inPlace)
{
    const main::ParameterSet* set = selectedParameterSet;
    if (!set || set->size() == 0)
        return true;
    QString file;
    bool solved = false;
    switch (selectedID) {
    case 0:
        solved = solveAt(typeSolver, set, 0, file) && solveAt(typeSolver, set, 1, name);
        files.push_back(file);
        break;
    case 1:
        solved = solveAt(typeSolver, set, 0, files) && solveAt(typeSolver, set, 1, inPlace);
        break;
    case 2:
        solved = solveAt(typeSolver, set, 0, file) && solveAt(typeSolver, set, 1, inPlace);
        files.push_back(file);
        break;
    default:
        log::Logger::log(2000, LogFile, 236, ExecuteFunction, nullptr, tr("wrong ParameterSet"));
        return false;
    }
    if (!solved)
        log::Logger::log(2000, LogFile, 228, ExecuteFunction, nullptr, tr("Parameter failure"));
    return solved;
}

// The given name goes to the first model only.
bool LoadModel::loadFile(const QString& file, QString& name, bool inPlace)
{
    std::unique_ptr<io::scene::Loader> loader(loaderFor(file));
    if (!loader) {
        log::Logger::log(2000, LogFile, __LINE__, ExecuteFunction, nullptr,
                         tr("Could not load mesh from file '%1'").arg(file) + ": " + tr("no reader knows its type"));
        return true;
    }
    if (isAborted())
        loader->abortLoading();
    connect(loader.get(), &io::scene::Loader::progressChanged, this, &LoadModel::updateProgress,
            Qt::DirectConnection);
    connect(this, &LoadModel::abortLoading, loader.get(), &io::scene::Loader::abortLoading, Qt::DirectConnection);
    const bool goOn = selectedID != 1 || checkBeforeLoading(loader.get(), file);
    if (goOn) {
        // A loader that fails has logged why, naming the file: one line says it all.
        qel::scene::MeshModel* mesh = loader->loadMesh(file);
        if (mesh) {
            if (name.isEmpty())
                name = QFileInfo(file).baseName();
            auto* model = new qel::scene::SceneVCGModel(mesh, name);
            model->setPreSetCenter(Vector3(loader->getPreSetCenter()));
            name.clear();
            addModelToScene(model, inPlace);
            if (gui::Viewer::getInstance()->getNumberOfSceneWindows() == 0)
                openSceneView();
        }
    }
    loader->disconnect();
    disconnect(this, nullptr, loader.get(), nullptr);
    return goOn;
}

// Types that no plug-in registered are read by their last suffix or recognised by their
// content, so that no file is passed over in silence.
io::scene::Loader* LoadModel::loaderFor(const QString& file)
{
    io::scene::Importer* importer = io::scene::Importer::getInstance();
    io::scene::Loader* loader = importer->getLoader(file);
    return loader ? loader : importer->getFallbackLoader(file);
}

// False when the user (or an abort) ends the command.
bool LoadModel::checkBeforeLoading(io::scene::Loader* loader, const QString& file)
{
    if (loader->checkFile(file))
        return true;
    if (isAborted() || askUserToAbort(file)) {
        log::Logger::log(2000, LogFile, 263, ExecuteFunction, nullptr, tr("Loading aborted"));
        return false;
    }
    return true;
}

bool LoadModel::askUserToAbort(const QString& file)
{
    auto* worker = new AskWorker(file);
    worker->setWait(true);
    worker->setDontDeleteMySelf(true);
    main::Overseer::getInstance()->transmitWorker(worker);
    worker->wait();
    const bool abortLoading = worker->getAnswer();
    delete worker;
    return abortLoading;
}

void LoadModel::AskWorker::run()
{
    const QMessageBox::StandardButton button =
        QMessageBox::question(nullptr, tr("Load Model"),
                              tr("Continue loading?\n(Look at the console for more information.)"),
                              QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes);
    answer = button == QMessageBox::No;
}

// The view command may not be registered: then there is nothing to open.
void LoadModel::openSceneView()
{
    main::Overseer* overseer = main::Overseer::getInstance();
    if (overseer->getCommandProcessor()->getCommand("viewscene"))
        overseer->executeCommand("viewscene", main::Command::EXECUTE_SYNCHRONOUS, false);
}

// ---------------------------------------------------------------------------------------
// Placement

void LoadModel::addModelToScene(qel::scene::SceneVCGModel* model, bool inPlace)
{
    util::ZPointer<qel::scene::Scene> scene = qel::scene::_GlobalScene();
    qel::scene::SceneLocker locker(scene.get(), qel::scene::SceneLocker::LOCK_ELEMENTS);
    const qel::scene::SceneElement::Pointer keepAlive(model);

    const double oldScale = scene->getGlobalScalingFactor();
    const qel::scene::Scene::ElementList before = *scene->getElementList();
    scene->addElement(model);
    const double newScale = scene->getGlobalScalingFactor();
    model->setScalingFactor(newScale);
    rescaleElements(before, newScale / oldScale);

    if (inPlace) {
        const Vector3 center = model->getPreSetCenter() * newScale;
        model->setTransformMatrix(Matrix4::translation(center.x(), center.y(), center.z()));
    } else {
        moveClearOfOthers(model, scene->getElementList());
    }
}

// Positions scale with the scene, so that the elements keep their places relative to the models.
void LoadModel::rescaleElements(const ElementList& elements, double ratio)
{
    for (const qel::scene::SceneElement::Pointer& element : elements) {
        if (element->isTransformable())
            element->setTransformMatrix(withScaledTranslation(element->getTransformMatrix(), ratio));
        if (element->isOriginChangeable())
            element->setOrigin(withScaledTranslation(element->getOrigin(), ratio));
    }
}

// Each overlap pushes the model along z by half the two depths and a margin, and the box
// under test by the whole offset so far, then the walk starts again. A box that is not
// finite could never be passed: the walk gives up on it.
void LoadModel::moveClearOfOthers(qel::scene::SceneVCGModel* model, ElementList* elements)
{
    Vector4 offset(0.0, 0.0, 0.0, 1.0);
    Box box = model->getBoundingBox(true);
    bool overlapped = true;
    while (overlapped && std::isfinite(offset.z())) {
        overlapped = false;
        for (const qel::scene::SceneElement::Pointer& element : *elements) {
            if (!element->hasBoundingBox() || element.get() == model)
                continue;
            const Box other = element->getBoundingBox(true).transform(element->getCompleteTransformMatrix());
            if (!boxesOverlap(box, other))
                continue;
            offset.z() += (box.size.z() + other.size.z()) * 0.5 + 5.0;
            for (int axis = 0; axis < 3; ++axis)
                box.center[axis] += offset[axis];
            box.updateCorners();
            overlapped = true;
            break;
        }
    }
    model->setTransformMatrix(Matrix4::translation(0.0, 0.0, offset.z()));
}

bool LoadModel::boxesOverlap(const Box& first, const Box& second)
{
    const OrientedBox a = orientedBox(first);
    const OrientedBox b = orientedBox(second);
    const Vector3 between = snapped(b.center - a.center);
    for (const Vector3& axis : a.axes) {
        if (separates(a, b, between, axis))
            return false;
    }
    for (const Vector3& axis : b.axes) {
        if (separates(a, b, between, axis))
            return false;
    }
    for (const Vector3& axisOfFirst : a.axes) {
        for (const Vector3& axisOfSecond : b.axes) {
            if (separates(a, b, between, snapped(axisOfFirst.cross(axisOfSecond))))
                return false;
        }
    }
    return true;
}

} // namespace scene
} // namespace commands
} // namespace qel
