#pragma once

#include "kernel/main/command.h"
#include "kernel/math/box4.h"
#include "kernel/util/worker.h"
#include "kernel/util/zpointer.h"

#include <QObject>
#include <QString>
#include <list>
#include <memory>
#include <vector>

class QAction;
class QFileDialog;

namespace qel {
namespace main {
class CastClass;
class Event;
class FileParameterPanelFactory;
} // namespace main
namespace io {
namespace scene {
class Loader;
}
} // namespace io
namespace scene {
class SceneElement;
class SceneVCGModel;
} // namespace scene
namespace commands {
namespace scene {

// loadmodel(FILE,NAME), loadmodel([FILES]) and loadmodel(FILE,INPLACE,inplace): reads mesh
// files through the import plug-ins and adds each as a model to the global scene, either
// clear of the models already there (moved along z) or where its file had it.
//
// Failures: every file that isn't loaded gets one line naming it and the reason: the
// loader's (level 1000), or "Could not load mesh from file" (level 2000) when no loader
// knows its type; the next file follows. The command itself still ran, so a script goes
// on with its next line, as after any command that found nothing to do; only strings that
// can't be run at all stop a script. The list form always ends with an out-of-range error
// (see execute), which the processor reports like any failed command.
class LoadModel : public QObject, public main::Command
{
    Q_OBJECT

public:
    typedef math::Box4<math::zReal> Box;
    typedef std::list<util::ZPointer<qel::scene::SceneElement>> ElementList;

    static const char* const CommandName;

    static main::Command* create();

    LoadModel();
    LoadModel(const LoadModel& other);
    ~LoadModel() override;

    void execute() override;
    // Also reaches the plug-in that is reading, from any thread.
    void abort() override;

    // The file dialog of the GUI: every type the plug-ins read, a check box for loading in
    // place (the dialog's property "in-place-widget") and the folder last used.
    static QFileDialog* createDialog();
    void showGUIWindow(QAction* action, main::CommandGUIDescriptor* descriptor);

    // Adds the model to the global scene, rescales what is there to the new global scale and
    // places the model.
    static void addModelToScene(qel::scene::SceneVCGModel* model, bool inPlace);
    // The separating axis test of two oriented boxes; touching boxes overlap.
    static bool boxesOverlap(const Box& first, const Box& second);

    // Asks the user on the application thread; true means abort.
    bool askUserToAbort(const QString& file);

signals:
    void abortLoading();

private slots:
    void updateProgress(int value, QString text);

private:
    // The question to the user, asked on the application thread.
    class AskWorker : public util::Worker
    {
    public:
        explicit AskWorker(const QString& file) : file(file) {}
        bool getAnswer() const { return answer; }

    protected:
        void run() override;

    private:
        QString file;
        bool answer = false;
    };

    void structureLockChanged(const main::Event* event);
    bool readParameters(std::vector<QString>& files, QString& name, bool& inPlace);
    // False when the command must stop (abort).
    bool loadFile(const QString& file, QString& name, bool inPlace);
    // The loader of the file's registered type, else the importer's fallback; null for none.
    static io::scene::Loader* loaderFor(const QString& file);
    bool checkBeforeLoading(io::scene::Loader* loader, const QString& file);
    static void rescaleElements(const ElementList& elements, double ratio);
    static void moveClearOfOthers(qel::scene::SceneVCGModel* model, ElementList* elements);
    static void openSceneView();

    QString lastProgressText;
    std::shared_ptr<main::FileParameterPanelFactory> filePanelFactory;
    util::ZPointer<main::CastClass> fileListCast;

    static bool m_registered;
};

} // namespace scene
} // namespace commands
} // namespace qel
