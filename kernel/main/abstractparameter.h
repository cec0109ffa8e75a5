#pragma once

#include "kernel/main/castclass.h"
#include "kernel/util/zpointer.h"

#include <QMutex>
#include <QString>
#include <memory>
#include <typeinfo>

namespace qel {
namespace main {

class ParameterPanelFactory;

// One typed argument of a command; Parameter<T> holds the value. The panel factory is
// not owned. The GUI default text is shared between a parameter and its clones: the
// dialogs read it from the prototype while execute, on a clone, may update it.
class AbstractParameter
{
public:
    AbstractParameter(const QString& name, const QString& description, const QString& defaultText, bool ownsValue,
                      ParameterPanelFactory* panelFactory);
    virtual ~AbstractParameter();

    virtual bool castString(const QString& text) = 0;
    virtual QString toString() const = 0;
    virtual void deleteValue() = 0;
    virtual void copyValue(AbstractParameter* other) = 0;
    virtual bool hasValue() const = 0;
    virtual QString dump() const = 0;
    virtual void* getValuePointer() const = 0;
    virtual void setValuePointer(void* pointer) = 0;
    // An independent copy: same description, cast class shared, the value copied if owned.
    virtual AbstractParameter* clone() const = 0;

    const QString& getParameterName() const { return name; }
    const QString& getDescription() const { return description; }
    QString getDefaultText() const;
    void setDefaultParameterForDefaultGUI(const QString& text);

    // Takes a counted reference: pass a cast class made with new.
    void setCastClass(CastClass* castClass);
    CastClass* getCastClass() const { return castClass.get(); }
    // True when the text can be cast; a parameter without cast class (QString) takes any text.
    bool isCastable(const QString& text) const;

    const std::type_info& getTypeInfo() const { return *typeInfo; }
    // False when the value is a number or list of numbers with an infinity or NaN in it;
    // true for every other value and for none.
    bool holdsFiniteValue() const;
    bool ownsItsValue() const { return ownsValue; }

    void setParameterPanelFactory(ParameterPanelFactory* factory) { panelFactory = factory; }
    ParameterPanelFactory* getParameterPanelFactory() const { return panelFactory; }

    AbstractParameter& operator=(const AbstractParameter&) = delete;

protected:
    AbstractParameter(const AbstractParameter& other);
    void setTypeInfo(const std::type_info& type) { typeInfo = &type; }

    qel::util::ZPointer<CastClass> castClass;
    const std::type_info* typeInfo;
    bool ownsValue;
    QString name;

private:
    struct DefaultText
    {
        QMutex mutex;
        QString text;
    };

    QString description;
    std::shared_ptr<DefaultText> defaultText;
    ParameterPanelFactory* panelFactory;
};

} // namespace main
} // namespace qel
