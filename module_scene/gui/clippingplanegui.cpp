#include "module_scene/gui/clippingplanegui.h"

#include "kernel/gui/qcolorframe.h"
#include "kernel/main/overseer.h"
#include "kernel/util/zpointer.h"
#include "module_scene/clippingplane.h"
#include "module_scene/scenevcgmodel.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QDockWidget>
#include <QLabel>
#include <QThread>

namespace qel {
namespace gui {

namespace {

// Rows go below the check box and the spacing, in the order they come.
const int FirstRowIndex = 2;

} // namespace

ClippingPlaneGUI::ClippingPlaneGUI(scene::ClippingPlane* plane) : plane(plane)
{
    dock = main::Overseer::getInstance()->registerDockWidget(QStringLiteral("ClippingPlaneGUI"),
                                                             Qt::LeftDockWidgetArea);
    dock->hide();
    auto* content = new QWidget;
    layout = new QBoxLayout(QBoxLayout::TopToBottom, content);
    coloringBox = new QCheckBox(tr("Enable coloring"), content);
    coloringBox->setChecked(plane->isColoringEnabled());
    connect(coloringBox, SIGNAL(stateChanged(int)), this, SLOT(coloringChanged(int)));
    layout->addWidget(coloringBox);
    layout->addSpacing(10);
    layout->addStretch();
    dock->setWidget(content);
}

ClippingPlaneGUI::~ClippingPlaneGUI()
{
    if (dock)
        dock->deleteLater();
}

QDockWidget* ClippingPlaneGUI::getDockWidget() const
{
    return dock.data();
}

QColorFrame* ClippingPlaneGUI::getColorFrame(scene::SceneVCGModel* model) const
{
    const auto row = rows.find(model);
    return row == rows.end() ? nullptr : row->second->findChild<QColorFrame*>();
}

bool ClippingPlaneGUI::onOwnThread() const
{
    return QThread::currentThread() == thread();
}

void ClippingPlaneGUI::addModelRow(scene::SceneVCGModel* model)
{
    if (onOwnThread()) {
        insertRow(model);
        return;
    }
    // The model is kept alive until its row is made.
    const util::ZPointer<scene::SceneElement> keep(model);
    QMetaObject::invokeMethod(this, [this, model, keep]() { insertRow(model); }, Qt::QueuedConnection);
}

void ClippingPlaneGUI::removeModelRow(scene::SceneVCGModel* model)
{
    if (onOwnThread())
        deleteRow(model);
    else
        QMetaObject::invokeMethod(this, [this, model]() { deleteRow(model); }, Qt::QueuedConnection);
}

void ClippingPlaneGUI::insertRow(scene::SceneVCGModel* model)
{
    deleteRow(model);
    auto* row = new QWidget;
    auto* rowLayout = new QHBoxLayout(row);
    auto* name = new QLabel(model->getName(), row);
    name->setMinimumWidth(20);
    rowLayout->addWidget(name);
    auto* color = new QColorFrame(model->getClippingColor(), model, row);
    connect(color, SIGNAL(colorSelected(QColor, void*)), this, SLOT(colorChanged(QColor, void*)));
    rowLayout->addWidget(color);
    layout->insertWidget(FirstRowIndex + static_cast<int>(rows.size()), row);
    rows[model] = row;
}

void ClippingPlaneGUI::deleteRow(scene::SceneVCGModel* model)
{
    const auto row = rows.find(model);
    if (row == rows.end())
        return;
    layout->removeWidget(row->second);
    row->second->deleteLater();
    rows.erase(row);
}

void ClippingPlaneGUI::coloringChanged(int state)
{
    plane->setColoringEnabled(state == Qt::Checked);
}

void ClippingPlaneGUI::colorChanged(QColor color, void* data)
{
    if (data)
        static_cast<scene::SceneVCGModel*>(data)->setClippingColor(color);
}

} // namespace gui
} // namespace qel
