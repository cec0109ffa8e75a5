#pragma once

#include "kernel/main/abstractparameter.h"
#include "kernel/main/castclassmanager.h"
#include "kernel/log/logger.h"

#include <QString>
#include <string>
#include <typeinfo>

namespace qel {
namespace main {

// A parameter holding a T on the heap. `binded` is an outside pointer kept equal to the value.
// The destructor doesn't free the value: parameters may share it after copyValue.
template <class T>
class Parameter : public AbstractParameter
{
public:
    Parameter(const QString& name, const QString& description, const QString& defaultText = QString(),
              bool ownsValue = true, ParameterPanelFactory* panelFactory = nullptr)
        : AbstractParameter(name, description, defaultText, ownsValue, panelFactory), value(nullptr), binded(nullptr)
    {
        setTypeInfo(typeid(T));
        if (typeid(T) != typeid(QString))
            setCastClass(CastClassManager::getInstance()->createCastClassForType(&typeid(T)));
    }

    // Deep copy of an owned value; a borrowed value stays shared. Not bound.
    Parameter(const Parameter& other) : AbstractParameter(other), value(nullptr), binded(nullptr)
    {
        if (other.value)
            value = ownsValue ? new T(*other.value) : other.value;
    }

    Parameter& operator=(const Parameter&) = delete;

    bool castString(const QString& text) override
    {
        try {
            T* cast = castClass.isNull() ? castWithoutCastClass(text) : static_cast<T*>(castClass->castString(text));
            deleteValue();
            value = cast;
            if (binded)
                *binded = cast;
            return true;
        } catch (...) {
            qel::log::Logger::log(1000, "kernel/main/parameter", 87,
                                  functionName("castString").c_str(), nullptr,
                                  "Parameter::castString() There was an error!");
            return false;
        }
    }

    QString toString() const override
    {
        if (!value)
            return QString();
        if (!castClass.isNull())
            return castClass->castBack(value);
        return textWithoutCastClass();
    }

    void deleteValue() override
    {
        if (!ownsValue)
            return;
        try {
            if (value) {
                if (!castClass.isNull() && castClass->needsSpecialDeletion())
                    castClass->doSpecialDeletion(value);
                else
                    delete value;
            }
            value = nullptr;
            if (binded)
                *binded = nullptr;
        } catch (...) {
            qel::log::Logger::log(1000, "kernel/main/parameter", 194,
                                  functionName("deleteValue").c_str(), nullptr,
                                  "Save your data!");
        }
    }

    void copyValue(AbstractParameter* other) override
    {
        Parameter<T>* source = dynamic_cast<Parameter<T>*>(other);
        if (!source || source == this)
            return;
        if (source->value != value)
            deleteValue();
        value = source->value;
        if (binded)
            *binded = value;
    }

    bool hasValue() const override { return value != nullptr; }

    QString dump() const override
    {
        return QString::asprintf("%p (%s): value: %p  binded: %p\n", static_cast<const void*>(this),
                                 name.toLocal8Bit().constData(), static_cast<const void*>(value),
                                 static_cast<const void*>(binded));
    }

    void* getValuePointer() const override { return value; }

    void setValuePointer(void* pointer) override
    {
        if (pointer != value)
            deleteValue();
        value = static_cast<T*>(pointer);
        if (binded)
            *binded = value;
    }

    virtual void bind(T** outside)
    {
        // An outside pointer that holds this very value takes it over as it is: deleting
        // first would hand back freed memory.
        if (outside && *outside == value && value) {
            binded = outside;
            return;
        }
        deleteValue();
        binded = outside;
        if (outside)
            setValuePointer(*outside);
    }

    AbstractParameter* clone() const override { return new Parameter<T>(*this); }

    T* getValue() const { return value; }

protected:
    T* value;
    T** binded;

private:
    static std::string functionName(const char* function)
    {
        return "qel::main::Parameter<" + qel::util::demangledTypeName(typeid(T)) + ">::" + function;
    }

    // Only QString parameters come without a cast class; any other type without one can't be cast.
    static T* castWithoutCastClass(const QString& text) { return castTextTo(text, static_cast<T*>(nullptr)); }
    QString textWithoutCastClass() const { return textOf(value); }

    static QString* castTextTo(const QString& text, QString*) { return new QString(text); }
    template <class U>
    static U* castTextTo(const QString&, U*)
    {
        throw std::bad_cast();
    }
    static QString textOf(const QString* text) { return *text; }
    template <class U>
    static QString textOf(const U*)
    {
        return QString();
    }
};

} // namespace main
} // namespace qel
