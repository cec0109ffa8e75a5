#pragma once

#include <QColor>
#include <QObject>
#include <QPointer>
#include <map>

class QBoxLayout;
class QCheckBox;
class QDockWidget;
class QWidget;

namespace qel {
namespace scene {
class ClippingPlane;
class SceneVCGModel;
} // namespace scene

namespace gui {

class QColorFrame;

// The dock panel of a clipping plane: the switch for the coloured caps and one colour field
// per model below the plane, which sets that model's clipping colour.
class ClippingPlaneGUI : public QObject
{
    Q_OBJECT

public:
    // Registers a hidden dock widget "ClippingPlaneGUI" at the left of the main window.
    explicit ClippingPlaneGUI(scene::ClippingPlane* plane);
    ~ClippingPlaneGUI() override;

    QDockWidget* getDockWidget() const;
    QCheckBox* getColoringCheckBox() const { return coloringBox; }
    // The colour field of the model's row, or null.
    QColorFrame* getColorFrame(scene::SceneVCGModel* model) const;
    int getRowCount() const { return static_cast<int>(rows.size()); }

    // A row for the model, replacing an older one. Safe from any thread: off the
    // application thread the change is queued.
    void addModelRow(scene::SceneVCGModel* model);
    void removeModelRow(scene::SceneVCGModel* model);

private slots:
    void coloringChanged(int state);
    void colorChanged(QColor color, void* data);

private:
    void insertRow(scene::SceneVCGModel* model);
    void deleteRow(scene::SceneVCGModel* model);
    bool onOwnThread() const;

    scene::ClippingPlane* plane;
    QPointer<QDockWidget> dock;
    QBoxLayout* layout;
    QCheckBox* coloringBox;
    std::map<scene::SceneVCGModel*, QWidget*> rows;
};

} // namespace gui
} // namespace qel
