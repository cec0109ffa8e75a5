#pragma once

#include "kernel/util/zobserver.h"
#include "module_scene/scene.h"
#include "module_scene/sceneelement.h"

#include <QStringList>
#include <QWidget>
#include <cstdint>
#include <functional>
#include <future>
#include <vector>

namespace qel {
namespace test {

class TestElement;
typedef util::ZPointer<TestElement> Element;

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
    using SceneElement::m_isFocusable;
    using SceneElement::m_isInternal;
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

// An element of the given type that takes the number the scene hands out ("ClippingPlane",
// "Lightsource").
class NumberedTestElement : public TestElement, public scene::Scene::NumberedElement
{
public:
    NumberedTestElement(const QString& name, const QString& type) : TestElement(name, type) {}
    int getSceneNumber() const override { return number; }
    void setSceneNumber(int value) override { number = value; }

    int number = -2;
};

// An element whose data the scene asks to recompute ("Lines").
class RecomputedTestElement : public TestElement, public scene::Scene::RecomputableElement
{
public:
    explicit RecomputedTestElement(const QString& name) : TestElement(name, "Lines") {}
    void updateData() override { ++updates; }

    int updates = 0;
};

// A model-like element: it follows the scene's scale and has a raw box of the given size.
inline util::ZPointer<TestElement> makeModel(const QString& name, double sizeX, double sizeY, double sizeZ = 0.0)
{
    util::ZPointer<TestElement> model(new TestElement(name, "SceneVCGModel"));
    model->m_hasScalingFactor = true;
    model->m_hasBoundingBox = true;
    model->m_rawBoundingBox = scene::SceneElement::Box(scene::SceneElement::Vector4(0.0, 0.0, 0.0, 1.0),
                                                       scene::SceneElement::Vector4(sizeX, sizeY, sizeZ, 0.0));
    return model;
}

// A scene for one test. A scene holds a reference to itself, so it is ended here.
class SceneHolder
{
public:
    SceneHolder() : scene(new scene::Scene) {}
    ~SceneHolder() { scene->shutDown(); }
    SceneHolder(const SceneHolder&) = delete;
    SceneHolder& operator=(const SceneHolder&) = delete;

    scene::Scene* operator->() const { return scene.get(); }
    scene::Scene* get() const { return scene.get(); }

    util::ZPointer<scene::Scene> scene;
};

// Whether another thread finds the element lock of the scene taken.
inline bool lockedElsewhere(scene::Scene* scene)
{
    return std::async(std::launch::async, [scene] {
               const bool taken = scene->tryLock();
               if (taken)
                   scene->unlock();
               return !taken;
           }).get();
}

// Records what a scene tells its observers, with the change cause of that moment.
class SceneNoticeRecorder : public util::ZObserver
{
public:
    struct Notice
    {
        bool hasRecord;
        scene::Scene::Notification record;
        int changeCause;
    };

    explicit SceneNoticeRecorder(scene::Scene* scene) : scene(scene) { scene->attachObserver(this); }
    ~SceneNoticeRecorder() override { scene->detachObserver(this); }

    void update(void* data, void*) override
    {
        const auto* record = static_cast<const scene::Scene::Notification*>(data);
        notices.push_back(Notice{record != nullptr, record ? *record : scene::Scene::Notification{},
                                 scene->getChangeCause()});
        if (onNotice)
            onNotice();
    }

    std::vector<Notice> notices;
    std::function<void()> onNotice;

private:
    scene::Scene* scene;
};

// Collects the payloads (the change causes) an element gives its observers.
class CauseRecorder : public util::ZObserver
{
public:
    void update(void* data, void*) override { causes.push_back(static_cast<int>(reinterpret_cast<intptr_t>(data))); }
    std::vector<int> causes;
};

// A new test element of the given type, owned by the returned pointer.
inline util::ZPointer<TestElement> make(const QString& name, const QString& type = "TestElement")
{
    return util::ZPointer<TestElement>(new TestElement(name, type));
}

// The names of a list of elements, in its order.
inline QStringList namesOf(const scene::SceneElement::ElementList& list)
{
    QStringList names;
    for (const auto& element : list)
        names << element->getName();
    return names;
}

} // namespace test
} // namespace qel
