#pragma once

#include "kernel/util/zobserver.h"
#include "module_scene/sceneelement.h"

#include <QWidget>
#include <cstdint>
#include <vector>

namespace qel {
namespace test {

// A concrete element without drawing; its protected fields are opened for the tests.
class TestElement : public scene::SceneElement
{
public:
    explicit TestElement(const QString& name, const QString& type = "TestElement", bool withWidget = false)
        : SceneElement(name), type(type), withWidget(withWidget)
    {
    }

    QString getTypeName() const override { return type; }

    using SceneElement::m_firesChildEvents;
    using SceneElement::m_hasBoundingBox;
    using SceneElement::m_hasScalingFactor;
    using SceneElement::m_isIntersectable;
    using SceneElement::m_isModifier;
    using SceneElement::m_isOriginChangeable;
    using SceneElement::m_isTransformable;
    using SceneElement::m_rawBoundingBox;

    int initializeCalls = 0;

protected:
    void drawGL() override {}
    void initializeGL() override { ++initializeCalls; }
    QWidget* createCustomGUI() override { return withWidget ? new QWidget : nullptr; }

private:
    QString type;
    bool withWidget;
};

// Collects the payloads (the change causes) an element gives its observers.
class CauseRecorder : public util::ZObserver
{
public:
    void update(void* data, void*) override { causes.push_back(static_cast<int>(reinterpret_cast<intptr_t>(data))); }
    std::vector<int> causes;
};

} // namespace test
} // namespace qel
